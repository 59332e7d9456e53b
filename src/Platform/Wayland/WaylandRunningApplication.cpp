#include "WaylandRunningApplication.h"

#include "WaylandToplevels.h"

namespace tessly {

bool WaylandRunningApplication::isActive() const
{
    const auto toplevels = windows();
    return toplevels && !window()->isGone() && toplevels->front() == window();
}

void WaylandRunningApplication::activate()
{
    if (const auto toplevels = windows()) {
        toplevels->requestActivation(window());
    }
}

} // namespace tessly
