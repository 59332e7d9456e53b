#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace tessly {

/// Time as the program sees it, so that everything that waits can be tested in virtual time.
///
/// Used on the main thread only. Callbacks run on the main thread, from the event loop, never from
/// inside the call that asked for them.
class Clock
{
public:
    /// A wait that is under way. Destroying it cancels it; its callback may destroy it.
    class Timer
    {
    public:
        Timer() = default;
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;
        virtual ~Timer() = default;
    };

    using Duration = std::chrono::nanoseconds;
    using Callback = std::function<void()>;

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Seconds since 1970-01-01 00:00:00 UTC. The one operation that any thread may call.
    [[nodiscard]] virtual double now() const = 0;

    /// Calls back once, `delay` from now.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(Duration delay, Callback callback) = 0;

    /// Calls back every `interval`, first one interval from now.
    [[nodiscard]] virtual std::unique_ptr<Timer> every(Duration interval, Callback callback) = 0;
};

} // namespace tessly
