#pragma once

#include "BusConnecting.h"
#include "Clock.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFuture>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <optional>

namespace tessly {

/// An object of another program on a bus, found by that program's well-known name: whether it is
/// there, calls to it and signals of it. Never starts the program. Main thread only; nothing waits
/// for the bus or the program.
class BusPeer final : public QObject
{
    Q_OBJECT

public:
    using Connect = BusConnecting::Connect;

    struct Object
    {
        QString service;
        QString path;
        QString interface;
    };

    /// `connect` opens the connection to the bus, on a thread of its own. `signalNames` are those
    /// to be told of. `clock` must outlive this.
    BusPeer(
        Connect connect, Object object, const QStringList& signalNames, Clock& clock,
        QObject* parent = nullptr);
    ~BusPeer() override;

    /// The program's unique name; empty while it is not there.
    [[nodiscard]] const QString& owner() const { return m_owner; }
    [[nodiscard]] bool isThere() const { return !m_owner.isEmpty(); }

    /// Calls a method. The answer is an error message if the program is not there or does not
    /// answer within `timeout`. `answered` hears of answers that come late, too, but of none that
    /// comes after this has gone.
    QFuture<QDBusMessage> call(
        const QString& method, const QVariantList& arguments, Clock::Duration timeout,
        std::function<void(const QDBusMessage&)> answered = {});

Q_SIGNALS:
    /// The program has come, gone, or another has taken its name; and once when it is known at
    /// first that it is not there.
    void ownerChanged();
    /// One of the signals, from this program and from nobody else.
    void received(const QDBusMessage& signal);

private Q_SLOTS:
    void nameOwnerChanged(
        const QString& name, const QString& before, const QString& owner,
        const QDBusMessage& signal);
    void relay(const QDBusMessage& signal);
    void disconnected();

private:
    void connected(const QDBusConnection& bus);
    void setOwner(const QString& owner);
    void whenAnswered(
        const QDBusPendingCall& call, std::function<void(const QDBusPendingCall&)> answered);

    const Object m_object;
    const QStringList m_signalNames;
    Clock& m_clock;
    std::optional<QDBusConnection> m_bus;
    BusConnecting m_connecting{[this](const QDBusConnection& bus) { connected(bus); }};
    QString m_owner;
};

} // namespace tessly
