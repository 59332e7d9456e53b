#include "MockPortal.h"

#include "PortalShortcut.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QTimer>

#include <ranges>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString common = u"org.freedesktop.portal."_s;

QString trigger(const PortalShortcut& shortcut)
{
    return shortcut.properties.value(u"preferred_trigger"_s).toString();
}

QString objectPath(const QVariant& value)
{
    return value.value<QDBusObjectPath>().path();
}

} // namespace

MockPortal::MockPortal(const TestBus& bus)
    : m_address(bus.address())
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    come();
}

MockPortal::~MockPortal()
{
    die();
}

void MockPortal::come()
{
    m_bus = TestBus::connect(m_address);
    const bool isUp = m_bus.registerVirtualObject(portalPath, this, QDBusConnection::SubPath) &&
                      m_bus.registerService(portalName);
    if (!isUp) {
        throw std::runtime_error("the portal cannot get onto the bus");
    }
}

void MockPortal::die()
{
    if (m_bus.isConnected()) {
        m_sessions.clear();
        m_open.clear();
        m_arrived.clear();
        // Calls that have arrived and not been looked at are answered as they go, by a connection
        // that has to be there still.
        m_bus.unregisterObject(portalPath, QDBusConnection::UnregisterTree);
        QCoreApplication::removePostedEvents(this);
        const QString name = m_bus.name();
        m_bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name);
    }
}

QStringList MockPortal::callNames() const
{
    QStringList names;
    for (const Call& call : m_calls) {
        names << call.name;
    }
    return names;
}

QList<MockPortal::Call> MockPortal::calls(const QString& name) const
{
    QList<Call> calls;
    for (const Call& call : m_calls) {
        if (call.name == name) {
            calls << call;
        }
    }
    return calls;
}

QStringList MockPortal::held() const
{
    QStringList triggers;
    for (const Session& session : m_sessions) {
        triggers << session.shortcuts.values();
    }
    triggers.sort();
    return triggers;
}

QString MockPortal::introspect(const QString& /*path*/) const
{
    return {};
}

bool MockPortal::handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/)
{
    // Not from here: dying takes the connection away, which this is called by.
    if (m_arrived.isEmpty()) {
        QTimer::singleShot(1, this, [this] { handleArrived(); });
    }
    m_arrived << message;
    return true;
}

void MockPortal::handleArrived()
{
    const auto arrived = std::exchange(m_arrived, {});
    for (const QDBusMessage& message : arrived | std::views::reverse) {
        if (m_bus.isConnected()) {
            handle(message);
        }
    }
}

void MockPortal::handle(const QDBusMessage& message)
{
    QString interface = message.interface();
    if (interface.startsWith(common)) {
        interface = interface.sliced(common.size());
    } else {
        interface = interface.section(u'.', -1);
    }
    Call call = {
        .name = interface + u'.' + message.member(),
        .arguments = message.arguments(),
        .options = {}};
    if (!call.arguments.isEmpty()) {
        call.options = qdbus_cast<QVariantMap>(call.arguments.constLast());
    }
    m_calls << call;

    if (call.name == diesAt) {
        die();
    } else if (hangsAt.contains(call.name)) {
        return;
    } else if (failsAt.contains(call.name)) {
        m_bus.send(message.createErrorReply(u"org.freedesktop.portal.Error.Failed"_s, u"No."_s));
    } else if (call.name == u"Registry.Register" && hasRegistry) {
        m_bus.send(message.createReply());
    } else if (call.name == u"Properties.Get") {
        property(message, call.arguments.value(0).toString().section(u'.', -1));
    } else if (call.name == u"Session.Close" || call.name == u"Request.Close") {
        close(message);
    } else if (!versions.contains(interface)) {
        m_bus.send(message.createErrorReply(QDBusError::UnknownInterface, u"What?"_s));
    } else if (message.member() == u"CreateSession") {
        createSession(message, call.options);
    } else if (session(message) == nullptr) {
        m_bus.send(message.createErrorReply(QDBusError::AccessDenied, u"Invalid session"_s));
    } else if (message.member() == u"SelectDevices") {
        session(message)->options = call.options;
        respond(message, call.options, 0, {});
    } else if (message.member() == u"Start") {
        start(message, call.options);
    } else if (message.member() == u"NotifyKeyboardKeycode") {
        key(message);
    } else if (message.member() == u"BindShortcuts") {
        bindShortcuts(message, call.options);
    } else {
        m_bus.send(message.createErrorReply(QDBusError::UnknownMethod, u"What?"_s));
    }
}

