#include "EventLoop.h"

#include <chrono>
#include <cstdint>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

constexpr auto stopTimeout = std::chrono::seconds(2);

LoopTimers::Time clock()
{
    return std::chrono::steady_clock::now();
}

} // namespace

EventLoop::EventLoop()
    : m_wakeFD(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    , m_timers(clock())
{
}

EventLoop::~EventLoop()
{
    if (m_wakeFD >= 0) {
        close(m_wakeFD);
    }
}

void EventLoop::startThread(const std::string& name, Job run)
{
    m_thread = std::thread([this, run = std::move(run)] {
        run();
        m_ended.set_value();
    });
    pthread_setname_np(m_thread.native_handle(), name.substr(0, 15).c_str());
}

void EventLoop::stopThread(const Job& release)
{
    if (!m_thread.joinable()) {
        return;
    }
    m_isStopping = true;
    wake();
    if (release && m_ended.get_future().wait_for(stopTimeout) == std::future_status::timeout) {
        release();
    }
    m_thread.join();
}

void EventLoop::post(Job job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_posted.push_back(std::move(job));
    }
    wake();
}

void EventLoop::wake() const
{
    const std::uint64_t one = 1;
    // The counter can only be full when a wake-up is pending already.
    [[maybe_unused]] const auto written = write(m_wakeFD, &one, sizeof one);
}

LoopTimers::Time EventLoop::now()
{
    return m_timers.now(clock());
}

EventLoop::TimerID EventLoop::callAfter(Milliseconds delay, std::function<void()> callback)
{
    return m_timers.callAfter(clock(), delay, std::move(callback));
}

void EventLoop::cancel(TimerID timer)
{
    m_timers.cancel(timer);
}

std::vector<EventLoop::Job> EventLoop::takeJobs()
{
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_posted, {});
}

bool EventLoop::runTimers(LoopTimers::Arrived arrived)
{
    return m_timers.runDue(clock(), arrived);
}

int EventLoop::waitingTime()
{
    return m_timers.pollTimeout(clock());
}

int EventLoop::wait(std::vector<pollfd>& files, int timeout)
{
    files.push_back({.fd = m_wakeFD, .events = POLLIN, .revents = 0});
    m_timers.beginWait(timeout);
    const int found = poll(files.data(), files.size(), timeout);
    if (found > 0 && (files.back().revents & POLLIN) != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto bytes = read(m_wakeFD, &count, sizeof count);
    }
    files.pop_back();
    return found;
}

} // namespace tessly
