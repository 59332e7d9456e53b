#include "FakeWorkspace.h"

#include <utility>

namespace tessly::test {

void FakeWorkspace::setFrontmost(std::shared_ptr<FakeRunningApplication> application)
{
    if (m_frontmost) {
        m_frontmost->setActive(false);
        m_past.push_back({m_frontmost, m_clock ? m_clock->now() : 0});
    }
    m_frontmost = std::move(application);
    if (m_frontmost) {
        m_frontmost->setActive(true);
        m_frontmost->setComesToFront(
            [this, alive = std::weak_ptr(m_alive), weak = std::weak_ptr(m_frontmost)] {
                const auto application = weak.lock();
                if (application && !alive.expired()) {
                    setFrontmost(application);
                }
            });
    }
    if (m_changed) {
        m_changed();
    }
}

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
FakeWorkspace::inFrontDuring(Clock::Duration span)
{
    // Times are seconds since 1970, of which a double does not hold every nanosecond.
    constexpr double rounding = 1e-6;
    const auto front = frontmostApplication();
    std::vector<std::shared_ptr<RunningApplication>> applications;
    const auto add = [&applications](const std::shared_ptr<RunningApplication>& application) {
        std::erase(applications, application);
        applications.push_back(application);
    };
    for (const Past& past : m_past) {
        const double age = m_clock ? m_clock->now() - past.end : 0;
        if (age <= std::chrono::duration<double>(span).count() + rounding) {
            add(past.application);
        }
    }
    if (m_frontmost && m_frontmost != front) {
        add(m_frontmost);
    }
    std::erase(applications, front);
    applications.push_back(front);
    co_return applications;
}

} // namespace tessly::test
