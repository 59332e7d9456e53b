#pragma once

#include "BusConnecting.h"
#include "Clock.h"
#include "LoopAnswer.h"
#include "PortalSession.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tessly {

/// The desktop's portal (org.freedesktop.portal.Desktop), through which programs ask for what needs
/// the user's consent. Main thread only; nothing waits for the bus or the portal.
///
/// The portal may come late, hang, or go at any time; what was asked of it then ends as `failed`.
class DesktopPortal final : public QObject
{
    Q_OBJECT

public:
    using Connect = BusConnecting::Connect;

    enum class State {
        /// Not known yet.
        undecided,
        /// There is none, now.
        absent,
        /// It is there, and knows the program's name if it takes names.
        present,
    };

    /// How a question ended.
    enum class Outcome {
        granted,
        /// The user closed it.
        cancelled,
        /// The user or the desktop said no, if only by an error.
        refused,
        /// There was no answer.
        failed,
    };
    struct Response
    {
        Outcome outcome = Outcome::failed;
        QVariantMap results = {};
    };

    /// Whom a request may make the portal ask. A user takes as long as they like.
    enum class Asks { nobody, theUser };

    /// How long the portal has to answer what it need not ask the user about.
    static constexpr std::chrono::seconds timeout{10};

    /// `connect` opens the connection to the session bus, on a thread of its own. `clock` must
    /// outlive this.
    DesktopPortal(Connect connect, Clock& clock, QObject* parent = nullptr);
    ~DesktopPortal() override;

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] Clock& clock() const { return m_clock; }
    /// Has the bus start the portal if there is none, as it did at first.
    void wake();

    /// The version of one of its interfaces; 0 if it has none of this name. None if there is no
    /// answer.
    [[nodiscard]] QCoro::Task<std::optional<quint32>>
    version(QString interface, Clock::Duration timeout = DesktopPortal::timeout);

    /// Calls a method of its object. The answer is an error message if there is none within
    /// `timeout`. Portals get to calls in any order: one that has to come after another has to
    /// wait for its answer.
    [[nodiscard]] QFuture<QDBusMessage> call(
        const QString& interface, const QString& method, const QVariantList& arguments,
        Clock::Duration timeout = DesktopPortal::timeout);

    /// Whether an error says that there was no answer, rather than being one.
    [[nodiscard]] static bool isSilence(const QDBusMessage& reply);

    /// Asks something by a method that is answered by a Response signal. `options` are its last
    /// argument.
    [[nodiscard]] QFuture<Response> request(
        const QString& interface, const QString& method, const QVariantList& arguments,
        const QVariantMap& options, Asks asks);

    struct NewSession
    {
        /// Null unless the outcome is `granted`.
        std::unique_ptr<PortalSession> session = {};
        Outcome outcome = Outcome::failed;
    };
    [[nodiscard]] QCoro::Task<NewSession> createSession(QString interface);

    /// Has `received` tell of a signal of its object, now and after the portal has come back.
    void listen(const QString& interface, const QString& signal);

Q_SIGNALS:
    /// Also when one portal has taken another's place.
    void stateChanged();
    /// The screen has been locked, or is not locked any more. Desktops end sessions when they lock
    /// it.
    void screenLocked(bool isLocked);
    /// A signal that was listened to, from the portal and from nobody else.
    void received(const QDBusMessage& signal);

private Q_SLOTS:
    void ownerChanged(
        const QString& name, const QString& before, const QString& owner,
        const QDBusMessage& signal);
    void responded(uint response, const QVariantMap& results, const QDBusMessage& signal);
    void sessionClosed(const QDBusMessage& signal);
    void relay(const QDBusMessage& signal);
    void screenSaverChanged(bool isActive, const QDBusMessage& signal);
    void disconnected();

private:
    friend class PortalSession;

    struct Request
    {
        LoopAnswer<Response> answer{Response()};
        /// The path of the object whose Response is the answer: first as it should be, then as the
        /// portal told it.
        QString handle = {};
        /// The path of the session it is about; empty for none.
        QString session = {};
        Asks asks = Asks::nobody;
        bool isHandleTold = false;
        std::unique_ptr<Clock::Timer> deadline = {};
    };
    struct Subscription
    {
        QString interface;
        QString signal;
    };

    void connected(const QDBusConnection& bus);
    void askForOwner();
    void setOwner(const QString& owner);
    void setState(State state);
    void failAll();
    void subscribe(const Subscription& subscription);
    void whenAnswered(
        const QDBusPendingCall& call, std::function<void(const QDBusPendingCall&)> answered);
    void handleTold(quint64 id, const QDBusMessage& reply);
    void end(quint64 id, const Response& response);
    void abandon(quint64 id);
    void endSession(const QString& path);
    void sendClose(const QString& path, const QString& interface);
    [[nodiscard]] QString handle(const QString& kind, const QString& token) const;

    Clock& m_clock;
    std::optional<QDBusConnection> m_bus;
    BusConnecting m_connecting{[this](const QDBusConnection& bus) { connected(bus); }};
    /// The portal's unique name; empty while there is none.
    QString m_owner;
    State m_state = State::undecided;
    bool m_hasToldAbsence = false;
    std::vector<Subscription> m_subscriptions;
    std::map<quint64, Request> m_requests;
    quint64 m_nextRequest = 1;
    /// Responses on paths that nobody waits for, which a portal may be about to tell.
    QHash<QString, Response> m_unclaimed;
    QHash<QString, PortalSession*> m_sessions;
};

} // namespace tessly
