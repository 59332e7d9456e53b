#pragma once

#include "Gate.h"
#include "KeySender.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tessly::test {

/// A desktop that notes the chords it is sent. For tests that link the desktop's library.
class FakeKeySender final : public KeySender
{
public:
    /// Whether sending is allowed. True at first.
    void setAllowed(bool allowed) { m_isAllowed = allowed; }
    /// Whether the user grants access when asked. False at first.
    void setGrantsRequests(bool grants) { m_grantsRequests = grants; }
    /// No chord is taken from now on.
    void breakKeys() { m_isBroken = true; }
    /// Called with each chord at the moment at which whatever has the keyboard sees it.
    void setSeen(std::function<void(PasteChord)> seen) { m_seen = std::move(seen); }
    /// The desktop sees the target leave before every chord.
    void loseTarget() { m_isTargetLost = true; }
    /// The keyboard has no keys for this chord.
    void setLacking(PasteChord chord) { m_lacking = chord; }
    /// Nothing is to be sent, as when the user goes on holding keys.
    void setNeverReady() { m_isReady = false; }
    /// Where the user still holds keys.
    [[nodiscard]] Gate& held() { return m_held; }
    /// Where the desktop's answers wait; the keys have been seen by then.
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] int accessRequests() const { return m_accessRequests; }
    [[nodiscard]] const std::vector<PasteChord>& chords() const { return m_chords; }

    [[nodiscard]] bool isAllowed() const override { return m_isAllowed; }
    [[nodiscard]] bool requestAccess() override
    {
        ++m_accessRequests;
        m_isAllowed = m_isAllowed || m_grantsRequests;
        return m_isAllowed;
    }
    [[nodiscard]] QCoro::Task<bool> ready() override
    {
        co_await m_held.pass();
        co_return m_isReady;
    }
    [[nodiscard]] QCoro::Task<Sending>
    send(PasteChord chord, std::shared_ptr<const PasteTarget>, IsThere isThere) override
    {
        if (chord == m_lacking) {
            co_return Sending::noKeys;
        }
        if (m_isTargetLost) {
            co_return Sending::notInFront;
        }
        if (!isThere()) {
            co_return Sending::contentReplaced;
        }
        const bool isTaken = !m_isBroken;
        if (isTaken) {
            m_chords.push_back(chord);
            if (m_seen) {
                m_seen(chord);
            }
        }
        co_await m_gate.pass();
        co_return isTaken ? Sending::sent : Sending::failed;
    }

private:
    bool m_isAllowed = true;
    bool m_grantsRequests = false;
    bool m_isBroken = false;
    bool m_isReady = true;
    bool m_isTargetLost = false;
    std::optional<PasteChord> m_lacking;
    int m_accessRequests = 0;
    std::vector<PasteChord> m_chords;
    std::function<void(PasteChord)> m_seen;
    Gate m_held;
    Gate m_gate;
};

} // namespace tessly::test