void MockPortal::property(const QDBusMessage& message, const QString& interface)
{
    if (versions.contains(interface)) {
        m_bus.send(
            message.createReply(QVariant::fromValue(QDBusVariant(versions.value(interface)))));
    } else {
        m_bus.send(message.createErrorReply(QDBusError::InvalidArgs, u"No such interface"_s));
    }
}

MockPortal::Session* MockPortal::session(const QDBusMessage& message)
{
    const auto found = m_sessions.find(objectPath(message.arguments().value(0)));
    return found != m_sessions.end() && found->owner == message.service() ? &*found : nullptr;
}

void MockPortal::createSession(const QDBusMessage& message, const QVariantMap& options)
{
    const QString path = portalPath + u"/session/"_s +
                         message.service().mid(1).replace(u'.', u'_') + u'/' +
                         options.value(u"session_handle_token"_s).toString();
    m_sessions.insert(path, {.owner = message.service()});
    respond(message, options, 0, {{u"session_handle"_s, path}});
}

void MockPortal::start(const QDBusMessage& message, const QVariantMap& options)
{
    const QString path = objectPath(message.arguments().value(0));
    const auto granted = [this, path] {
        QVariantMap results = {{u"devices"_s, devices}};
        if (m_sessions.contains(path)) {
            m_sessions[path].isStarted = true;
            if (givesTokens && m_sessions[path].options.value(u"persist_mode"_s).toUInt() == 2) {
                m_lastToken = u"token-%1"_s.arg(m_nextToken++);
                tokens << m_lastToken;
                results.insert(u"restore_token"_s, m_lastToken);
            }
        }
        return results;
    };
    const QString token = m_sessions[path].options.value(u"restore_token"_s).toString();
    if (tokens.remove(token)) {
        respond(message, options, 0, granted());
    } else {
        ask(message, options, granted);
    }
}

void MockPortal::bindShortcuts(const QDBusMessage& message, const QVariantMap& options)
{
    const QString path = objectPath(message.arguments().value(0));
    const auto shortcuts =
        qdbus_cast<QList<PortalShortcut>>(message.arguments().value(1).value<QDBusArgument>());
    ask(message, options, [this, path, shortcuts] {
        QList<PortalShortcut> bound;
        for (const PortalShortcut& shortcut : shortcuts) {
            if (m_sessions.contains(path) && !takenTriggers.contains(trigger(shortcut)) &&
                !held().contains(trigger(shortcut))) {
                m_sessions[path].shortcuts.insert(shortcut.id, trigger(shortcut));
                bound << PortalShortcut{
                    .id = shortcut.id,
                    .properties = {
                        {u"trigger_description"_s, keylessTriggers.contains(trigger(shortcut))
                                                       ? QString()
                                                       : trigger(shortcut)}}};
            }
        }
        return QVariantMap{{u"shortcuts"_s, QVariant::fromValue(bound)}};
    });
}

void MockPortal::key(const QDBusMessage& message)
{
    Session* const owner = session(message);
    if (!owner->isStarted) {
        m_bus.send(message.createErrorReply(QDBusError::AccessDenied, u"Not allowed"_s));
        return;
    }
    if (static_cast<int>(m_keys.size()) == diesAtKey) {
        die();
        return;
    }
    const Key key(message.arguments().value(2).toInt(), message.arguments().value(3).toUInt() != 0);
    if (key.second) {
        owner->pressed << key.first;
    } else if (!owner->pressed.remove(key.first) && refusesLifting) {
        m_bus.send(message.createErrorReply(QDBusError::Failed, u"Invalid key event"_s));
        return;
    }
    m_keys.push_back(key);
    if (keyArrived) {
        keyArrived(key);
    }
    m_bus.send(message.createReply());
}

QString MockPortal::requestPath(const QDBusMessage& message, const QVariantMap& options) const
{
    const bool isOther = responding == Responding::onAnotherPath ||
                         responding == Responding::beforeTheReplyOnAnotherPath;
    const QString token =
        isOther ? u"t%1"_s.arg(m_calls.size()) : options.value(u"handle_token"_s).toString();
    return portalPath + u"/request/"_s + message.service().mid(1).replace(u'.', u'_') + u'/' +
           token;
}

