#include "FakeKeyEventPoster.h"

namespace tessly::test {

bool FakeKeyEventPoster::requestAccess()
{
    ++m_accessRequests;
    if (m_grantsRequests) {
        m_isAllowed = true;
    }
    return m_isAllowed;
}

QCoro::Task<PostResult>
FakeKeyEventPoster::postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content)
{
    const std::weak_ptr<bool> alive = m_alive;
    ++m_posts;
    co_await m_gate.pass();
    if (alive.expired() || m_isBroken) {
        co_return PostResult::failed;
    }
    if (!target->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    if (m_isReplaced || (m_pasteboard && !m_pasteboard->beginPaste(content))) {
        co_return PostResult::contentReplaced;
    }
    m_pastes.push_back(target);
    co_return PostResult::posted;
}

} // namespace tessly::test
