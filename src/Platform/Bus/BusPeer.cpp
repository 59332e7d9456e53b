#include "BusPeer.h"

#include "LoopAnswer.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <limits>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;
const QString localPath = u"/org/freedesktop/DBus/Local"_s;
const QString localInterface = u"org.freedesktop.DBus.Local"_s;

/// Time is kept by the clock; to the bus library, a call may take for ever.
constexpr int noTimeout = std::numeric_limits<int>::max();

QDBusMessage timedOut()
{
    return QDBusMessage::createError(QDBusError::NoReply, u"no answer in time"_s);
}

} // namespace

BusPeer::BusPeer(
    Connect connect, Object object, const QStringList& signalNames, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_object(std::move(object))
    , m_signalNames(signalNames)
    , m_clock(clock)
{
    m_connecting.start(std::move(connect));
}

BusPeer::~BusPeer() = default;

void BusPeer::connected(const QDBusConnection& bus)
{
    if (!bus.isConnected()) {
        Q_EMIT ownerChanged();
        return;
    }
    m_bus = bus;
    // From any sender, told apart when they come: of one that is named, even by its unique name,
    // QtDBus would first ask the bus, and wait.
    m_bus->connect(
        QString(), daemonPath, daemonName, u"NameOwnerChanged"_s, {m_object.service}, QString(),
        this, SLOT(nameOwnerChanged(QString, QString, QString, QDBusMessage)));
    for (const QString& name : m_signalNames) {
        m_bus->connect(
            QString(), m_object.path, m_object.interface, name, this, SLOT(relay(QDBusMessage)));
    }
    m_bus->connect(
        QString(), localPath, localInterface, u"Disconnected"_s, this, SLOT(disconnected()));

    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"GetNameOwner"_s);
    question << m_object.service;
    whenAnswered(m_bus->asyncCall(question, noTimeout), [this](const QDBusPendingCall& call) {
        // One that came meanwhile has announced itself.
        if (isThere()) {
            return;
        }
        const QDBusPendingReply<QString> reply = call;
        if (reply.isValid()) {
            setOwner(reply.value());
        } else {
            Q_EMIT ownerChanged();
        }
    });
}

void BusPeer::whenAnswered(
    const QDBusPendingCall& call, std::function<void(const QDBusPendingCall&)> answered)
{
    auto* const pending = new QDBusPendingCallWatcher(call, this);
    connect(
        pending, &QDBusPendingCallWatcher::finished, this,
        [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            answered(*finished);
        });
}

void BusPeer::setOwner(const QString& owner)
{
    if (std::exchange(m_owner, owner) != owner) {
        Q_EMIT ownerChanged();
    }
}

QFuture<QDBusMessage> BusPeer::call(
    const QString& method, const QVariantList& arguments, Clock::Duration timeout,
    std::function<void(const QDBusMessage&)> answered)
{
    const LoopAnswer<QDBusMessage> answer(timedOut());
    if (m_bus && isThere()) {
        auto message =
            QDBusMessage::createMethodCall(m_owner, m_object.path, m_object.interface, method);
        message.setArguments(arguments);
        // The one that comes second changes nothing.
        const std::shared_ptr<Clock::Timer> deadline =
            m_clock.after(timeout, [answer] { answer(timedOut()); });
        whenAnswered(
            m_bus->asyncCall(message, noTimeout),
            [answer, deadline, answered = std::move(answered)](const QDBusPendingCall& call) {
                const QDBusMessage reply = call.reply();
                if (answered) {
                    answered(reply);
                }
                answer(reply);
            });
    }
    return answer.future();
}

void BusPeer::nameOwnerChanged(
    const QString& /*name*/, const QString& /*before*/, const QString& owner,
    const QDBusMessage& signal)
{
    if (signal.service() == daemonName) {
        setOwner(owner);
    }
}

void BusPeer::relay(const QDBusMessage& signal)
{
    if (isThere() && signal.service() == m_owner) {
        Q_EMIT received(signal);
    }
}

void BusPeer::disconnected()
{
    setOwner({});
}

} // namespace tessly
