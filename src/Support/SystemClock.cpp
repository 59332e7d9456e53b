#include "SystemClock.h"

#include <QObject>
#include <QTimer>

#include <utility>

namespace tessly {

namespace {

class EventLoopTimer final : public Clock::Timer
{
public:
    EventLoopTimer(Clock::Duration interval, bool repeats, Clock::Callback callback)
    {
        m_timer.setSingleShot(!repeats);
        // A repeating timer may drift by a few per cent so that the kernel can batch wake-ups.
        m_timer.setTimerType(repeats ? Qt::CoarseTimer : Qt::PreciseTimer);
        m_timer.setInterval(std::chrono::ceil<std::chrono::milliseconds>(interval));
        // The callback may destroy this timer, and with it the stored closure: run a copy.
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [callback = std::move(callback)] {
            const auto copy = callback;
            copy();
        });
        m_timer.start();
    }

private:
    QTimer m_timer;
};

} // namespace

double SystemClock::now() const
{
    using Seconds = std::chrono::duration<double>;
    return Seconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::unique_ptr<Clock::Timer> SystemClock::after(Duration delay, Callback callback)
{
    return std::make_unique<EventLoopTimer>(delay, false, std::move(callback));
}

std::unique_ptr<Clock::Timer> SystemClock::every(Duration interval, Callback callback)
{
    return std::make_unique<EventLoopTimer>(interval, true, std::move(callback));
}

} // namespace tessly
