#pragma once

#include "Gate.h"
#include "HotKeyCenter.h"

#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tessly::test {

/// A desktop's hot keys in memory, with a keyboard that the test presses and other programs that
/// hold keys.
class FakeHotKeyCenter final : public HotKeyCenter
{
public:
    /// A key code and modifiers.
    using Combination = std::pair<quint32, quint32>;

    struct Held
    {
        Combination combination;
        KeyID key;

        bool operator==(const Held&) const = default;
    };

    FakeHotKeyCenter();
    ~FakeHotKeyCenter() override;

    /// Another program takes a combination, or lets it go. False if it is not to be had.
    bool takeElsewhere(Combination combination);
    void releaseElsewhere(Combination combination) { m_heldElsewhere.erase(combination); }

    /// The user presses a combination; the handler hears of it from the event loop.
    void press(Combination combination);
    /// A press arrives that was on its way when its key was given up, or that cannot be read.
    /// Returns what the handler answers; none is installed: notHandled.
    Status deliver(const Press& press);

    /// Handlers cannot be installed from now on; `done` stands for a missing reference.
    void failHandlers(Status status);
    void allowHandlers();
    /// Keys come without a reference from now on.
    void withholdReferences() { m_givesReferences = false; }

    [[nodiscard]] bool hasHandler() const { return m_handler != nullptr; }
    [[nodiscard]] int handlersInstalled() const { return m_handlersInstalled; }
    /// What this program holds, in the order of registration.
    [[nodiscard]] std::vector<Held> held() const;
    /// Whether the desktop may question the user.
    [[nodiscard]] bool mayAsk() const { return m_mayAsk; }
    /// Every key that was asked for, granted or not.
    [[nodiscard]] const std::vector<KeyID>& asked() const { return m_asked; }
    /// Where answers wait.
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] bool isAvailable() const override { return true; }
    [[nodiscard]] Installation installHandler(Handler handler) override;
    Status removeHandler(Reference handler) override;
    [[nodiscard]] Registration registerKey(quint32 keyCode, quint32 modifiers, KeyID key) override;
    void setMayAsk(bool mayAsk) override { m_mayAsk = mayAsk; }
    Status unregisterKey(Reference key) override;

private:
    [[nodiscard]] Status grab(Combination combination, KeyID key, Reference reference);
    [[nodiscard]] QCoro::Task<Status> answer(Status status);

    Handler m_handler;
    Reference m_handlerReference = 0;
    std::optional<Status> m_handlerFailure;
    bool m_givesReferences = true;
    bool m_mayAsk = true;
    int m_handlersInstalled = 0;
    std::map<Reference, Held> m_held;
    std::set<Combination> m_heldElsewhere;
    std::vector<KeyID> m_asked;
    Reference m_nextReference = 1;
    Gate m_gate;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly::test
