#include "X11RunningApplication.h"

#include "X11WindowTracker.h"

namespace tessly {

bool X11RunningApplication::isActive() const
{
    const auto tracker = windows();
    if (!tracker) {
        return false;
    }
    const auto front = tracker->front();
    return front.window == window() && front.hasFocus;
}

void X11RunningApplication::activate()
{
    if (const auto tracker = windows()) {
        tracker->requestActivation(window());
    }
}

} // namespace tessly
