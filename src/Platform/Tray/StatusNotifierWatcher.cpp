#include "StatusNotifierWatcher.h"

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcWatcher, "com.brackmoor.tessly.StatusNotifierItem")

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;
const QString localPath = u"/org/freedesktop/DBus/Local"_s;
const QString localInterface = u"org.freedesktop.DBus.Local"_s;

/// Calls back when the answer is there, unless `context` is gone by then.
void whenAnswered(
    const QDBusPendingCall& call, QObject* context,
    std::function<void(const QDBusPendingCall&)> answered)
{
    auto* const pending = new QDBusPendingCallWatcher(call, context);
    QObject::connect(
        pending, &QDBusPendingCallWatcher::finished, context,
        [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            answered(*finished);
        });
}

} // namespace

StatusNotifierWatcher::StatusNotifierWatcher(
    const QDBusConnection& bus, std::function<void(State)> stateChanged, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_stateChanged(std::move(stateChanged))
{
    // From any sender, told apart when they come: of one that is named, even by its unique name,
    // QtDBus would first ask the bus, and wait.
    m_bus.connect(
        QString(), daemonPath, daemonName, u"NameOwnerChanged"_s, {watcherName}, QString(), this,
        SLOT(ownerChanged(QString, QString, QString, QDBusMessage)));
    for (const QString& name :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        m_bus.connect(
            QString(), watcherPath, watcherName, name, this, SLOT(hostsChanged(QDBusMessage)));
    }
    m_bus.connect(
        QString(), localPath, localInterface, u"Disconnected"_s, this, SLOT(disconnected()));

    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"GetNameOwner"_s);
    question << watcherName;
    whenAnswered(m_bus.asyncCall(question), this, [this](const QDBusPendingCall& call) {
        // An error says that there is none. A watcher that came meanwhile has announced itself.
        const QDBusPendingReply<QString> reply = call;
        if (m_owner.isEmpty()) {
            setOwner(reply.isValid() ? reply.value() : QString());
        }
    });
}

StatusNotifierWatcher::~StatusNotifierWatcher() = default;

void StatusNotifierWatcher::setOwner(const QString& owner)
{
    m_owner = owner;
    if (m_owner.isEmpty()) {
        setState(State::absent);
        return;
    }
    registerItem();
}

void StatusNotifierWatcher::registerItem()
{
    auto call = QDBusMessage::createMethodCall(
        m_owner, watcherPath, watcherName, u"RegisterStatusNotifierItem"_s);
    // The connection's own name: it belongs to this program for as long as it is connected, and no
    // other has to be asked for.
    call << m_bus.baseService();
    whenAnswered(
        m_bus.asyncCall(call), this, [this, owner = m_owner](const QDBusPendingCall& answer) {
            if (owner != m_owner) {
                return;
            }
            if (answer.isError()) {
                qCWarning(lcWatcher).noquote()
                    << "The tray refused the icon:" << answer.error().message();
                setState(State::absent);
                return;
            }
            askForHosts();
        });
}

void StatusNotifierWatcher::askForHosts()
{
    auto question = QDBusMessage::createMethodCall(
        m_owner, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherName << u"IsStatusNotifierHostRegistered"_s;
    whenAnswered(
        m_bus.asyncCall(question), this, [this, owner = m_owner](const QDBusPendingCall& answer) {
            if (owner != m_owner) {
                return;
            }
            // Where a watcher does not say, it shows the items itself.
            const QDBusPendingReply<QVariant> reply = answer;
            const bool isShown = !reply.isValid() || reply.value().toBool();
            setState(isShown ? State::present : State::absent);
        });
}

void StatusNotifierWatcher::ownerChanged(
    const QString& /*name*/, const QString& /*before*/, const QString& owner,
    const QDBusMessage& signal)
{
    if (signal.service() == daemonName) {
        setOwner(owner);
    }
}

void StatusNotifierWatcher::hostsChanged(const QDBusMessage& signal)
{
    if (signal.service() == m_owner) {
        askForHosts();
    }
}

void StatusNotifierWatcher::disconnected()
{
    m_owner.clear();
    setState(State::absent);
}

void StatusNotifierWatcher::setState(State state)
{
    if (std::exchange(m_state, state) != state) {
        m_stateChanged(state);
    }
}

} // namespace tessly
