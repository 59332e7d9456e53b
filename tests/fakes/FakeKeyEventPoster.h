#pragma once

#include "FakePasteboard.h"
#include "Gate.h"
#include "KeyEventPoster.h"

#include <vector>

namespace tessly::test {

/// A keyboard whose paste keys are only noted.
class FakeKeyEventPoster final : public KeyEventPoster
{
public:
    /// Whether posting is allowed. True at first.
    void setAllowed(bool allowed) { m_isAllowed = allowed; }
    /// Whether the user grants access when asked. False at first.
    void setGrantsRequests(bool grants) { m_grantsRequests = grants; }
    /// The keys cannot be made from now on.
    void breakKeys() { m_isBroken = true; }
    /// Whose content is looked at before the keys; none: it is not.
    void setPasteboard(FakePasteboard* pasteboard) { m_pasteboard = pasteboard; }
    /// What was written is not there to be pasted from now on.
    void replaceContent() { m_isReplaced = true; }

    [[nodiscard]] int accessRequests() const { return m_accessRequests; }
    /// The applications that got the paste keys, in order.
    [[nodiscard]] const std::vector<std::shared_ptr<RunningApplication>>& pastes() const
    {
        return m_pastes;
    }
    /// How often keys were to be posted, also where none were in the end.
    [[nodiscard]] int posts() const { return m_posts; }
    /// Where posting waits, as for the user to let go of held modifiers.
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] bool isAllowed() const override { return m_isAllowed; }
    [[nodiscard]] bool requestAccess() override;
    [[nodiscard]] QCoro::Task<PostResult>
    postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content) override;

private:
    FakePasteboard* m_pasteboard = nullptr;
    bool m_isAllowed = true;
    bool m_grantsRequests = false;
    bool m_isBroken = false;
    bool m_isReplaced = false;
    int m_accessRequests = 0;
    int m_posts = 0;
    std::vector<std::shared_ptr<RunningApplication>> m_pastes;
    Gate m_gate;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly::test
