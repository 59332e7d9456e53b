#include "FakeWorkspace.h"

#include <utility>

namespace tessly::test {

void FakeWorkspace::setFrontmost(std::shared_ptr<FakeRunningApplication> application)
{
    if (m_frontmost) {
        m_frontmost->setActive(false);
        m_before.push_back(m_frontmost);
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
FakeWorkspace::inFrontDuring(Clock::Duration /*span*/)
{
    auto inFront = std::exchange(m_before, {});
    const auto now = frontmostApplication();
    if (m_frontmost && m_frontmost != now) {
        inFront.push_back(m_frontmost);
    }
    std::erase(inFront, now);
    inFront.push_back(now);
    co_return inFront;
}

bool FakeWorkspace::openURL(const QUrl& url)
{
    m_openedURLs.push_back(url);
    return m_opensURLs;
}

} // namespace tessly::test
