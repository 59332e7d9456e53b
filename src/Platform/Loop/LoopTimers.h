#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace tessly {

/// The timers of an event loop, and the time that they go by. It has no clock of its own: the loop
/// says at each call what its clock shows, which must never go back.
///
/// The loop's time passes with the clock, but stands still while the loop does not run: in each
/// turn no more of it passes than the loop meant to wait, and a little. So a process that was
/// stopped, or did not get the processor, finds its timers as far away as they were before.
class LoopTimers
{
public:
    using Time = std::chrono::steady_clock::time_point;
    using Milliseconds = std::chrono::milliseconds;
    using ID = std::uint64_t;

    /// How much later than it meant to a loop may come round without having stood still. More than
    /// what a processor that is shared takes, less than what matters to a deadline.
    static constexpr Milliseconds latenessAllowed{100};
    /// The longest wait while there are timers: a pause in the middle of a wait cannot be told from
    /// the wait, and must not use up a deadline.
    static constexpr Milliseconds longestWait{250};
    /// How many turns in a row due timers are put off for what has arrived, so that a flood does
    /// not stop them.
    static constexpr int turnsPutOff = 16;

    enum class Arrived { nothing, something };

    explicit LoopTimers(Time clock);

    /// The loop's time. Deadlines that are kept as points in time are points in this one.
    [[nodiscard]] Time now(Time clock);

    /// Calls back once, not before the delay has passed.
    ID callAfter(Time clock, Milliseconds delay, std::function<void()> callback);
    /// Does nothing if the timer has run.
    void cancel(ID timer);

    /// Runs the timers that are due, in the order in which they became so, unless something has
    /// arrived in this turn: that may be what a timer is about to give up. Whether any has run.
    bool runDue(Time clock, Arrived arrived);

    /// How long the loop may wait for events, in the form of poll(2).
    [[nodiscard]] int pollTimeout(Time clock);
    /// The loop is about to wait that long, in the form of poll(2).
    void beginWait(int timeout);

private:
    /// When it is due, and the older first.
    using Place = std::pair<Time, ID>;

    void advance(Time clock);

    Time m_clock;
    Time m_now;
    /// How long the loop meant to wait since the clock was last looked at; none: for ever.
    std::optional<Milliseconds> m_wait = Milliseconds(0);
    std::map<Place, std::function<void()>> m_timers;
    std::map<ID, Time> m_dues;
    ID m_next = 1;
    int m_turnsPutOff = 0;
};

} // namespace tessly
