#pragma once

#include "TestBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <utility>
#include <vector>

namespace tessly::test {

/// A desktop's portal with a user, as unwilling as a test wants them. It has a connection of its
/// own and answers from the event loop. It gets to calls that come in one go from the last to the
/// first: those of desktops answer in threads, in any order.
class MockPortal final : public QDBusVirtualObject
{
public:
    /// With `isOverruled`, the desktop refuses before they can.
    enum class User { grants, cancels, isOverruled, takesTime };
    /// On which path, and when, requests are answered.
    enum class Responding {
        asExpected,
        onAnotherPath,
        beforeTheReply,
        beforeTheReplyOnAnotherPath
    };

    struct Call
    {
        /// "RemoteDesktop.Start", without what all interfaces' names begin with.
        QString name;
        QVariantList arguments;
        /// The last argument of those that have options.
        QVariantMap options;
    };
    /// An evdev code, and whether it was pressed.
    using Key = std::pair<int, bool>;

    /// Takes the portal's name, unless told that it comes later.
    explicit MockPortal(const TestBus& bus);
    ~MockPortal() override;

    // What it is like; all may change at any time.

    User user = User::grants;
    Responding responding = Responding::asExpected;
    /// Methods that are never answered, that end in an error, or at which it dies; by `Call::name`.
    QSet<QString> hangsAt = {};
    QSet<QString> failsAt = {};
    QString diesAt = {};
    /// Dies at this key, counted from 0.
    int diesAtKey = -1;
    /// Called with each key that arrives, before it is answered.
    std::function<void(const Key&)> keyArrived = {};
    /// Whether it is an error to release what the session has not pressed.
    bool refusesLifting = false;
    /// What is granted, as AvailableDeviceTypes has it.
    uint devices = 1;
    /// Versions of interfaces; those that are missing are not there.
    QMap<QString, uint> versions = {
        {QStringLiteral("RemoteDesktop"), 2}, {QStringLiteral("GlobalShortcuts"), 1}};
    bool hasRegistry = true;
    /// Tokens that are good for one start each.
    QSet<QString> tokens = {};
    /// Whether those who start get a token.
    bool givesTokens = true;
    /// What it answers to BindShortcuts when the user agrees.
    uint boundResponse = 0;
    /// Keys, as triggers, that other programs hold.
    QSet<QString> takenTriggers = {};
    /// Keys, as triggers, that are bound to nothing, though their shortcuts are held.
    QSet<QString> keylessTriggers = {};

    // What it and its user do.

    /// Leaves the bus, as a crash would make it.
    void die();
    /// Comes back as another process would.
    void come();
    /// The user answers what is open.
    void answer(User answer);
    /// Ends all sessions and tells so.
    void revoke();
    /// The user presses what a session holds, and lets it go.
    void press(const QString& trigger);
    void pressShortcut(const QString& id);
    void releaseShortcut(const QString& id);
    /// The user gives a shortcut other keys in the desktop's settings, or none.
    void changeKeys(const QString& id, const QString& description);

    // What programs did.

    [[nodiscard]] const QList<Call>& calls() const { return m_calls; }
    [[nodiscard]] QStringList callNames() const;
    [[nodiscard]] QList<Call> calls(const QString& name) const;
    [[nodiscard]] const std::vector<Key>& keys() const { return m_keys; }
    /// How often the user was asked.
    [[nodiscard]] int questions() const { return m_questions; }
    [[nodiscard]] qsizetype openQuestions() const { return m_open.size(); }
    [[nodiscard]] qsizetype sessions() const { return m_sessions.size(); }
    [[nodiscard]] qsizetype closedRequests() const { return m_closedRequests; }
    /// Triggers that are held here.
    [[nodiscard]] QStringList held() const;
    [[nodiscard]] const QString& lastToken() const { return m_lastToken; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;
    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    struct Session
    {
        QString owner;
        QVariantMap options = {};
        bool isStarted = false;
        QSet<int> pressed = {};
        /// Ids and triggers.
        QMap<QString, QString> shortcuts = {};
    };
    struct Question
    {
        QDBusMessage request;
        QString path;
        std::function<QVariantMap()> granted;
    };

    void handleArrived();
    void handle(const QDBusMessage& message);
    void property(const QDBusMessage& message, const QString& interface);
    void createSession(const QDBusMessage& message, const QVariantMap& options);
    void start(const QDBusMessage& message, const QVariantMap& options);
    void bindShortcuts(const QDBusMessage& message, const QVariantMap& options);
    void key(const QDBusMessage& message);
    void respond(
        const QDBusMessage& message, const QVariantMap& options, uint response,
        const QVariantMap& results);
    void
    ask(const QDBusMessage& message, const QVariantMap& options,
        std::function<QVariantMap()> granted);
    void close(const QDBusMessage& message);
    [[nodiscard]] QString
    requestPath(const QDBusMessage& message, const QVariantMap& options) const;
    void
    sendResponse(const QString& to, const QString& path, uint response, const QVariantMap& results);
    void sendShortcutSignal(const QString& name, const QString& id);
    Session* session(const QDBusMessage& message);

    QString m_address;
    QDBusConnection m_bus{QString()};
    QList<QDBusMessage> m_arrived;
    QList<Call> m_calls;
    std::vector<Key> m_keys;
    int m_questions = 0;
    qsizetype m_closedRequests = 0;
    int m_nextToken = 1;
    QString m_lastToken;
    QMap<QString, Session> m_sessions;
    QList<Question> m_open;
};

} // namespace tessly::test
