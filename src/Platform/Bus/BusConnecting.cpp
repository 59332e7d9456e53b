#include "BusConnecting.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace tessly {

namespace {

/// A bus that is there answers in milliseconds.
constexpr auto timeout = 1s;

} // namespace

/// What the thread shares with the object, which may go before it.
struct BusConnecting::Progress
{
    std::mutex mutex;
    std::condition_variable ended;
    bool isConnecting = false;
    /// Null once the object goes.
    BusConnecting* owner = nullptr;
};

BusConnecting::BusConnecting(Connected connected)
    : m_connected(std::move(connected))
    , m_progress(std::make_shared<Progress>())
{
}

BusConnecting::~BusConnecting()
{
    std::unique_lock lock(m_progress->mutex);
    m_progress->owner = nullptr;
    m_progress->ended.wait_for(lock, timeout, [this] { return !m_progress->isConnecting; });
}

void BusConnecting::start(Connect connect)
{
    m_progress->owner = this;
    m_progress->isConnecting = true;
    // Detached: a bus that never answers must not keep the program from ending.
    std::thread([progress = m_progress, connect = std::move(connect)] {
        std::optional<QDBusConnection> bus = connect();
        const std::lock_guard lock(progress->mutex);
        if (BusConnecting* const owner = progress->owner; owner != nullptr) {
            QMetaObject::invokeMethod(
                owner, [owner, bus = *bus] { owner->m_connected(bus); }, Qt::QueuedConnection);
        }
        // While the process certainly lives.
        bus.reset();
        progress->isConnecting = false;
        progress->ended.notify_all();
    }).detach();
}

bool BusConnecting::isConnecting() const
{
    const std::lock_guard lock(m_progress->mutex);
    return m_progress->isConnecting;
}

} // namespace tessly
