#include "LoopTimers.h"

#include <algorithm>

namespace tessly {

LoopTimers::LoopTimers(Time clock)
    : m_clock(clock)
    , m_now(clock)
{
}

LoopTimers::Time LoopTimers::now(Time clock)
{
    advance(clock);
    return m_now;
}

void LoopTimers::advance(Time clock)
{
    const Time::duration passed = clock - m_clock;
    m_now += m_wait ? std::min<Time::duration>(passed, *m_wait + latenessAllowed) : passed;
    m_clock = clock;
    m_wait = Milliseconds(0);
}

LoopTimers::ID LoopTimers::callAfter(Time clock, Milliseconds delay, std::function<void()> callback)
{
    const ID id = m_next++;
    const Time due = now(clock) + delay;
    m_dues.emplace(id, due);
    m_timers.emplace(Place(due, id), std::move(callback));
    return id;
}

void LoopTimers::cancel(ID timer)
{
    if (const auto due = m_dues.extract(timer)) {
        m_timers.erase(Place(due.mapped(), timer));
    }
}

bool LoopTimers::runDue(Time clock, Arrived arrived)
{
    const Time time = now(clock);
    if (m_timers.empty() || m_timers.begin()->first.first > time) {
        m_turnsPutOff = 0;
        return false;
    }
    if (arrived == Arrived::something && m_turnsPutOff < turnsPutOff) {
        ++m_turnsPutOff;
        return false;
    }
    m_turnsPutOff = 0;
    // The callbacks may add and cancel timers: look for each anew, and leave what they add to the
    // next turn.
    const ID firstAdded = m_next;
    const auto isDue = [time, firstAdded](const auto& timer) {
        return timer.first.first <= time && timer.first.second < firstAdded;
    };
    for (auto next = std::ranges::find_if(m_timers, isDue); next != m_timers.end();
         next = std::ranges::find_if(m_timers, isDue)) {
        const auto callback = std::move(next->second);
        m_dues.erase(next->first.second);
        m_timers.erase(next);
        callback();
    }
    return true;
}

int LoopTimers::pollTimeout(Time clock)
{
    const Time time = now(clock);
    if (m_timers.empty()) {
        return -1;
    }
    const Time::duration left = std::clamp<Time::duration>(
        m_timers.begin()->first.first - time, Milliseconds(0), longestWait);
    return static_cast<int>(std::chrono::ceil<Milliseconds>(left).count());
}

void LoopTimers::beginWait(int timeout)
{
    m_wait = timeout < 0 ? std::nullopt : std::optional(Milliseconds(timeout));
}

} // namespace tessly
