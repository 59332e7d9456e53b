#include "PortalHotKeyCenter.h"

#include "LogCapture.h"
#include "PortalWorld.h"
#include "ThreadExecutor.h"
#include "contract/HotKeyCenterContract.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

using Status = HotKeyCenter::Status;

/// A portal as the contract of hot keys asks for it.
class PortalHotKeys
{
public:
    PortalHotKeyCenter& center() { return *m_center; }
    void endCenter() { m_center.reset(); }
    void press(quint32 keyCode, quint32 modifiers)
    {
        m_mock.press(*portalTrigger(keyCode, modifiers));
    }
    bool takeElsewhere(quint32 keyCode, quint32 modifiers)
    {
        const QString trigger = *portalTrigger(keyCode, modifiers);
        if (m_mock.held().contains(trigger)) {
            return false;
        }
        m_mock.takenTriggers << trigger;
        return true;
    }
    void releaseElsewhere(quint32 keyCode, quint32 modifiers)
    {
        m_mock.takenTriggers.remove(*portalTrigger(keyCode, modifiers));
    }
    void settle()
    {
        // First what waits for the next turn; then a question, which is answered after all that has
        // been sent so far.
        for (int turn = 0; turn < 3; ++turn) {
            QCoreApplication::processEvents();
            static_cast<void>(await(m_portal.version(u"of nothing"_s)));
        }
        QCoreApplication::processEvents();
    }

private:
    TestBus m_bus;
    VirtualClock m_clock;
    MockPortal m_mock{m_bus};
    DesktopPortal m_portal{
        [address = m_bus.address()] { return TestBus::connect(address); }, m_clock};
    std::unique_ptr<PortalHotKeyCenter> m_center =
        std::make_unique<PortalHotKeyCenter>(m_portal, m_clock, directPasteShortcut);
};

INSTANTIATE_TYPED_TEST_SUITE_P(Portal, HotKeyCenterContract, PortalHotKeys);

class PortalHotKeyCenterTest : public PortalWorld
{
protected:
    static constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
    static constexpr std::array<quint32, 3> keyCodes = {18, 19, 20};
    const QString category = u"com.brackmoor.tessly.PortalHotKeyCenter"_s;
    const QString bindShortcuts = u"GlobalShortcuts.BindShortcuts"_s;

    PortalHotKeyCenterTest() { startMock(); }
    ~PortalHotKeyCenterTest() override { m_center.reset(); }

    void startCenter(PortalHotKeyCenter::Options options = {})
    {
        openPortal();
        m_center = std::make_unique<PortalHotKeyCenter>(
            *m_portal, m_clock, directPasteShortcut, std::move(options));
        const auto installed = m_center->installHandler([this](const HotKeyCenter::Press& press) {
            m_heard.push_back(press.key.id);
            return HotKeyCenter::done;
        });
        EXPECT_EQ(installed.status, HotKeyCenter::done);
    }

    HotKeyCenter::Registration registerKey(quint32 id)
    {
        return m_center->registerKey(keyCodes.at(id - 1), optionShift, {.signature = 1, .id = id});
    }

    /// Registers the keys 1 to 3 in one go.
    std::vector<HotKeyCenter::Registration> registerAll()
    {
        std::vector<HotKeyCenter::Registration> registrations;
        for (quint32 id = 1; id <= keyCodes.size(); ++id) {
            registrations.push_back(registerKey(id));
        }
        return registrations;
    }
    static std::vector<Status> statuses(std::vector<HotKeyCenter::Registration> registrations)
    {
        std::vector<Status> statuses;
        for (auto& registration : registrations) {
            statuses.push_back(await(std::move(registration.status)));
        }
        return statuses;
    }
    void startHolding(PortalHotKeyCenter::Options options = {})
    {
        startCenter(std::move(options));
        ASSERT_THAT(
            statuses(registerAll()),
            ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    }
    /// The ids of what was asked for, at each time.
    QList<QStringList> asked()
    {
        QList<QStringList> asked;
        for (const auto& call : mock().calls(bindShortcuts)) {
            QStringList ids;
            for (const auto& shortcut : qdbus_cast<QList<PortalShortcut>>(
                     call.arguments.value(1).value<QDBusArgument>())) {
                ids << shortcut.id;
            }
            asked << ids;
        }
        return asked;
    }

    /// Another run of the program, which remembers what the user refused in those before.
    void startRun(bool refusesByOther = false)
    {
        m_center.reset();
        startCenter(
            {.refusesByOther = refusesByOther,
             .refusal = std::make_unique<RestoreTokenFile>(
                 m_folder.filePath(u"refused"_s), std::make_unique<ThreadExecutor>("test"))});
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PortalHotKeyCenter> m_center;
    std::vector<quint32> m_heard;
};

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

// Presses

TEST_F(PortalHotKeyCenterTest, AKeyThatIsHeldIsHeardOnce)
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

TEST_F(PortalHotKeyCenterTest, WhereReleasesAreNotToldKeysAreHeardAgainAllTheSame)
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

TEST_F(PortalHotKeyCenterTest, KeysAreUpAMomentAfterTheLastIs)
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

TEST_F(PortalHotKeyCenterTest, KeysThatStayDownAreNotWaitedForForEver)
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

TEST_F(PortalHotKeyCenterTest, AnotherProgramCannotPressAKey)
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

TEST_F(PortalHotKeyCenterTest, KeysComeBackWithThePortal)
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

TEST_F(PortalHotKeyCenterTest, APortalThatDiesMidwayIsWaitedFor)
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

TEST_F(PortalHotKeyCenterTest, KeysThatTheDesktopTakesBackAreNotAskedForByThemselves)
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

TEST_F(PortalHotKeyCenterTest, ASessionThatEndsWhileTheUserIsAskedIsARefusal)
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

TEST_F(PortalHotKeyCenterTest, APortalThatHangsIsAskedAgainLater)
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
        m_clock.advance(DesktopPortal::patience);
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
