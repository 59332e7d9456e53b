#include "X11Workspace.h"

#include "X11Desktop.h"
#include "X11WindowTracker.h"

#include <QCoroFuture>

#include <utility>

namespace tessly {

X11Workspace::X11Workspace(const X11Desktop& desktop)
    : m_windows(desktop.windows())
{
}

X11Workspace::~X11Workspace()
{
    if (const auto windows = m_windows.lock()) {
        windows->setFrontChanged({});
    }
}

std::shared_ptr<RunningApplication> X11Workspace::frontmostApplication() const
{
    const auto windows = m_windows.lock();
    return m_applications->of(windows ? windows->front().window : nullptr, m_windows);
}

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
X11Workspace::inFrontDuring(Clock::Duration span)
{
    // This object and the desktop may go while the server is asked.
    const auto weakWindows = m_windows;
    const auto applications = m_applications;
    const auto since = std::chrono::steady_clock::now() - span;
    std::shared_ptr<const X11WindowTracker::History> history;
    QFuture<bool> caughtUp;
    if (const auto windows = weakWindows.lock()) {
        history = windows->history();
        caughtUp = windows->catchUp(since);
    }
    if (history) {
        co_await caughtUp;
    }
    // In this order: a window that leaves the front in between is seen in one of the two.
    const auto windows = weakWindows.lock();
    const auto front = windows ? windows->front().window : nullptr;
    std::vector<std::shared_ptr<RunningApplication>> inFront;
    if (history) {
        for (const auto& window : history->since(since)) {
            if (window != front) {
                inFront.push_back(applications->of(window, weakWindows));
            }
        }
    }
    inFront.push_back(applications->of(front, weakWindows));
    co_return inFront;
}

void X11Workspace::setFrontmostChanged(std::function<void()> changed)
{
    m_frontmostChanged.setCallback(std::move(changed));
    if (const auto windows = m_windows.lock()) {
        windows->setFrontChanged(m_frontmostChanged.request());
    }
}

} // namespace tessly
