#include "PortalKeySenderTest.h"

namespace tessly::test {
namespace {

using PortalKeySenderPresenceTest = PortalKeySenderTest;

// The portal's coming and going

TEST_F(PortalKeySenderPresenceTest, WhereThereIsNoPortalThereIsNobodyToAsk)
{
    mock().die();
    startSender();
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_FALSE(sender().isAvailable());
    EXPECT_TRUE(sender().requestAccess()) << "nothing else is to be done for it";
    EXPECT_FALSE(sender().askAgain());
    EXPECT_FALSE(sender().isAllowed());
    mock().come();
    ASSERT_TRUE(waitUntil([this] { return sender().isAvailable(); }));
    settle();
    EXPECT_EQ(mock().questions(), 0) << "the wish was of another time";
}

TEST_F(PortalKeySenderPresenceTest, APortalWithoutTheInterfaceIsSaidOnce)
{
    const LogCapture log;
    mock().versions.remove(u"RemoteDesktop"_s);
    startSender();
    ASSERT_TRUE(waitUntil([this] { return !sender().askAgain(); }));
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    mock().come();
    ASSERT_TRUE(becomes(State::present));
    settle();
    EXPECT_FALSE(sender().isAvailable());
    EXPECT_THAT(
        log.lines(logCategory),
        ElementsAre(LogCapture::Line{
            QtInfoMsg, logCategory, u"The desktop's portal lets no program press keys"_s}));
}

TEST_F(PortalKeySenderPresenceTest, APortalThatWasSlowOnceIsAskedAgain)
{
    saveGoodToken();
    mock().hangsAt = {u"Properties.Get"_s};
    startSender();
    const auto isLookedAt = [this](qsizetype times) {
        return waitUntil([&] { return mock().calls(u"Properties.Get"_s).size() == times; });
    };
    ASSERT_TRUE(isLookedAt(1));
    m_clock.advance(DesktopPortal::timeout);
    ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
    EXPECT_TRUE(sender().askAgain()) << "there may be somebody to ask";
    ASSERT_TRUE(isLookedAt(2));
    m_clock.advance(DesktopPortal::timeout);
    ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
    mock().hangsAt.clear();
    m_clock.advance(1min);
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
}

TEST_F(PortalKeySenderPresenceTest, WithAPortalThatComesLateTheStartIsSilentThen)
{
    saveGoodToken();
    mock().die();
    startSender();
    ASSERT_TRUE(becomes(State::absent));
    mock().come();
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
}

TEST_F(PortalKeySenderPresenceTest, AccessThatIsTakenBackIsGoneUntilRequested)
{
    startAllowed();
    mock().revoke();
    ASSERT_TRUE(becomesForbidden());
    settle();
    EXPECT_EQ(mock().sessions(), 0);
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1) << "the token serves";
}

TEST_F(PortalKeySenderPresenceTest, AccessThatALockedScreenTookAwayIsTakenUpWhenTheUserIsBack)
{
    startAllowed();
    const auto lock = [this] { Q_EMIT m_portal->screenLocked(true); };
    const auto end = [this] {
        mock().revoke();
        EXPECT_TRUE(becomesForbidden());
        settle();
    };
    // Desktops tell in either order.
    for (const bool isToldFirst : {true, false}) {
        if (isToldFirst) {
            lock();
            end();
        } else {
            end();
            lock();
        }
        m_clock.advance(1h);
        settle();
        EXPECT_FALSE(sender().isAllowed()) << "the user is away";
        Q_EMIT m_portal->screenLocked(false);
        settle();
        EXPECT_FALSE(sender().isAllowed());
        m_clock.advance(3s);
        ASSERT_TRUE(becomesAllowed());
    }
    EXPECT_EQ(mock().questions(), 1);
}

TEST_F(PortalKeySenderPresenceTest, WhatTheUserEndedByHandDoesNotComeBackFromALockedScreen)
{
    startAllowed();
    mock().revoke();
    ASSERT_TRUE(becomesForbidden());
    m_clock.advance(1min);
    Q_EMIT m_portal->screenLocked(true);
    Q_EMIT m_portal->screenLocked(false);
    m_clock.advance(3s);
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_EQ(mock().sessions(), 0);
}

TEST_F(PortalKeySenderPresenceTest, AfterThePortalsDeathAccessComesBackWithIt)
{
    startAllowed();
    ASSERT_TRUE(becomesSaved(mock().lastToken()));
    mock().die();
    ASSERT_TRUE(becomesForbidden());
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    mock().come();
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1);
}

class PortalKeySenderDeathTest : public PortalKeySenderTest,
                                 public testing::WithParamInterface<const char*>
{
protected:
    static QString method() { return u"RemoteDesktop."_s + QLatin1StringView(GetParam()); }
};

TEST_P(PortalKeySenderDeathTest, APortalThatDiesMidwayMayBeAskedAgain)
{
    mock().diesAt = method();
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_FALSE(sender().isAllowed());
    mock().diesAt.clear();
    mock().come();
    ASSERT_TRUE(waitUntil([this] { return sender().isAvailable(); }));
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
}

TEST_P(PortalKeySenderDeathTest, TheTokenOutlivesAPortalThatDiesMidway)
{
    saveGoodToken();
    mock().diesAt = method();
    startSender();
    ASSERT_TRUE(waitUntil([this] { return !mock().calls(method()).isEmpty(); }));
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_EQ(savedToken(), u"known"_s);
    mock().diesAt.clear();
    mock().come();
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
}

TEST_P(PortalKeySenderDeathTest, APortalThatDiesOfEachStartIsLeftAlone)
{
    saveGoodToken();
    mock().diesAt = method();
    startSender();
    for (qsizetype time = 1; time <= 3; ++time) {
        ASSERT_TRUE(waitUntil([&] { return mock().calls(method()).size() == time; })) << time;
        ASSERT_TRUE(becomes(State::absent));
        mock().come();
    }
    ASSERT_TRUE(waitUntil([this] { return sender().isAvailable(); }));
    settle();
    EXPECT_THAT(mock().calls(method()), SizeIs(3));
}

TEST_P(PortalKeySenderDeathTest, APortalThatHangsMidwayIsGivenUp)
{
    mock().hangsAt = {method()};
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(waitUntil([this] { return !mock().calls(method()).isEmpty(); }));
    m_clock.advance(DesktopPortal::timeout);
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_THAT(mock().calls(method()), SizeIs(1)) << "not by itself";
    mock().hangsAt.clear();
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
}

INSTANTIATE_TEST_SUITE_P(
    At, PortalKeySenderDeathTest, testing::Values("CreateSession", "SelectDevices", "Start"),
    [](const auto& about) { return std::string(about.param); });

} // namespace
} // namespace tessly::test
