#pragma once

#include "BusActions.h"
#include "BusConnecting.h"
#include "HistoryCommands.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <optional>

namespace tessly {

/// The program on the session bus: its name, its own interface and the one every desktop
/// application has. Main thread only; nothing here waits for the bus. Without a bus, or without one
/// any more, the program goes on, with one line in the log. Where another one has the name and
/// answers, its panel is opened and this one quits; where it does not answer, as one that is just
/// ending, this one is next.
class BusService final : public QObject
{
    Q_OBJECT

public:
    /// Opens the connection to the bus. Called once, on a thread of its own.
    using Connect = BusConnecting::Connect;

    /// `commands` must outlive the service.
    BusService(
        const BusActions& actions, HistoryCommands& commands, Connect connect = connectToSessionBus,
        QObject* parent = nullptr);
    ~BusService() override;

    /// Goes for the name. Called once.
    void start();
    /// Whether the name is the program's.
    [[nodiscard]] bool isRegistered() const { return m_isRegistered; }
    /// Whether the bus has yet to answer for the first time.
    [[nodiscard]] bool isConnecting() const { return m_connecting.isConnecting(); }

Q_SIGNALS:
    /// There is a bus, and it answers.
    void connectedToBus();

private Q_SLOTS:
    void nameAcquired(const QString& name, const QDBusMessage& signal);
    void nameLost(const QString& name, const QDBusMessage& signal);
    void disconnected();

private:
    static QDBusConnection connectToSessionBus();
    void connected(QDBusConnection bus);
    void requestName();
    void askForOwner();
    void showOwner(const QString& owner);
    /// Asks, and calls back with the answer unless there is no bus any more.
    void ask(const QDBusMessage& question, std::function<void(const QDBusMessage&)> answered);
    void sendLater(std::function<QDBusMessage()> answer);
    void giveUp(const QString& reason);

    Connect m_connect;
    std::function<void()> m_quit;
    BusConnecting m_connecting;
    std::optional<QDBusConnection> m_bus;
    bool m_isRegistered = false;
    /// One thread, so that answers keep their order.
    QThreadPool m_answers;
};

} // namespace tessly
