#include "WaylandDesktop.h"

#include "WaylandToplevels.h"

#include <QObject>

#include <utility>

namespace tessly {

WaylandDesktop::WaylandDesktop()
    : WaylandDesktop(Options())
{
}

WaylandDesktop::WaylandDesktop(Options options)
    : m_mainThread(std::make_unique<QObject>())
    , m_loop(options.display)
    , m_registry(m_loop)
{
    m_loop.roundTrip(options.deadline);
    m_seat = std::make_unique<WaylandSeat>(
        m_registry,
        WaylandSeat::Events{.changed = [] {}, .keymapChanged = [](const QByteArray&) {}});
    // After the last wait: the windows are told of on the loop's thread, which reads desktop
    // entries for them.
    m_toplevels =
        std::make_shared<WaylandToplevels>(m_loop, m_registry, *m_seat, std::move(options.entries));
    m_loop.start("tessly-wayland", [this] { lost(); });
}

WaylandDesktop::~WaylandDesktop()
{
    // What lives on the loop refers to it: first nothing runs any more, then it goes.
    m_loop.stop();
}

void WaylandDesktop::setConnectionLost(std::function<void()> callback)
{
    m_connectionLost = std::move(callback);
}

bool WaylandDesktop::hasToplevels() const
{
    return m_toplevels->isTold();
}

void WaylandDesktop::lost()
{
    m_isConnected = false;
    m_toplevels->lost();
    QMetaObject::invokeMethod(
        m_mainThread.get(),
        [this] {
            if (const auto callback = m_connectionLost) {
                callback();
            }
        },
        Qt::QueuedConnection);
}

} // namespace tessly
