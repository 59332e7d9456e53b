#pragma once

#include "Actor.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace tessly {

/// An executor with one thread of its own, which sleeps while there is nothing to do.
class ThreadExecutor final : public Executor
{
public:
    /// `name` shows in debuggers and in /proc; the kernel keeps its first 15 bytes.
    explicit ThreadExecutor(const std::string& name);
    ~ThreadExecutor() override;

    void enqueue(std::function<void()> job) override;

private:
    void loop();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    bool m_isStopping = false;
    std::thread m_thread;
};

} // namespace tessly
