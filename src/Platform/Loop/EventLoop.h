#pragma once

#include "LoopTimers.h"

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <poll.h>
#include <string>
#include <thread>
#include <vector>

namespace tessly {

/// A thread, the jobs that are posted to it, and its timers. What else it waits for, and in which
/// order things have their turn, is the derived class's.
///
/// Everything marked "loop thread" is called from posted jobs, from timers and by the derived
/// class only. Time during which the thread did not run does not count for timers: see LoopTimers.
class EventLoop
{
public:
    using Milliseconds = LoopTimers::Milliseconds;
    using TimerID = LoopTimers::ID;

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// Runs a job on the loop thread. Any thread, also before there is one.
    void post(std::function<void()> job);

    // Loop thread:

    /// The time that timers go by, and deadlines that end in timers.
    [[nodiscard]] LoopTimers::Time now();
    TimerID callAfter(Milliseconds delay, std::function<void()> callback);
    void cancel(TimerID timer);

protected:
    using Job = std::function<void()>;

    EventLoop();
    /// The thread has been stopped.
    ~EventLoop();

    /// Whether it can be used: not where the process may open no more files.
    [[nodiscard]] bool canWait() const { return m_wakeFD >= 0; }

    /// `run` is what the thread does; it returns soon after `isStopping`. `name` shows in
    /// debuggers; the kernel keeps its first 15 bytes.
    void startThread(const std::string& name, Job run);
    /// Stops and joins the thread. Safe to call twice. `release` is called if it has not ended
    /// after 2 s, as something that it waits for may never come.
    void stopThread(const Job& release = {});

    // Loop thread:

    [[nodiscard]] bool isStopping() const { return m_isStopping; }
    /// Those that have been posted and not been taken before.
    [[nodiscard]] std::vector<Job> takeJobs();
    /// Whether a timer has run.
    bool runTimers(LoopTimers::Arrived arrived);
    /// How long to wait for jobs and files at the most, in the form of poll(2).
    [[nodiscard]] int waitingTime();
    /// Waits as poll(2) does, for jobs as well.
    int wait(std::vector<pollfd>& files, int timeout);

private:
    void wake() const;

    int m_wakeFD = -1;
    LoopTimers m_timers;
    std::mutex m_mutex;
    std::vector<Job> m_posted;
    std::atomic<bool> m_isStopping = false;
    std::promise<void> m_ended;
    std::thread m_thread;
};

} // namespace tessly
