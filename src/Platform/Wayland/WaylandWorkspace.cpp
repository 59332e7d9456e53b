#include "WaylandWorkspace.h"

#include "WaylandDesktop.h"
#include "WaylandToplevels.h"

#include <QCoroFuture>

#include <utility>

namespace tessly {

WaylandWorkspace::WaylandWorkspace(WaylandDesktop& desktop)
    : m_desktop(desktop)
{
}

WaylandWorkspace::~WaylandWorkspace()
{
    m_desktop.setFrontChanged({});
}

std::shared_ptr<RunningApplication> WaylandWorkspace::frontmostApplication() const
{
    // Those of another connection each time that one ends.
    const auto windows = m_desktop.toplevels();
    return m_applications->of(windows->front(), std::weak_ptr(windows));
}

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
WaylandWorkspace::inFrontDuring(Clock::Duration span)
{
    // This object and the desktop may go while the compositor is asked.
    const std::weak_ptr<Applications> alive = m_applications;
    const auto history = m_desktop.history();
    const auto since = std::chrono::steady_clock::now() - span;
    co_await m_desktop.catchUp();

    std::vector<std::shared_ptr<RunningApplication>> inFront;
    const auto applications = alive.lock();
    if (!applications) {
        inFront.push_back(nullptr);
        co_return inFront;
    }
    // In this order: a window that leaves the front in between is seen in one of the two.
    const auto windows = m_desktop.toplevels();
    const auto front = windows->front();
    for (const auto& window : history->since(since)) {
        if (window != front) {
            inFront.push_back(applications->of(window, std::weak_ptr(windows)));
        }
    }
    inFront.push_back(applications->of(front, std::weak_ptr(windows)));
    co_return inFront;
}

void WaylandWorkspace::setFrontmostChanged(std::function<void()> changed)
{
    m_desktop.setFrontChanged(std::move(changed));
}

} // namespace tessly
