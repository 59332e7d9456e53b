#include "BusService.h"

#include "BusInterface.h"
#include "BusNames.h"
#include "FreedesktopApplicationInterface.h"

#include <QDBusPendingCallWatcher>
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

// Of RequestName: no flags, so that who does not get the name is next in line for it.
constexpr uint standInLine = 0;
constexpr uint primaryOwner = 1;

QDBusMessage toDaemon(const QString& method, const QVariantList& arguments)
{
    auto call = QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

BusService::BusService(
    const BusActions& actions, HistoryCommands& commands, Connect connect, QObject* parent)
    : QObject(parent)
    , m_connect(std::move(connect))
    , m_quit(actions.quit)
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
        m_bus->asyncCall(toDaemon(u"ReleaseName"_s, {busName}));
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
        QString(), daemonPath, daemonName, u"NameAcquired"_s, this,
        SLOT(nameAcquired(QString, QDBusMessage)));
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

void BusService::ask(
    const QDBusMessage& question, std::function<void(const QDBusMessage&)> answered)
{
    auto* const pending = new QDBusPendingCallWatcher(m_bus->asyncCall(question), this);
    connect(
        pending, &QDBusPendingCallWatcher::finished, this,
        [this, answered = std::move(answered)](QDBusPendingCallWatcher* ended) {
            ended->deleteLater();
            if (m_bus) {
                answered(ended->reply());
            }
        });
}

void BusService::requestName()
{
    ask(toDaemon(u"RequestName"_s, {busName, standInLine}), [this](const QDBusMessage& answer) {
        if (answer.type() == QDBusMessage::ErrorMessage) {
            giveUp(u"Could not register on the session bus: "_s + answer.errorMessage());
        } else if (answer.arguments().value(0).toUInt() == primaryOwner) {
            m_isRegistered = true;
        } else {
            askForOwner();
        }
    });
}

void BusService::askForOwner()
{
    ask(toDaemon(u"GetNameOwner"_s, {busName}), [this](const QDBusMessage& answer) {
        const QString owner = answer.arguments().value(0).toString();
        if (answer.type() == QDBusMessage::ReplyMessage && owner != m_bus->baseService()) {
            showOwner(owner);
        }
    });
}

void BusService::showOwner(const QString& owner)
{
    // By its own name: the other may have passed on to this one by now.
    ask(QDBusMessage::createMethodCall(owner, busPath, busInterface, u"Show"_s),
        [this](const QDBusMessage& answer) {
            if (answer.type() == QDBusMessage::ReplyMessage) {
                qCWarning(log) << "Another Tessly is on the session bus: this one ends.";
                m_quit();
            } else if (!m_isRegistered) {
                giveUp(u"The name on the session bus is taken: other programs cannot reach this "
                       "Tessly for now."_s);
            }
        });
}

void BusService::nameAcquired(const QString& name, const QDBusMessage& signal)
{
    if (name == busName && signal.service() == daemonName) {
        m_isRegistered = true;
    }
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
