#include "WaylandWorkspace.h"

#include "UrlOpener.h"
#include "WaylandDesktop.h"
#include "WaylandRunningApplication.h"
#include "WaylandToplevels.h"

namespace tessly {

WaylandWorkspace::WaylandWorkspace(const WaylandDesktop& desktop)
    : m_desktop(desktop)
{
}

WaylandWorkspace::~WaylandWorkspace() = default;

std::shared_ptr<RunningApplication> WaylandWorkspace::frontmostApplication() const
{
    // Those of another connection each time that one ends.
    const auto windows = m_desktop.toplevels();
    const auto front = windows->front();
    if (!front) {
        m_last.reset();
    } else if (!m_last || m_last->window() != front) {
        m_last = std::make_shared<WaylandRunningApplication>(front, windows);
    }
    return m_last;
}

bool WaylandWorkspace::openURL(const QUrl& url)
{
    return openWithDesktop(url);
}

} // namespace tessly
