#include "PortalKeySenderTest.h"

namespace tessly::test {
namespace {

// Asking

TEST_F(PortalKeySenderTest, WithoutATokenNothingIsAskedUntilAccessIsRequested)
{
    startSenderAndWait();
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_THAT(mock().calls(u"RemoteDesktop.CreateSession"_s), IsEmpty());
    EXPECT_EQ(mock().sessions(), 0);
}

TEST_F(PortalKeySenderTest, ARequestAsksForTheKeyboardForGood)
{
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_FALSE(sender().isAllowed()) << "the user has not answered";
    ASSERT_TRUE(becomesAllowed());
    const auto selections = mock().calls(u"RemoteDesktop.SelectDevices"_s);
    ASSERT_THAT(selections, SizeIs(1));
    EXPECT_EQ(selections[0].options.value(u"types"_s), 1U);
    EXPECT_EQ(selections[0].options.value(u"persist_mode"_s), 2U);
    EXPECT_FALSE(selections[0].options.contains(u"restore_token"_s));
    EXPECT_TRUE(sender().requestAccess());
    settle();
    EXPECT_EQ(mock().questions(), 1);
}

TEST_F(PortalKeySenderTest, AQuestionThatIsOpenIsNotAskedAgain)
{
    mock().user = User::takesTime;
    startSenderAndWait();
    for (int time = 0; time < 3; ++time) {
        EXPECT_TRUE(sender().requestAccess());
        EXPECT_TRUE(sender().askAgain());
        settle();
    }
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_FALSE(sender().isAllowed());
    m_clock.advance(24h);
    mock().answer(User::grants);
    EXPECT_TRUE(becomesAllowed());
}

TEST_F(PortalKeySenderTest, AccessMayBeRequestedBeforeThePortalIsKnown)
{
    startSender();
    EXPECT_FALSE(sender().isAvailable());
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
}

TEST_F(PortalKeySenderTest, AUserWhoSaidNoIsAskedAgainOnlyAtTheirWish)
{
    mock().user = User::cancels;
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(isAsked(1));
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_TRUE(sender().requestAccess());
    settle();
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));

    mock().user = User::grants;
    EXPECT_TRUE(sender().askAgain());
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 2);
}

TEST_F(PortalKeySenderTest, ADesktopThatAllowsNothingNowMayDoSoLater)
{
    saveToken(u"unknown"_s);
    mock().user = User::isOverruled;
    startSender();
    ASSERT_TRUE(isAsked(1));
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_EQ(savedToken(), u"unknown"_s);
    EXPECT_EQ(mock().questions(), 1) << "not by itself";
    mock().user = User::grants;
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
}

TEST_F(PortalKeySenderTest, DevicesWithoutAKeyboardAreNoAccess)
{
    mock().devices = 2;
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(isAsked(1));
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_TRUE(becomesSaved({})) << "to be given the same again is of no use";
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));
}

TEST_F(PortalKeySenderTest, ItsEndTakesTheQuestionBack)
{
    mock().user = User::takesTime;
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    m_sender.reset();
    EXPECT_TRUE(
        waitUntil([this] { return mock().openQuestions() == 0 && mock().sessions() == 0; }));
}

// The token

TEST_F(PortalKeySenderTest, ATokenMakesTheStartSilentAndTheNextIsKept)
{
    const LogCapture log;
    saveGoodToken();
    startSender();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
    EXPECT_EQ(
        mock().calls(u"RemoteDesktop.SelectDevices"_s)[0].options.value(u"restore_token"_s),
        u"known"_s);
    EXPECT_TRUE(becomesSaved(mock().lastToken()));
    EXPECT_NE(mock().lastToken(), u"known"_s);

    m_sender.reset();
    startSender();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
    EXPECT_TRUE(becomesSaved(mock().lastToken()));
    for (const auto& line : log.lines(logCategory)) {
        EXPECT_THAT(line.text.toStdString(), Not(HasSubstr("token-")));
        EXPECT_THAT(line.text.toStdString(), Not(HasSubstr("known")));
    }
}

TEST_F(PortalKeySenderTest, ATokenThatIsGivenUponARequestIsKept)
{
    startAllowed();
    EXPECT_TRUE(becomesSaved(mock().lastToken()));
    EXPECT_EQ(
        QFile::permissions(m_tokenPath) & (QFile::ReadGroup | QFile::ReadOther),
        QFile::Permissions());
}

TEST_F(PortalKeySenderTest, AStartThatGivesNoTokenLeavesNoneBehind)
{
    saveGoodToken();
    mock().givesTokens = false;
    startSender();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_TRUE(becomesSaved({})) << "the one there was has served";
}

TEST_F(PortalKeySenderTest, ATokenThatThePortalDoesNotKnowMakesItAskOnce)
{
    saveToken(u"unknown"_s);
    mock().user = User::cancels;
    startSender();
    ASSERT_TRUE(isAsked(1));
    EXPECT_TRUE(becomesSaved({}));
    settle();
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_TRUE(sender().requestAccess());
    settle();
    EXPECT_EQ(mock().questions(), 1);
}

TEST_F(PortalKeySenderTest, ATokenThatThePortalDoesNotKnowMayBeMadeGoodByTheUser)
{
    saveToken(u"unknown"_s);
    startSender();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_TRUE(becomesSaved(mock().lastToken()));
}

TEST_F(PortalKeySenderTest, ATokenThatIsRefusedIsForgottenAndNotTriedAgain)
{
    saveToken(u"mangled"_s);
    mock().failsAt = {u"RemoteDesktop.SelectDevices"_s};
    startSender();
    EXPECT_TRUE(becomesSaved({}));
    settle();
    EXPECT_THAT(mock().calls(u"RemoteDesktop.SelectDevices"_s), SizeIs(1));
    EXPECT_EQ(mock().questions(), 0);

    mock().failsAt = {};
    EXPECT_TRUE(sender().requestAccess());
    EXPECT_TRUE(becomesAllowed());
    EXPECT_FALSE(mock()
                     .calls(u"RemoteDesktop.SelectDevices"_s)
                     .constLast()
                     .options.contains(u"restore_token"_s));
}

TEST_F(PortalKeySenderTest, APortalThatRemembersNothingIsNotAskedTo)
{
    mock().versions[u"RemoteDesktop"_s] = 1;
    startAllowed();
    const auto options = mock().calls(u"RemoteDesktop.SelectDevices"_s)[0].options;
    EXPECT_FALSE(options.contains(u"persist_mode"_s));
    EXPECT_EQ(savedToken(), QString());
}

} // namespace
} // namespace tessly::test
