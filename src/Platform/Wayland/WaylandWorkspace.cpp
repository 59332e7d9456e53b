#include "WaylandWorkspace.h"

#include "UrlOpener.h"
#include "WaylandDesktop.h"
#include "WaylandRunningApplication.h"
#include "WaylandToplevels.h"

namespace tessly {

WaylandWorkspace::WaylandWorkspace(const WaylandDesktop& desktop)
    : m_windows(desktop.toplevels())
{
}

WaylandWorkspace::~WaylandWorkspace() = default;

std::shared_ptr<RunningApplication> WaylandWorkspace::frontmostApplication() const
{
    const auto windows = m_windows.lock();
    const auto front = windows ? windows->front() : nullptr;
    if (!front) {
        m_last.reset();
    } else if (!m_last || m_last->window() != front) {
        m_last = std::make_shared<WaylandRunningApplication>(front, m_windows);
    }
    return m_last;
}

bool WaylandWorkspace::openURL(const QUrl& url)
{
    return openWithDesktop(url);
}

} // namespace tessly
