#include "TrayHost.h"

#include "TestSupport.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;

} // namespace

TrayHost::TrayHost(const TestBus& bus, Behaviour behaviour, Hosts hosts)
    : m_bus(bus.connect())
    , m_behaviour(behaviour)
    , m_hosts(hosts)
{
    const bool isUp = m_bus.registerObject(
                          u"/StatusNotifierWatcher"_s, this,
                          QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                              QDBusConnection::ExportAllSignals) &&
                      m_bus.registerService(watcherName);
    if (!isUp) {
        throw std::runtime_error("the tray cannot get onto the bus");
    }
}

TrayHost::~TrayHost()
{
    // As a tray that ends: its name and its connection go.
    const QString name = m_bus.name();
    m_bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(name);
}

void TrayHost::setHosts(Hosts hosts)
{
    m_hosts = hosts;
    if (hosts == Hosts::one) {
        Q_EMIT StatusNotifierHostRegistered();
    } else {
        Q_EMIT StatusNotifierHostUnregistered();
    }
}

void TrayHost::RegisterStatusNotifierItem(const QString& service)
{
    switch (m_behaviour) {
    case Behaviour::ordinary:
        m_items << service;
        m_bus.connect(
            service, QString(), menuInterface, u"LayoutUpdated"_s, this,
            SLOT(layoutUpdated(uint, int)));
        break;
    case Behaviour::refusesItems:
        sendErrorReply(QDBusError::AccessDenied, u"No."_s);
        break;
    case Behaviour::neverAnswers:
        m_items << service;
        setDelayedReply(true);
        break;
    }
}

void TrayHost::layoutUpdated(uint revision, int parent)
{
    if (parent == 0) {
        m_revision = revision;
    }
}

QDBusMessage TrayHost::ask(
    const QString& path, const QString& interface, const QString& method,
    const QVariantList& arguments)
{
    auto message = QDBusMessage::createMethodCall(m_items.last(), path, interface, method);
    message.setArguments(arguments);
    QDBusPendingCallWatcher answer(m_bus.asyncCall(message, 10000));
    if (!waitUntil([&answer] { return answer.isFinished(); }) || answer.isError()) {
        throw std::runtime_error((method + u": "_s + answer.error().message()).toStdString());
    }
    return answer.reply();
}

QVariantMap TrayHost::properties()
{
    const auto reply =
        ask(u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s,
            {u"org.kde.StatusNotifierItem"_s});
    return qdbus_cast<QVariantMap>(reply.arguments().value(0));
}

void TrayHost::call(const QString& method, const QVariantList& arguments)
{
    ask(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, method, arguments);
}

QString TrayHost::menuPath()
{
    return properties().value(u"Menu"_s).value<QDBusObjectPath>().path();
}

QDBusMessage TrayHost::callMenu(const QString& method, const QVariantList& arguments)
{
    return ask(menuPath(), menuInterface, method, arguments);
}

StatusMenuTree TrayHost::menuLayout(int parent, int depth, QStringList names)
{
    const auto reply = callMenu(u"GetLayout"_s, {parent, depth, std::move(names)});
    m_revision = reply.arguments().value(0).toUInt();
    return qdbus_cast<StatusMenuTree>(reply.arguments().value(1));
}

} // namespace tessly::test
