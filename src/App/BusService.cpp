#include "BusService.h"

#include "BusInterface.h"
#include "BusNames.h"
#include "FreedesktopApplicationInterface.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.BusService")

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;
const QString localPath = u"/org/freedesktop/DBus/Local"_s;
const QString localInterface = u"org.freedesktop.DBus.Local"_s;

// Of RequestName: the name, or nothing.
constexpr uint doNotQueue = 4;
constexpr uint primaryOwner = 1;

} // namespace

BusService::BusService(
    const BusActions& actions, HistoryCommands& commands, Connect connect, QObject* parent)
    : QObject(parent)
    , m_connect(std::move(connect))
    , m_connecting([this](const QDBusConnection& bus) { connected(bus); })
{
    m_answers.setMaxThreadCount(1);
    // Adaptors belong to the object they are made for.
    new BusInterface(
        actions, commands,
        [this](std::function<QDBusMessage()> answer) { sendLater(std::move(answer)); }, this);
    new FreedesktopApplicationInterface(actions, this);
}

BusService::~BusService()
{
    m_answers.waitForDone();
    if (m_bus) {
        m_bus->unregisterObject(busPath);
        // Others in this process may still use the connection.
        auto call =
            QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"ReleaseName"_s);
        call << busName;
        m_bus->asyncCall(call);
    }
}

QDBusConnection BusService::connectToSessionBus()
{
    return QDBusConnection::sessionBus();
}

void BusService::start()
{
    m_connecting.start(std::exchange(m_connect, nullptr));
}

void BusService::connected(QDBusConnection bus)
{
    if (!bus.isConnected()) {
        giveUp(u"There is no session bus: other programs cannot reach Tessly."_s);
        return;
    }
    m_bus = bus;
    // By no sender's name: for one, QtDBus would wait for the bus to tell its owner.
    bus.connect(
        QString(), daemonPath, daemonName, u"NameLost"_s, this,
        SLOT(nameLost(QString, QDBusMessage)));
    bus.connect(
        QString(), localPath, localInterface, u"Disconnected"_s, this, SLOT(disconnected()));
    // The object first: whoever sees the name may call at once.
    if (!bus.registerObject(busPath, this)) {
        giveUp(u"Could not offer anything on the session bus."_s);
        return;
    }
    requestName();
    Q_EMIT connectedToBus();
}

void BusService::requestName()
{
    auto call =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"RequestName"_s);
    call << busName << doNotQueue;
    auto* const pending = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(
        pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* ended) {
            ended->deleteLater();
            const QDBusPendingReply<uint> reply = *ended;
            if (!m_bus) {
                return;
            }
            if (reply.isError()) {
                giveUp(u"Could not register on the session bus: "_s + reply.error().message());
            } else if (reply.value() != primaryOwner) {
                giveUp(u"The name on the session bus is taken: other programs cannot reach this "
                       "Tessly."_s);
            } else {
                m_isRegistered = true;
            }
        });
}

void BusService::nameLost(const QString& name, const QDBusMessage& signal)
{
    if (name == busName && signal.service() == daemonName && m_isRegistered) {
        giveUp(u"The name on the session bus is lost: other programs cannot reach Tessly."_s);
    }
}

void BusService::disconnected()
{
    if (m_bus) {
        m_bus.reset();
        giveUp(u"The session bus is gone: other programs cannot reach Tessly."_s);
    }
}

void BusService::giveUp(const QString& reason)
{
    m_isRegistered = false;
    qCWarning(log).noquote() << reason;
}

void BusService::sendLater(std::function<QDBusMessage()> answer)
{
    if (m_bus) {
        m_answers.start([bus = *m_bus, answer = std::move(answer)] { bus.send(answer()); });
    }
}

} // namespace tessly
