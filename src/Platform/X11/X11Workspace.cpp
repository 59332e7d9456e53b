#include "X11Workspace.h"

#include "UrlOpener.h"
#include "X11Desktop.h"
#include "X11RunningApplication.h"
#include "X11WindowTracker.h"

namespace tessly {

X11Workspace::X11Workspace(const X11Desktop& desktop)
    : m_windows(desktop.windows())
{
}

X11Workspace::~X11Workspace() = default;

std::shared_ptr<RunningApplication> X11Workspace::frontmostApplication() const
{
    const auto windows = m_windows.lock();
    const auto front = windows ? windows->front().window : nullptr;
    if (!front) {
        m_last.reset();
    } else if (!m_last || m_last->window() != front) {
        m_last = std::make_shared<X11RunningApplication>(front, m_windows);
    }
    return m_last;
}

bool X11Workspace::openURL(const QUrl& url)
{
    return openWithDesktop(url);
}

} // namespace tessly
