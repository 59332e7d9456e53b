#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <functional>
#include <optional>

namespace tessly {

/// The running program, as a command in another process reaches it. Everything here waits, but not
/// for ever. Needs a QCoreApplication.
class BusClient
{
public:
    enum class Bus {
        present,
        /// There is none.
        absent,
        /// There is one that does not answer. QtDBus waits for it when a process ends in order.
        silent,
    };

    /// `connect` is called on a thread of its own.
    using Connect = std::function<QDBusConnection()>;
    explicit BusClient(Connect connect = connectToSessionBus);

    [[nodiscard]] Bus bus() const { return m_state; }

    /// Whether somebody has the program's name.
    [[nodiscard]] bool isRunning();
    /// Waits for that, at the most until `isEnough` says so or the time a start may take is over.
    [[nodiscard]] bool waitUntilRunning(const std::function<bool()>& isEnough);

    /// The answer to a call of the program's own interface: a reply or an error.
    [[nodiscard]] QDBusMessage call(
        const QString& method, const QVariantList& arguments = {},
        std::chrono::milliseconds limit = std::chrono::seconds(20));

private:
    static QDBusConnection connectToSessionBus();
    QDBusMessage answer(const QDBusMessage& call, std::chrono::milliseconds limit);

    Bus m_state = Bus::silent;
    std::optional<QDBusConnection> m_connection;
};

} // namespace tessly
