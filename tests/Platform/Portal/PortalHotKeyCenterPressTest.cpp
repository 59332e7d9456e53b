#include "PortalHotKeyCenterTest.h"

namespace tessly::test {
namespace {

using PortalHotKeyCenterPressTest = PortalHotKeyCenterTest;

// Presses

TEST_F(PortalHotKeyCenterPressTest, AKeyThatIsHeldIsHeardOnce)
{
    startHolding();
    for (int time = 0; time < 3; ++time) {
        mock().pressShortcut(u"paste-01"_s);
        settle();
        m_clock.advance(500ms);
    }
    EXPECT_THAT(m_heard, ElementsAre(1));
    mock().releaseShortcut(u"paste-01"_s);
    mock().pressShortcut(u"paste-01"_s);
    settle();
    EXPECT_THAT(m_heard, ElementsAre(1, 1));
}

TEST_F(PortalHotKeyCenterPressTest, WhereReleasesAreNotToldKeysAreHeardAgainAllTheSame)
{
    startHolding();
    mock().pressShortcut(u"paste-01"_s);
    settle();
    m_clock.advance(2s);
    mock().pressShortcut(u"paste-01"_s);
    settle();
    mock().pressShortcut(u"paste-02"_s);
    settle();
    EXPECT_THAT(m_heard, ElementsAre(1, 1, 2));
}

TEST_F(PortalHotKeyCenterPressTest, KeysAreUpAMomentAfterTheLastIs)
{
    startHolding();
    EXPECT_TRUE(m_center->keysUp().isFinished());
    mock().pressShortcut(u"paste-01"_s);
    mock().pressShortcut(u"paste-02"_s);
    settle();
    const QFuture<bool> up = m_center->keysUp();
    mock().releaseShortcut(u"paste-01"_s);
    settle();
    m_clock.advance(300ms);
    EXPECT_FALSE(up.isFinished());
    mock().releaseShortcut(u"paste-02"_s);
    settle();
    EXPECT_FALSE(up.isFinished());
    EXPECT_FALSE(m_center->keysUp().isFinished()) << "the modifiers are still down";
    m_clock.advance(200ms);
    mock().pressShortcut(u"paste-03"_s);
    settle();
    m_clock.advance(100ms);
    EXPECT_FALSE(up.isFinished()) << "so they are for another key";
    mock().releaseShortcut(u"paste-03"_s);
    settle();
    m_clock.advance(250ms);
    ASSERT_TRUE(up.isFinished());
    EXPECT_TRUE(up.result());
    EXPECT_TRUE(m_center->keysUp().isFinished());
}

TEST_F(PortalHotKeyCenterPressTest, KeysThatStayDownAreNotWaitedForForEver)
{
    startHolding();
    mock().pressShortcut(u"paste-01"_s);
    settle();
    const QFuture<bool> up = m_center->keysUp();
    for (int time = 0; time < 3; ++time) {
        EXPECT_FALSE(up.isFinished());
        m_clock.advance(500ms);
        // It repeats.
        mock().pressShortcut(u"paste-01"_s);
        settle();
    }
    ASSERT_TRUE(up.isFinished());
    EXPECT_FALSE(up.result());

    const QFuture<bool> atTheEnd = m_center->keysUp();
    m_center.reset();
    EXPECT_TRUE(atTheEnd.isFinished());
}

TEST_F(PortalHotKeyCenterPressTest, AnotherProgramCannotPressAKey)
{
    startHolding();
    const QString path = u"/org/freedesktop/portal/desktop"_s;
    QDBusConnection stranger = m_bus.connect();
    auto forged = QDBusMessage::createSignal(
        path, u"org.freedesktop.portal.GlobalShortcuts"_s, u"Activated"_s);
    const auto call = mock().calls(bindShortcuts)[0];
    forged << call.arguments[0] << u"paste-01"_s << qulonglong{1} << QVariantMap();
    ASSERT_TRUE(stranger.send(forged));
    stranger.call(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"GetId"_s));
    settle();
    EXPECT_THAT(m_heard, IsEmpty());
    mock().press(u"ALT+SHIFT+1"_s);
    EXPECT_TRUE(waitUntil([this] { return m_heard.size() == 1; }));
    QDBusConnection::disconnectFromBus(stranger.name());
}

// The portal's coming and going

class PortalHotKeyCenterLackTest : public PortalHotKeyCenterTest,
                                   public testing::WithParamInterface<bool>
{
protected:
    [[nodiscard]] static bool hasPortal() { return GetParam(); }
    void takeAway()
    {
        if (hasPortal()) {
            mock().versions.remove(u"GlobalShortcuts"_s);
        } else {
            mock().die();
        }
    }
};

TEST_P(PortalHotKeyCenterLackTest, WhereThereAreNoHotKeysTheLogSaysSoOnceAndRegistrationsWait)
{
    const LogCapture log;
    takeAway();
    startCenter();
    auto keys = registerAll();
    ASSERT_TRUE(waitUntil([&] { return !log.lines(category).empty(); }));
    settle();
    EXPECT_FALSE(m_center->isAvailable());
    EXPECT_FALSE(keys[0].status.isReady());
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_THAT(log.lines(category), SizeIs(1));

    mock().versions[u"GlobalShortcuts"_s] = 1;
    mock().come();
    EXPECT_THAT(
        statuses(std::move(keys)),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    EXPECT_TRUE(m_center->isAvailable());
}

TEST_P(PortalHotKeyCenterLackTest, ARegistrationThatWaitsEndsWithItsKeyOrTheCenter)
{
    takeAway();
    startCenter();
    auto keys = registerAll();
    ASSERT_TRUE(becomes(hasPortal() ? State::present : State::absent));
    settle();
    m_center->unregisterKey(keys[0].key);
    EXPECT_EQ(await(std::move(keys[0].status)), HotKeyCenter::done);
    EXPECT_FALSE(keys[1].status.isReady());
    m_center.reset();
    EXPECT_EQ(await(std::move(keys[1].status)), HotKeyCenter::unavailable);
}

INSTANTIATE_TEST_SUITE_P(Each, PortalHotKeyCenterLackTest, testing::Bool());

TEST_F(PortalHotKeyCenterPressTest, KeysComeBackWithThePortal)
{
    startHolding();
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_FALSE(m_center->isAvailable());
    mock().come();
    ASSERT_TRUE(waitUntil([this] { return mock().held().size() == 3; }));
    settle();
    mock().press(u"ALT+SHIFT+2"_s);
    EXPECT_TRUE(waitUntil([this] { return !m_heard.empty(); }));
    EXPECT_THAT(m_heard, ElementsAre(2));
}

TEST_F(PortalHotKeyCenterPressTest, APortalThatDiesMidwayIsWaitedFor)
{
    for (const QString& method : {u"GlobalShortcuts.CreateSession"_s, bindShortcuts}) {
        m_center.reset();
        mock().diesAt = method;
        startCenter();
        auto first = registerKey(1);
        ASSERT_TRUE(waitUntil([&] { return !mock().calls(method).isEmpty(); }));
        ASSERT_TRUE(becomes(State::absent));
        mock().diesAt.clear();
        mock().come();
        EXPECT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    }
}

TEST_F(PortalHotKeyCenterPressTest, KeysThatTheDesktopTakesBackAreNotAskedForByThemselves)
{
    const LogCapture log;
    startHolding();
    mock().revoke();
    ASSERT_TRUE(waitUntil([&] { return !log.lines(category).empty(); }));
    settle();
    EXPECT_THAT(asked(), SizeIs(1));
    EXPECT_EQ(mock().sessions(), 0);
    EXPECT_FALSE(m_center->isAvailable());
}

TEST_F(PortalHotKeyCenterPressTest, ASessionThatEndsWhileTheUserIsAskedIsARefusal)
{
    mock().user = User::takesTime;
    startCenter();
    auto first = registerKey(1);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    mock().revoke();
    EXPECT_EQ(await(std::move(first.status)), HotKeyCenter::unavailable);
    EXPECT_EQ(m_clock.pending(), 0U) << "it is not asked again";
}

TEST_F(PortalHotKeyCenterPressTest, APortalThatHangsIsAskedAgainLater)
{
    const LogCapture log;
    for (const QString& method :
         {u"Properties.Get"_s, u"GlobalShortcuts.CreateSession"_s, bindShortcuts}) {
        m_center.reset();
        mock().hangsAt = {method};
        startCenter();
        auto first = registerKey(1);
        const auto before = mock().calls(method).size();
        ASSERT_TRUE(waitUntil([&] { return mock().calls(method).size() > before; }));
        m_clock.advance(DesktopPortal::timeout);
        ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
        EXPECT_FALSE(first.status.isReady()) << "the user has not said no";
        mock().hangsAt.clear();
        m_clock.advance(30s);
        EXPECT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    }
    EXPECT_THAT(log.lines(category), IsEmpty());
}

} // namespace
} // namespace tessly::test
