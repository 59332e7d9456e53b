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
    }
}

bool FakeWorkspace::openURL(const QUrl& url)
{
    m_openedURLs.push_back(url);
    return m_opensURLs;
}

} // namespace tessly::test
