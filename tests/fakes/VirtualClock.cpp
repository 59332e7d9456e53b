#include "VirtualClock.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <algorithm>
#include <utility>

namespace tessly::test {

namespace {

constexpr double epoch = 1'700'000'000;

void processQtEvents()
{
    // With a time limit, Qt goes on until there is nothing left to do.
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1000);
}

} // namespace

class VirtualClock::Handle final : public Clock::Timer
{
public:
    Handle(VirtualClock& clock, quint64 id)
        : m_clock(clock)
        , m_alive(clock.m_alive)
        , m_id(id)
    {
    }
    ~Handle() override
    {
        if (!m_alive.expired()) {
            m_clock.m_entries.erase(m_id);
        }
    }

private:
    VirtualClock& m_clock;
    std::weak_ptr<bool> m_alive;
    quint64 m_id;
};

double VirtualClock::now() const
{
    return epoch + std::chrono::duration<double>(m_elapsed).count();
}

std::unique_ptr<Clock::Timer> VirtualClock::after(Duration delay, Callback callback)
{
    return add(delay, Duration::zero(), std::move(callback));
}

std::unique_ptr<Clock::Timer> VirtualClock::every(Duration interval, Callback callback)
{
    return add(interval, interval, std::move(callback));
}

std::unique_ptr<Clock::Timer>
VirtualClock::add(Duration delay, Duration interval, Callback callback)
{
    const quint64 id = m_nextID++;
    m_entries.emplace(id, Entry{m_elapsed + delay, interval, std::move(callback)});
    return std::make_unique<Handle>(*this, id);
}

void VirtualClock::advance(Duration duration)
{
    const Duration end = m_elapsed + duration;
    processQtEvents();
    for (;;) {
        const auto next = std::ranges::min_element(
            m_entries, {}, [](const auto& entry) { return entry.second.due; });
        if (next == m_entries.end() || next->second.due > end) {
            break;
        }
        m_elapsed = next->second.due;
        const Callback callback = next->second.callback;
        if (next->second.interval > Duration::zero()) {
            next->second.due += next->second.interval;
        } else {
            m_entries.erase(next);
        }
        callback();
        processQtEvents();
    }
    m_elapsed = end;
}

} // namespace tessly::test
