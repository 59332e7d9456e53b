#pragma once

#include <QCoroTask>
#include <QPromise>

#include <deque>
#include <memory>

namespace tessly::test {

/// Where a fake's asynchronous operations wait, as the real ones wait for another process. Open, it
/// lets them through at the next turn of the event loop, never at once; held, when the test says
/// so.
class Gate
{
public:
    Gate() = default;
    ~Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// From now on, whoever comes waits.
    void hold() { m_isHeld = true; }
    /// Lets the one that waits longest through; false if nobody waits.
    bool releaseOne();
    /// Lets everybody who waits now through; those who come later still wait while held.
    void releaseWaiting();
    /// Lets everybody through, also those who come later.
    void open();
    /// How many wait at the held gate.
    [[nodiscard]] std::size_t waiting() const { return m_waiting.size(); }

    /// Returns once let through, or when the gate is gone.
    [[nodiscard]] QCoro::Task<> pass();

private:
    bool m_isHeld = false;
    std::deque<std::shared_ptr<QPromise<void>>> m_waiting;
};

} // namespace tessly::test
