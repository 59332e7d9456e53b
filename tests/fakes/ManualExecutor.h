#pragma once

#include "Actor.h"

#include <deque>

namespace tessly::test {

/// An executor that runs its jobs on the test's thread, when the test says so.
class ManualExecutor final : public Executor
{
public:
    ~ManualExecutor() override;
    void enqueue(std::function<void()> job) override;

    /// Runs the oldest job; false if there is none.
    bool runOne();
    [[nodiscard]] std::size_t pending() const { return m_jobs.size(); }

private:
    std::deque<std::function<void()>> m_jobs;
};

} // namespace tessly::test
