#include "FakeWorkspace.h"

#include <utility>

namespace tessly::test {

void FakeWorkspace::setFrontmost(std::shared_ptr<FakeRunningApplication> application)
{
    if (m_frontmost) {
        m_frontmost->setActive(false);
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
}

bool FakeWorkspace::openURL(const QUrl& url)
{
    m_openedURLs.push_back(url);
    return m_opensURLs;
}

} // namespace tessly::test
