#include "PortalHotKeyCenterTest.h"

namespace tessly::test {
namespace {

TEST_F(PortalHotKeyCenterTest, KeysOfOneTurnAreAskedForTogetherAndByName)
{
    startHolding();
    EXPECT_TRUE(m_center->isAvailable());
    ASSERT_THAT(asked(), ElementsAre(QStringList{u"paste-01"_s, u"paste-02"_s, u"paste-03"_s}));
    const auto shortcuts = qdbus_cast<QList<PortalShortcut>>(
        mock().calls(bindShortcuts)[0].arguments.value(1).value<QDBusArgument>());
    EXPECT_EQ(shortcuts[2].properties.value(u"description"_s), u"Paste entry 03"_s);
    EXPECT_EQ(shortcuts[2].properties.value(u"preferred_trigger"_s), u"ALT+SHIFT+3"_s);
    EXPECT_EQ(mock().sessions(), 1);
}

TEST_F(PortalHotKeyCenterTest, ItIsAvailableOnceThePortalIsKnownToHaveKeys)
{
    startCenter();
    EXPECT_FALSE(m_center->isAvailable());
    EXPECT_TRUE(waitUntil([this] { return m_center->isAvailable(); }));
    settle();
    EXPECT_EQ(mock().sessions(), 0) << "nothing is asked for that nobody wants";
}

TEST_F(PortalHotKeyCenterTest, KeysThatTheAnswerLacksAreTaken)
{
    mock().takenTriggers = {u"ALT+SHIFT+2"_s};
    startCenter();
    EXPECT_THAT(
        statuses(registerAll()),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::taken, HotKeyCenter::done));
    mock().press(u"ALT+SHIFT+3"_s);
    EXPECT_TRUE(waitUntil([this] { return !m_heard.empty(); }));
    EXPECT_THAT(m_heard, ElementsAre(3));
    EXPECT_THAT(asked(), SizeIs(1)) << "what is left is held already";
}

TEST_F(PortalHotKeyCenterTest, ADesktopMayTakeTheKeysByOtherNames)
{
    startCenter({.trigger = [](quint32 keyCode, quint32) { return u"key %1"_s.arg(keyCode); }});
    auto first = registerKey(1);
    ASSERT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    EXPECT_THAT(mock().held(), ElementsAre(u"key 18"_s));
}

TEST_F(PortalHotKeyCenterTest, ItIsNotAvailableBeforeTheUserHasAgreed)
{
    mock().user = User::takesTime;
    startCenter();
    const auto keys = registerAll();
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    EXPECT_TRUE(m_center->hasPortal());
    EXPECT_FALSE(m_center->isAvailable());
    mock().answer(User::grants);
    EXPECT_TRUE(waitUntil([this] { return m_center->isAvailable(); }));
}

TEST_F(PortalHotKeyCenterTest, ItIsAvailableAsSoonAsOneShortcutHasKeys)
{
    const LogCapture log;
    mock().keylessTriggers = {u"ALT+SHIFT+1"_s, u"ALT+SHIFT+2"_s, u"ALT+SHIFT+3"_s};
    startHolding({.describesKeys = true});
    EXPECT_FALSE(m_center->isAvailable());
    ASSERT_THAT(log.lines(category), SizeIs(1));
    EXPECT_TRUE(log.lines(category)[0].text.contains(u"paste-01, paste-02, paste-03"_s));
    mock().changeKeys(u"paste-02"_s, u"Alt+F2"_s);
    EXPECT_TRUE(waitUntil([this] { return m_center->isAvailable(); }));
    mock().pressShortcut(u"paste-02"_s);
    EXPECT_TRUE(waitUntil([this] { return !m_heard.empty(); }));
    EXPECT_THAT(m_heard, ElementsAre(2));
    mock().changeKeys(u"paste-02"_s, {});
    EXPECT_TRUE(waitUntil([this] { return !m_center->isAvailable(); }));
}

TEST_F(PortalHotKeyCenterTest, WhereKeysAreNeverDescribedShortcutsHaveThemAllTheSame)
{
    const LogCapture log;
    mock().keylessTriggers = {u"ALT+SHIFT+1"_s, u"ALT+SHIFT+2"_s, u"ALT+SHIFT+3"_s};
    startHolding();
    EXPECT_TRUE(m_center->isAvailable());
    EXPECT_THAT(log.lines(category), IsEmpty());
}

TEST_F(PortalHotKeyCenterTest, NobodyIsAskedBeforeThatMayBe)
{
    startCenter();
    m_center->setMayAsk(false);
    auto keys = registerAll();
    settle();
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_FALSE(keys[0].status.isReady());
    EXPECT_FALSE(m_center->isAvailable());

    m_center->setMayAsk(true);
    EXPECT_THAT(
        statuses(std::move(keys)),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    EXPECT_TRUE(m_center->isAvailable());
    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(PortalHotKeyCenterTest, WhoAsksForKeysIsAsked)
{
    startCenter();
    m_center->setMayAsk(false);
    auto keys = registerAll();
    settle();
    ASSERT_THAT(asked(), IsEmpty());
    m_center->forgetRefusal();
    EXPECT_EQ(statuses(std::move(keys))[0], HotKeyCenter::done);
}

TEST_F(PortalHotKeyCenterTest, WhatTheUserRefusedIsNotAskedForInLaterRuns)
{
    mock().user = User::cancels;
    startRun();
    EXPECT_THAT(
        statuses(registerAll()),
        ElementsAre(
            HotKeyCenter::unavailable, HotKeyCenter::unavailable, HotKeyCenter::unavailable));
    mock().user = User::grants;

    const LogCapture log;
    startRun();
    auto keys = registerAll();
    ASSERT_TRUE(waitUntil([&] { return !log.lines(category).empty(); }));
    settle();
    EXPECT_THAT(asked(), SizeIs(1));
    EXPECT_FALSE(m_center->isAvailable());
    EXPECT_FALSE(keys[0].status.isReady()) << "nobody else holds them";

    m_center->forgetRefusal();
    EXPECT_THAT(
        statuses(std::move(keys)),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    EXPECT_TRUE(m_center->isAvailable());

    startRun();
    EXPECT_EQ(statuses(registerAll())[0], HotKeyCenter::done);
}

TEST_F(PortalHotKeyCenterTest, WhatTheDesktopDidNotLetTheUserSeeIsAskedForAgain)
{
    mock().user = User::isOverruled;
    startRun();
    EXPECT_EQ(statuses(registerAll())[0], HotKeyCenter::unavailable);
    mock().user = User::grants;
    startRun();
    EXPECT_EQ(statuses(registerAll())[0], HotKeyCenter::done);
}

TEST_F(PortalHotKeyCenterTest, WhatTheUserRefusedIsRememberedAlsoWhereThePortalDoesNotSayWho)
{
    mock().user = User::takesTime;
    startRun(true);
    auto keys = registerAll();
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    m_clock.advance(2s);
    mock().answer(User::isOverruled);
    EXPECT_EQ(statuses(std::move(keys))[0], HotKeyCenter::unavailable);

    mock().user = User::grants;
    const LogCapture log;
    startRun();
    keys = registerAll();
    ASSERT_TRUE(waitUntil([&] { return !log.lines(category).empty(); }));
    settle();
    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(PortalHotKeyCenterTest, WhatIsBoundIsHeldWhateverThePortalCallsItsAnswer)
{
    mock().boundResponse = 2;
    startHolding();
    EXPECT_TRUE(m_center->isAvailable());
    mock().press(u"ALT+SHIFT+2"_s);
    EXPECT_TRUE(waitUntil([this] { return m_heard == std::vector<quint32>{2}; }));
}

class PortalHotKeyCenterRefusalTest : public PortalHotKeyCenterTest,
                                      public testing::WithParamInterface<MockPortal::User>
{
};

TEST_P(PortalHotKeyCenterRefusalTest, WithoutTheUsersLeaveNoKeyIsAvailable)
{
    const LogCapture log;
    mock().user = GetParam();
    startCenter();
    for (int time = 0; time < 2; ++time) {
        EXPECT_THAT(
            statuses(registerAll()),
            ElementsAre(
                HotKeyCenter::unavailable, HotKeyCenter::unavailable, HotKeyCenter::unavailable));
    }
    EXPECT_THAT(log.lines(category), SizeIs(1));
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));
    EXPECT_FALSE(m_center->isAvailable());
    mock().user = User::grants;
    EXPECT_THAT(
        statuses(registerAll()),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    EXPECT_TRUE(m_center->isAvailable());
}

INSTANTIATE_TEST_SUITE_P(
    Each, PortalHotKeyCenterRefusalTest,
    testing::Values(MockPortal::User::cancels, MockPortal::User::isOverruled));

TEST_F(PortalHotKeyCenterTest, APortalThatMakesNoSessionHasNoKey)
{
    mock().failsAt = {u"GlobalShortcuts.CreateSession"_s};
    startCenter();
    EXPECT_EQ(statuses(registerAll())[0], HotKeyCenter::unavailable);
}

TEST_F(PortalHotKeyCenterTest, AnotherSetIsAskedForInAnotherSession)
{
    startCenter();
    auto first = registerKey(1);
    ASSERT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    auto second = registerKey(2);
    ASSERT_EQ(await(std::move(second.status)), HotKeyCenter::done);
    EXPECT_THAT(
        asked(),
        ElementsAre(QStringList{u"paste-01"_s}, QStringList{u"paste-01"_s, u"paste-02"_s}));
    EXPECT_EQ(mock().sessions(), 1);
    EXPECT_EQ(m_center->unregisterKey(first.key), HotKeyCenter::done);
    settle();
    EXPECT_THAT(mock().held(), ElementsAre(u"ALT+SHIFT+2"_s));
}

TEST_F(PortalHotKeyCenterTest, TheSameSetIsNotAskedForAgain)
{
    startCenter();
    auto keys = registerAll();
    std::vector<HotKeyCenter::Reference> references;
    for (const auto& key : keys) {
        references.push_back(key.key);
    }
    static_cast<void>(statuses(std::move(keys)));
    for (const auto reference : references) {
        m_center->unregisterKey(reference);
    }
    EXPECT_THAT(
        statuses(registerAll()),
        ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(PortalHotKeyCenterTest, WithTheLastKeyGoesTheSession)
{
    startCenter();
    auto first = registerKey(1);
    ASSERT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    EXPECT_EQ(mock().sessions(), 1);
    m_center->unregisterKey(first.key);
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));
}

TEST_F(PortalHotKeyCenterTest, KeysThatAreGivenUpWhileTheUserIsAskedTakeTheQuestionWithThem)
{
    mock().user = User::takesTime;
    startCenter();
    auto first = registerKey(1);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    m_clock.advance(24h);
    m_center->unregisterKey(first.key);
    EXPECT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    EXPECT_TRUE(waitUntil([this] { return mock().openQuestions() == 0; }));
}

TEST_F(PortalHotKeyCenterTest, AKeyIsLiveOnceTheUserHasAgreed)
{
    mock().user = User::takesTime;
    startCenter();
    auto first = registerKey(1);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    EXPECT_FALSE(first.status.isReady());
    mock().answer(User::grants);
    EXPECT_EQ(await(std::move(first.status)), HotKeyCenter::done);
    mock().press(u"ALT+SHIFT+1"_s);
    EXPECT_TRUE(waitUntil([this] { return m_heard.size() == 1; }));
}

} // namespace
} // namespace tessly::test
