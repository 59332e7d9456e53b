#pragma once

#include "Clock.h"

#include <QtGlobal>

#include <map>

namespace tessly::test {

/// A clock that stands still until a test moves it.
class VirtualClock final : public Clock
{
public:
    [[nodiscard]] double now() const override;
    [[nodiscard]] std::unique_ptr<Timer> after(Duration delay, Callback callback) override;
    [[nodiscard]] std::unique_ptr<Timer> every(Duration interval, Callback callback) override;

    /// Moves time on, running what falls due on the way, in its order and at its time; events of
    /// the Qt loop are processed in between.
    void advance(Duration duration);

    /// How many waits are under way.
    [[nodiscard]] std::size_t pending() const { return m_entries.size(); }

private:
    class Handle;
    struct Entry
    {
        Duration due;
        Duration interval;
        Callback callback;
    };

    std::unique_ptr<Timer> add(Duration delay, Duration interval, Callback callback);

    Duration m_elapsed{};
    quint64 m_nextID = 1;
    std::map<quint64, Entry> m_entries;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly::test
