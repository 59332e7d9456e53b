#pragma once

#include "OutsideClickMonitor.h"

#include <memory>
#include <set>

namespace tessly::test {

/// A mouse that presses outside the program's windows when the test says so.
class FakeOutsideClickMonitor final : public OutsideClickMonitor
{
public:
    /// How many watches there are.
    [[nodiscard]] std::size_t watches() const { return m_state->watches.size(); }
    /// Somebody presses a button in another application.
    void press()
    {
        // A watch may end while it is told.
        const auto watches = m_state->watches;
        for (FakeWatch* const watch : watches) {
            if (m_state->watches.contains(watch)) {
                const auto pressed = watch->pressed;
                pressed();
            }
        }
    }

    [[nodiscard]] std::unique_ptr<Watch> watch(std::function<void()> pressed) override
    {
        return std::make_unique<FakeWatch>(m_state, std::move(pressed));
    }

private:
    class FakeWatch;
    struct State
    {
        std::set<FakeWatch*> watches;
    };

    class FakeWatch final : public Watch
    {
    public:
        FakeWatch(std::shared_ptr<State> state, std::function<void()> callback)
            : pressed(std::move(callback))
            , m_state(std::move(state))
        {
            m_state->watches.insert(this);
        }
        ~FakeWatch() override { m_state->watches.erase(this); }

        const std::function<void()> pressed;

    private:
        std::shared_ptr<State> m_state;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace tessly::test
