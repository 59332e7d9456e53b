#include "X11RunningApplication.h"

#include "X11WindowTracker.h"

#include <utility>

namespace tessly {

X11RunningApplication::X11RunningApplication(
    std::shared_ptr<const X11Window> window, std::weak_ptr<X11WindowTracker> windows)
    : m_window(std::move(window))
    , m_windows(std::move(windows))
{
}

std::optional<QString> X11RunningApplication::localizedName() const
{
    return m_window->owner().name;
}

std::optional<QString> X11RunningApplication::bundleIdentifier() const
{
    return m_window->owner().applicationID;
}

QStringList X11RunningApplication::names() const
{
    return m_window->owner().names;
}

bool X11RunningApplication::isActive() const
{
    const auto windows = m_windows.lock();
    if (!windows) {
        return false;
    }
    const auto front = windows->front();
    return front.window == m_window && front.hasFocus;
}

bool X11RunningApplication::isTerminated() const
{
    return m_window->isGone() || m_windows.expired();
}

void X11RunningApplication::activate()
{
    if (const auto windows = m_windows.lock()) {
        windows->requestActivation(m_window);
    }
}

PasteChord X11RunningApplication::pasteChord() const
{
    return m_window->owner().chord;
}

} // namespace tessly
