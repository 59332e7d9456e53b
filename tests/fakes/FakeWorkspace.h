#pragma once

#include "FakeRunningApplication.h"
#include "Workspace.h"

#include <vector>

namespace tessly::test {

/// A desktop on which the test says what is in front.
class FakeWorkspace final : public Workspace
{
public:
    /// Without the test's clock no time passes here: everything was in front just now.
    explicit FakeWorkspace(const Clock* clock = nullptr)
        : m_clock(clock)
    {
    }

    /// Brings an application (none: nothing) to the front; the one before loses the keyboard.
    void setFrontmost(std::shared_ptr<FakeRunningApplication> application);

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override
    {
        return m_frontmost && !m_frontmost->isTerminated() ? m_frontmost : nullptr;
    }
    [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) override;
    void setFrontmostChanged(std::function<void()> changed) override
    {
        m_changed = std::move(changed);
    }

private:
    struct Past
    {
        std::shared_ptr<FakeRunningApplication> application;
        /// When it ceased to be in front.
        double end = 0;
    };

    const Clock* m_clock;
    std::shared_ptr<FakeRunningApplication> m_frontmost;
    std::vector<Past> m_past;
    std::function<void()> m_changed;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly::test
