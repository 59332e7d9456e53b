#include "DesktopPortal.h"

#include "Workspace.h"

#include <QCoroFuture>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QLoggingCategory>
#include <QPointer>
#include <QUuid>

#include <algorithm>
#include <limits>
#include <ranges>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcPortal, "com.brackmoor.tessly.DesktopPortal")

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;
const QString registryInterface = u"org.freedesktop.host.portal.Registry"_s;
const QString propertiesInterface = u"org.freedesktop.DBus.Properties"_s;

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;
const QString localPath = u"/org/freedesktop/DBus/Local"_s;
const QString localInterface = u"org.freedesktop.DBus.Local"_s;

/// Time is kept by the clock; to the bus library, a call may take for ever.
constexpr int noTimeout = std::numeric_limits<int>::max();

/// More than any portal has reason to send before it has told a single path.
constexpr qsizetype unclaimedAtMost = 16;

QDBusMessage timedOut()
{
    return QDBusMessage::createError(QDBusError::NoReply, u"no answer in time"_s);
}

DesktopPortal::Outcome outcomeOf(uint response)
{
    switch (response) {
    case 0:
        return DesktopPortal::Outcome::granted;
    case 1:
        return DesktopPortal::Outcome::cancelled;
    default:
        return DesktopPortal::Outcome::refused;
    }
}

/// Tokens are parts of the paths of objects.
QString newToken()
{
    return u"tessly"_s + QUuid::createUuid().toString(QUuid::Id128);
}

/// Some portals send the path as a string.
QString pathIn(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<QDBusObjectPath>()
               ? value.value<QDBusObjectPath>().path()
               : value.toString();
}

} // namespace

DesktopPortal::DesktopPortal(Connect connect, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
{
    m_connecting.start(std::move(connect));
}

DesktopPortal::~DesktopPortal() = default;

void DesktopPortal::connected(const QDBusConnection& bus)
{
    if (!bus.isConnected()) {
        setState(State::absent);
        return;
    }
    m_bus = bus;
    // From any sender, told apart when they come: of one that is named, even by its unique name,
    // QtDBus would first ask the bus, and wait. On any path, since portals need not keep to the one
    // that is expected, and may respond before they tell theirs.
    m_bus->connect(
        QString(), daemonPath, daemonName, u"NameOwnerChanged"_s, {portalName}, QString(), this,
        SLOT(ownerChanged(QString, QString, QString, QDBusMessage)));
    m_bus->connect(
        QString(), QString(), requestInterface, u"Response"_s, this,
        SLOT(responded(uint, QVariantMap, QDBusMessage)));
    m_bus->connect(
        QString(), QString(), sessionInterface, u"Closed"_s, this,
        SLOT(sessionClosed(QDBusMessage)));
    m_bus->connect(
        QString(), localPath, localInterface, u"Disconnected"_s, this, SLOT(disconnected()));
    // GNOME has a name of its own for it.
    for (const QString& desktop : {u"gnome"_s, u"freedesktop"_s}) {
        m_bus->connect(
            QString(), u"/org/%1/ScreenSaver"_s.arg(desktop), u"org.%1.ScreenSaver"_s.arg(desktop),
            u"ActiveChanged"_s, this, SLOT(screenSaverChanged(bool, QDBusMessage)));
    }
    for (const Subscription& subscription : m_subscriptions) {
        subscribe(subscription);
    }
    askForOwner();
}

void DesktopPortal::wake()
{
    if (m_bus && m_owner.isEmpty()) {
        askForOwner();
    }
}

void DesktopPortal::askForOwner()
{
    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"GetNameOwner"_s);
    question << portalName;
    whenAnswered(m_bus->asyncCall(question, noTimeout), [this](const QDBusPendingCall& call) {
        // A portal that came meanwhile has announced itself.
        if (!m_owner.isEmpty()) {
            return;
        }
        const QDBusPendingReply<QString> reply = call;
        if (reply.isValid()) {
            setOwner(reply.value());
            return;
        }
        auto start = QDBusMessage::createMethodCall(
            daemonName, daemonPath, daemonName, u"StartServiceByName"_s);
        start << portalName << 0U;
        whenAnswered(m_bus->asyncCall(start, noTimeout), [this](const QDBusPendingCall& answer) {
            // One that was started announces itself.
            if (answer.isError() && m_owner.isEmpty()) {
                setState(State::absent);
            }
        });
    });
}

void DesktopPortal::setOwner(const QString& owner)
{
    if (owner == m_owner) {
        return;
    }
    m_owner = owner;
    if (m_state == State::present) {
        setState(State::absent);
    }
    failAll();
    if (m_owner.isEmpty()) {
        setState(State::absent);
        return;
    }
    // By the name it is granted things under, which a program outside of a sandbox has to tell, and
    // before anything else.
    auto future = call(registryInterface, u"Register"_s, {ownBundleIdentifier, QVariantMap()});
    const auto registered = [](QPointer<DesktopPortal> self, QFuture<QDBusMessage> answer,
                               QString portal) -> QCoro::Task<> {
        // Most portals know no names, or know this program otherwise: their answer does not matter.
        co_await answer;
        if (self && self->m_owner == portal) {
            self->setState(State::present);
        }
    };
    registered(this, std::move(future), m_owner);
}

