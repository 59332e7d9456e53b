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

    /// How long is waited.
    struct Limits
    {
        /// For the bus itself, which has nothing to think about.
        std::chrono::milliseconds bus = std::chrono::seconds(5);
        /// For a program that is just starting, or ending, on a machine that has much else to do.
        std::chrono::milliseconds start = std::chrono::seconds(30);
        /// For the same when the question can be answered without it.
        std::chrono::milliseconds look = std::chrono::seconds(2);
        /// For the answer to a call.
        std::chrono::milliseconds answer = std::chrono::seconds(20);
        /// For the answer to one that changes entries: it may wait for the check of a large
        /// history, or wipe one from the disk.
        std::chrono::milliseconds change = std::chrono::seconds(120);
    };

    /// `connect` is called on a thread of its own.
    using Connect = std::function<QDBusConnection()>;
    BusClient();
    BusClient(Connect connect, const Limits& limits);

    [[nodiscard]] Bus bus() const { return m_state; }
    [[nodiscard]] const Limits& limits() const { return m_limits; }

    /// Whether somebody has the program's name.
    [[nodiscard]] bool isRunning();
    /// Waits for that, at the most until `isEnough` says so or the time is over.
    [[nodiscard]] bool
    waitUntilRunning(const std::function<bool()>& isEnough, std::chrono::milliseconds limit);

    /// The answer to a call of the program's own interface: a reply or an error.
    [[nodiscard]] QDBusMessage
    call(const QString& method, const QVariantList& arguments, std::chrono::milliseconds limit);

    /// Shows plain text on the desktop, where something shows notifications. Whether it did.
    bool notify(const QString& summary, const QString& text);

private:
    static QDBusConnection connectToSessionBus();
    QDBusMessage answer(const QDBusMessage& call, std::chrono::milliseconds limit);

    Limits m_limits;
    Bus m_state = Bus::silent;
    std::optional<QDBusConnection> m_connection;
};

} // namespace tessly