void MockPortal::respond(
    const QDBusMessage& message, const QVariantMap& options, uint response,
    const QVariantMap& results)
{
    const QString path = requestPath(message, options);
    const auto reply = message.createReply(QVariant::fromValue(QDBusObjectPath(path)));
    const bool isEarly = responding == Responding::beforeTheReply ||
                         responding == Responding::beforeTheReplyOnAnotherPath;
    if (!isEarly) {
        m_bus.send(reply);
    }
    sendResponse(message.service(), path, response, results);
    if (isEarly) {
        m_bus.send(reply);
    }
}

void MockPortal::ask(
    const QDBusMessage& message, const QVariantMap& options, std::function<QVariantMap()> granted)
{
    ++m_questions;
    if (user == User::takesTime) {
        const QString path = requestPath(message, options);
        m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        m_open << Question{.request = message, .path = path, .granted = std::move(granted)};
        return;
    }
    const bool isGranted = user == User::grants;
    const uint agreed = message.member() == u"BindShortcuts" ? boundResponse : 0;
    respond(
        message, options,
        isGranted               ? agreed
        : user == User::cancels ? 1
                                : 2,
        isGranted ? granted() : QVariantMap());
}

void MockPortal::answer(User answer)
{
    for (const Question& question : std::exchange(m_open, {})) {
        const bool isGranted = answer == User::grants;
        sendResponse(
            question.request.service(), question.path,
            isGranted                 ? 0
            : answer == User::cancels ? 1
                                      : 2,
            isGranted ? question.granted() : QVariantMap());
    }
}

void MockPortal::sendResponse(
    const QString& to, const QString& path, uint response, const QVariantMap& results)
{
    auto signal =
        QDBusMessage::createTargetedSignal(to, path, common + u"Request"_s, u"Response"_s);
    signal << response << results;
    m_bus.send(signal);
}

void MockPortal::close(const QDBusMessage& message)
{
    m_sessions.remove(message.path());
    m_closedRequests +=
        m_open.removeIf([&](const Question& question) { return question.path == message.path(); });
    m_bus.send(message.createReply());
}

void MockPortal::revoke()
{
    for (const auto& [path, session] : std::exchange(m_sessions, {}).asKeyValueRange()) {
        auto signal = QDBusMessage::createTargetedSignal(
            session.owner, path, common + u"Session"_s, u"Closed"_s);
        signal << QVariantMap();
        m_bus.send(signal);
    }
}

void MockPortal::press(const QString& trigger)
{
    QStringList ids;
    for (const Session& session : m_sessions) {
        ids << session.shortcuts.keys(trigger);
    }
    for (const QString& id : ids) {
        pressShortcut(id);
        releaseShortcut(id);
    }
}

void MockPortal::pressShortcut(const QString& id)
{
    sendShortcutSignal(u"Activated"_s, id);
}

void MockPortal::releaseShortcut(const QString& id)
{
    sendShortcutSignal(u"Deactivated"_s, id);
}

void MockPortal::changeKeys(const QString& id, const QString& description)
{
    for (const auto& [path, session] : m_sessions.asKeyValueRange()) {
        if (session.shortcuts.contains(id)) {
            auto signal = QDBusMessage::createTargetedSignal(
                session.owner, portalPath, common + u"GlobalShortcuts"_s, u"ShortcutsChanged"_s);
            const QList<PortalShortcut> changed = {
                {.id = id, .properties = {{u"trigger_description"_s, description}}}};
            signal << QVariant::fromValue(QDBusObjectPath(path)) << QVariant::fromValue(changed);
            m_bus.send(signal);
        }
    }
}

void MockPortal::sendShortcutSignal(const QString& name, const QString& id)
{
    for (const auto& [path, session] : m_sessions.asKeyValueRange()) {
        if (session.shortcuts.contains(id)) {
            auto signal = QDBusMessage::createTargetedSignal(
                session.owner, portalPath, common + u"GlobalShortcuts"_s, name);
            signal << QVariant::fromValue(QDBusObjectPath(path)) << id << qulonglong{4711}
                   << QVariantMap();
            m_bus.send(signal);
        }
    }
}

} // namespace tessly::test