void DesktopPortal::setState(State state)
{
    if (state == State::absent && !std::exchange(m_hasToldAbsence, true)) {
        qCInfo(lcPortal, "There is no desktop portal");
    }
    if (std::exchange(m_state, state) != state) {
        Q_EMIT stateChanged();
    }
}

void DesktopPortal::failAll()
{
    m_unclaimed.clear();
    // Answers are heard from the event loop, but what is told that its session is closed may ask
    // for something new at once.
    std::map<quint64, Request> requests;
    requests.swap(m_requests);
    requests.clear();
    for (PortalSession* const session : std::exchange(m_sessions, {})) {
        session->portalClosed();
    }
}

void DesktopPortal::listen(const QString& interface, const QString& signal)
{
    m_subscriptions.push_back({.interface = interface, .signal = signal});
    if (m_bus) {
        subscribe(m_subscriptions.back());
    }
}

void DesktopPortal::subscribe(const Subscription& subscription)
{
    m_bus->connect(
        QString(), portalPath, subscription.interface, subscription.signal, this,
        SLOT(relay(QDBusMessage)));
}

void DesktopPortal::whenAnswered(
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

QCoro::Task<std::optional<quint32>>
DesktopPortal::version(QString interface, Clock::Duration timeout)
{
    const QFuture<QDBusMessage> answer =
        call(propertiesInterface, u"Get"_s, {interface, u"version"_s}, timeout);
    const QDBusMessage reply = co_await answer;
    std::optional<quint32> version;
    if (reply.type() == QDBusMessage::ReplyMessage) {
        version = reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
    } else if (!isSilence(reply)) {
        version = 0;
    }
    co_return version;
}

QFuture<QDBusMessage> DesktopPortal::call(
    const QString& interface, const QString& method, const QVariantList& arguments,
    Clock::Duration timeout)
{
    const LoopAnswer<QDBusMessage> answer(timedOut());
    if (m_bus && !m_owner.isEmpty()) {
        auto message = QDBusMessage::createMethodCall(m_owner, portalPath, interface, method);
        message.setArguments(arguments);
        // The one that comes second changes nothing.
        const std::shared_ptr<Clock::Timer> deadline =
            m_clock.after(timeout, [answer] { answer(timedOut()); });
        whenAnswered(
            m_bus->asyncCall(message, noTimeout),
            [answer, deadline](const QDBusPendingCall& call) { answer(call.reply()); });
    }
    return answer.future();
}

bool DesktopPortal::isSilence(const QDBusMessage& reply)
{
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
    case QDBusError::TimedOut:
    case QDBusError::Timeout:
    case QDBusError::Disconnected:
    case QDBusError::ServiceUnknown:
        return true;
    default:
        return reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
    }
}

QFuture<DesktopPortal::Response> DesktopPortal::request(
    const QString& interface, const QString& method, const QVariantList& arguments,
    const QVariantMap& options, Asks asks)
{
    Request request;
    QFuture<Response> future = request.answer.future();
    if (!m_bus || m_owner.isEmpty()) {
        return future;
    }
    const QString token = newToken();
    QVariantMap allOptions = options;
    allOptions.insert(u"handle_token"_s, token);
    auto message = QDBusMessage::createMethodCall(m_owner, portalPath, interface, method);
    message.setArguments(arguments + QVariantList{allOptions});

    const quint64 id = m_nextRequest++;
    request.handle = handle(u"request"_s, token);
    request.session = arguments.isEmpty() ? QString() : pathIn(arguments.constFirst());
    request.asks = asks;
    // Also where the user is asked: that it asks, the portal tells without them.
    request.deadline = m_clock.after(timeout, [this, id, method] {
        qCWarning(lcPortal).noquote() << "The portal does not answer" << method;
        abandon(id);
    });
    m_requests.emplace(id, std::move(request));
    whenAnswered(
        m_bus->asyncCall(message, noTimeout), [this, id, method](const QDBusPendingCall& call) {
            if (call.isError() && m_requests.contains(id)) {
                qCWarning(lcPortal).noquote()
                    << "The portal refused" << method << ":" << call.error().message();
            }
            handleTold(id, call.reply());
        });
    return future;
}

void DesktopPortal::handleTold(quint64 id, const QDBusMessage& reply)
{
    const auto found = m_requests.find(id);
    if (found == m_requests.end()) {
        return;
    }
    if (reply.type() != QDBusMessage::ReplyMessage) {
        end(id, {.outcome = isSilence(reply) ? Outcome::failed : Outcome::refused});
        return;
    }
    Request& request = found->second;
    request.isHandleTold = true;
    request.handle = pathIn(reply.arguments().value(0));
    if (request.asks == Asks::theUser) {
        request.deadline.reset();
    }
    if (const auto early = m_unclaimed.constFind(request.handle); early != m_unclaimed.constEnd()) {
        end(id, *early);
    }
}

