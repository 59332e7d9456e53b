#include "BusClient.h"

#include "BusNames.h"

#include <QDBusError>

#include <future>
#include <memory>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr auto pollInterval = 20ms;

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;

// The notification daemon, as the Desktop Notifications Specification names it.
const QString notificationsName = u"org.freedesktop.Notifications"_s;
const QString notificationsPath = u"/org/freedesktop/Notifications"_s;
const QString applicationID = u"com.brackmoor.tessly"_s;

} // namespace

BusClient::BusClient()
    : BusClient(connectToSessionBus, Limits())
{
}

BusClient::BusClient(Connect connect, const Limits& limits)
    : m_limits(limits)
{
    auto promise = std::make_shared<std::promise<QDBusConnection>>();
    std::future<QDBusConnection> connecting = promise->get_future();
    // Detached: there is no way to end the wait for a bus that never answers.
    std::thread([promise, connect = std::move(connect)] {
        promise->set_value(connect());
    }).detach();
    if (connecting.wait_for(m_limits.bus) == std::future_status::ready) {
        m_connection = connecting.get();
        m_state = m_connection->isConnected() ? Bus::present : Bus::absent;
    }
}

QDBusConnection BusClient::connectToSessionBus()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-command"_s);
}

bool BusClient::isRunning()
{
    if (m_state != Bus::present) {
        return false;
    }
    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"NameHasOwner"_s);
    question << busName;
    const QDBusMessage reply = answer(question, m_limits.bus);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        m_state = Bus::silent;
        return false;
    }
    return reply.arguments().value(0).toBool();
}

bool BusClient::waitUntilRunning(
    const std::function<bool()>& isEnough, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!isRunning()) {
        if (m_state != Bus::present || isEnough() || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return true;
}

QDBusMessage BusClient::call(
    const QString& method, const QVariantList& arguments, std::chrono::milliseconds limit)
{
    auto message = QDBusMessage::createMethodCall(busName, busPath, busInterface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return answer(message, limit);
}

bool BusClient::notify(const QString& summary, const QString& text)
{
    if (m_state != Bus::present) {
        return false;
    }
    constexpr uchar isCritical = 2;
    auto call = QDBusMessage::createMethodCall(
        notificationsName, notificationsPath, notificationsName, u"Notify"_s);
    const uint replacesNone = 0;
    const int staysUntilSeen = 0;
    call
        << u"Tessly"_s << replacesNone << applicationID
        << summary
        // What shows it takes it for markup.
        << text.toHtmlEscaped() << QStringList()
        << QVariantMap{{u"desktop-entry"_s, applicationID}, {u"urgency"_s, QVariant::fromValue(isCritical)}}
        << staysUntilSeen;
    return answer(call, m_limits.bus).type() == QDBusMessage::ReplyMessage;
}

QDBusMessage BusClient::answer(const QDBusMessage& call, std::chrono::milliseconds limit)
{
    return m_connection->call(call, QDBus::Block, static_cast<int>(limit.count()));
}

} // namespace tessly
