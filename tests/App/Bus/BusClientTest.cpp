#include "BusClient.h"

#include "TestBus.h"

#include <gtest/gtest.h>

#include <QMutex>
#include <QObject>
#include <QThread>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

const QString notificationsName = u"org.freedesktop.Notifications"_s;
const QString notificationsPath = u"/org/freedesktop/Notifications"_s;

/// What shows notifications. On a thread of its own, as the caller waits for it.
class Notifications final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    explicit Notifications(const TestBus& bus)
        : m_connection(bus.connect())
    {
        EXPECT_TRUE(m_connection.registerService(notificationsName));
        EXPECT_TRUE(
            m_connection.registerObject(notificationsPath, this, QDBusConnection::ExportAllSlots));
        moveToThread(&m_thread);
        m_thread.start();
    }
    ~Notifications() override
    {
        m_thread.quit();
        m_thread.wait();
    }

    [[nodiscard]] QStringList shown()
    {
        const QMutexLocker lock(&m_mutex);
        return m_shown;
    }

public Q_SLOTS:
    // The signature is the interface's.
    uint Notify( // NOLINT(readability-identifier-naming)
        const QString& application, uint, const QString& icon, const QString& summary,
        const QString& body, const QStringList& actions, const QVariantMap& hints, int)
    {
        const QMutexLocker lock(&m_mutex);
        m_shown << application << icon << summary << body << actions
                << hints.value(u"desktop-entry"_s).toString();
        return 1;
    }

private:
    QDBusConnection m_connection;
    QMutex m_mutex;
    QStringList m_shown;
    QThread m_thread;
};

TEST(BusClient, ShowsANotificationAsPlainText)
{
    const TestBus bus;
    Notifications notifications(bus);
    BusClient client([&] { return bus.connect(); }, {});
    EXPECT_TRUE(client.notify(u"It could not start"_s, u"No right to <b>/some & file</b>"_s));
    EXPECT_EQ(
        notifications.shown(),
        (QStringList{
            u"Tessly"_s, u"com.brackmoor.tessly"_s, u"It could not start"_s,
            u"No right to &lt;b&gt;/some &amp; file&lt;/b&gt;"_s, u"com.brackmoor.tessly"_s}));
}

TEST(BusClient, WhereNothingShowsNotificationsNoneIsShown)
{
    const TestBus bus;
    BusClient client([&] { return bus.connect(); }, {});
    EXPECT_FALSE(client.notify(u"It could not start"_s, u"text"_s));
    BusClient withoutBus([] { return TestBus::connect(u"unix:path=/nonexistent/bus"_s); }, {});
    EXPECT_FALSE(withoutBus.notify(u"It could not start"_s, u"text"_s));
}

} // namespace
} // namespace tessly::test

#include "BusClientTest.moc"