void DesktopPortal::responded(uint response, const QVariantMap& results, const QDBusMessage& signal)
{
    if (m_owner.isEmpty() || signal.service() != m_owner) {
        return;
    }
    const Response answer = {.outcome = outcomeOf(response), .results = results};
    const auto request = std::ranges::find_if(
        m_requests, [&](const auto& entry) { return entry.second.handle == signal.path(); });
    if (request != m_requests.end()) {
        end(request->first, answer);
    } else if (!m_requests.empty() && m_unclaimed.size() < unclaimedAtMost) {
        m_unclaimed.insert(signal.path(), answer);
    }
}

void DesktopPortal::end(quint64 id, const Response& response)
{
    if (const auto request = m_requests.extract(id)) {
        request.mapped().answer(response);
    }
    const bool mayBeClaimed =
        std::ranges::any_of(m_requests | std::views::values, [](const Request& request) {
            return !request.isHandleTold;
        });
    if (!mayBeClaimed) {
        m_unclaimed.clear();
    }
}

void DesktopPortal::abandon(quint64 id)
{
    if (const auto request = m_requests.find(id); request != m_requests.end()) {
        // So that no question stays open whose answer nobody hears.
        sendClose(request->second.handle, requestInterface);
        end(id, {});
    }
}

QCoro::Task<DesktopPortal::NewSession> DesktopPortal::createSession(QString interface)
{
    const QString token = newToken();
    // Known of before it exists, so that its end cannot be missed.
    NewSession made;
    made.session = std::make_unique<PortalSession>(*this, handle(u"session"_s, token));
    const QFuture<Response> answer = request(
        interface, u"CreateSession"_s, {}, {{u"session_handle_token"_s, token}}, Asks::nobody);
    const Response response = co_await answer;
    // This may have gone; the session knows.
    made.outcome = response.outcome;
    if (made.outcome == Outcome::granted && !made.session->isOpen()) {
        made.outcome = Outcome::failed;
    }
    if (made.outcome != Outcome::granted) {
        made.session.reset();
        co_return made;
    }
    if (const QString path = pathIn(response.results.value(u"session_handle"_s)); !path.isEmpty()) {
        made.session->setPath(path);
    }
    co_return made;
}

void DesktopPortal::endSession(const QString& path)
{
    std::vector<quint64> asked;
    for (const auto& [id, request] : m_requests) {
        if (request.session == path) {
            asked.push_back(id);
        }
    }
    for (const quint64 id : asked) {
        abandon(id);
    }
    sendClose(path, sessionInterface);
}

void DesktopPortal::sendClose(const QString& path, const QString& interface)
{
    if (m_bus && !m_owner.isEmpty()) {
        // The answer would only tell that it had ended already.
        m_bus->send(QDBusMessage::createMethodCall(m_owner, path, interface, u"Close"_s));
    }
}

void DesktopPortal::sessionClosed(const QDBusMessage& signal)
{
    if (m_owner.isEmpty() || signal.service() != m_owner) {
        return;
    }
    if (PortalSession* const session = m_sessions.take(signal.path())) {
        // What was asked for it has no answer any more; some portals send none.
        std::erase_if(m_requests, [&signal](const auto& entry) {
            return entry.second.session == signal.path();
        });
        session->portalClosed();
    }
}

void DesktopPortal::relay(const QDBusMessage& signal)
{
    if (!m_owner.isEmpty() && signal.service() == m_owner) {
        Q_EMIT received(signal);
    }
}

void DesktopPortal::screenSaverChanged(bool isActive, const QDBusMessage& signal)
{
    // Its interface and its name are one.
    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"GetNameOwner"_s);
    question << signal.interface();
    whenAnswered(
        m_bus->asyncCall(question, noTimeout),
        [this, isActive, sender = signal.service()](const QDBusPendingCall& call) {
            const QDBusPendingReply<QString> reply = call;
            if (reply.isValid() && reply.value() == sender) {
                Q_EMIT screenLocked(isActive);
            }
        });
}

void DesktopPortal::ownerChanged(
    const QString& /*name*/, const QString& /*before*/, const QString& owner,
    const QDBusMessage& signal)
{
    if (signal.service() == daemonName) {
        setOwner(owner);
    }
}

void DesktopPortal::disconnected()
{
    m_bus.reset();
    setOwner(QString());
    setState(State::absent);
}

QString DesktopPortal::handle(const QString& kind, const QString& token) const
{
    const QString sender = m_bus ? m_bus->baseService() : QString();
    return portalPath + u'/' + kind + u'/' + sender.mid(1).replace(u'.', u'_') + u'/' + token;
}

} // namespace tessly
