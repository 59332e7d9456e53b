#pragma once

#include "Actor.h"

namespace tessly::test {

/// An executor that runs each job at once, on the thread that gives it.
class InlineExecutor final : public Executor
{
public:
    void enqueue(std::function<void()> job) override { job(); }
};

} // namespace tessly::test
