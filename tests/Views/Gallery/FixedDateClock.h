#pragma once

#include "SystemClock.h"

namespace tessly::test {

/// A date that stands still, so that pictures of ages are the same each time, and the event loop's
/// timers.
class FixedDateClock final : public Clock
{
public:
    /// 2026-03-09 15:05:00 UTC.
    [[nodiscard]] double now() const override { return 1'773'068'700; }
    [[nodiscard]] std::unique_ptr<Timer> after(Duration delay, Callback callback) override
    {
        return m_timers.after(delay, std::move(callback));
    }
    [[nodiscard]] std::unique_ptr<Timer> every(Duration interval, Callback callback) override
    {
        return m_timers.every(interval, std::move(callback));
    }

private:
    SystemClock m_timers;
};

} // namespace tessly::test
