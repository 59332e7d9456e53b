#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>

namespace tessly {

/// Opens a connection to a bus on a thread of its own, since opening waits for the bus. Main thread
/// only.
class BusConnecting final : public QObject
{
public:
    using Connect = std::function<QDBusConnection()>;
    /// Told from the event loop, unless this has gone by then. The connection may have failed.
    using Connected = std::function<void(const QDBusConnection&)>;

    explicit BusConnecting(Connected connected);
    /// Waits for a connection that is being opened, which needs the process to live on; but not for
    /// long, since a bus may never answer.
    ~BusConnecting() override;

    /// Called once. `connect` is called on the thread.
    void start(Connect connect);
    /// Whether the bus has yet to answer.
    [[nodiscard]] bool isConnecting() const;

private:
    struct Progress;

    Connected m_connected;
    std::shared_ptr<Progress> m_progress;
};

} // namespace tessly
