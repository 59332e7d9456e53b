#include "WaylandRunningApplication.h"

#include "WaylandToplevels.h"

#include <utility>

namespace tessly {

WaylandRunningApplication::WaylandRunningApplication(
    std::shared_ptr<const TrackedWindow> window, std::weak_ptr<WaylandToplevels> windows)
    : m_window(std::move(window))
    , m_windows(std::move(windows))
{
}

std::optional<QString> WaylandRunningApplication::localizedName() const
{
    return m_window->owner().name;
}

std::optional<QString> WaylandRunningApplication::bundleIdentifier() const
{
    return m_window->owner().applicationID;
}

QStringList WaylandRunningApplication::names() const
{
    return m_window->owner().names;
}

bool WaylandRunningApplication::isActive() const
{
    const auto windows = m_windows.lock();
    return windows && !m_window->isGone() && windows->front() == m_window;
}

bool WaylandRunningApplication::isTerminated() const
{
    return m_window->isGone() || m_windows.expired();
}

void WaylandRunningApplication::activate()
{
    if (const auto windows = m_windows.lock()) {
        windows->requestActivation(m_window);
    }
}

PasteChord WaylandRunningApplication::pasteChord() const
{
    return m_window->owner().chord;
}

} // namespace tessly
