#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace tessly {

/// Makes a status item known to org.kde.StatusNotifierWatcher, whenever there is one, and tells
/// whether someone shows it. Main thread only; nothing waits for the bus.
class StatusNotifierWatcher final : public QObject
{
    Q_OBJECT

public:
    enum class State {
        /// Not known yet.
        undecided,
        /// There is no watcher, or it refused, or it knows of no host that shows items.
        absent,
        present,
    };

    /// The item is the object of the protocol's usual path on this connection.
    StatusNotifierWatcher(
        const QDBusConnection& bus, std::function<void(State)> stateChanged,
        QObject* parent = nullptr);
    ~StatusNotifierWatcher() override;

private Q_SLOTS:
    void ownerChanged(
        const QString& name, const QString& before, const QString& owner,
        const QDBusMessage& signal);
    void hostsChanged(const QDBusMessage& signal);
    void disconnected();

private:
    void setOwner(const QString& owner);
    void registerItem();
    void askForHosts();
    void setState(State state);

    QDBusConnection m_bus;
    std::function<void(State)> m_stateChanged;
    /// The watcher's unique name; empty while there is none.
    QString m_owner;
    State m_state = State::undecided;
};

} // namespace tessly
