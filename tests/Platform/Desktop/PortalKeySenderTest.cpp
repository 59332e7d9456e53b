#include "PortalKeySender.h"

#include "LogCapture.h"
#include "PortalWorld.h"
#include "ThreadExecutor.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace tessly::test {

namespace {

using Key = MockPortal::Key;

constexpr int control = 29;
constexpr int shift = 42;
constexpr int v = 47;
constexpr int insert = 110;

const QString logCategory = u"com.brackmoor.tessly.PortalKeySender"_s;

class PortalKeySenderTest : public PortalWorld
{
protected:
    PortalKeySenderTest() { startMock(); }
    ~PortalKeySenderTest() override { m_sender.reset(); }

    void saveToken(const QString& token)
    {
        QFile file(m_tokenPath);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(token.toUtf8());
    }
    /// Saves a token that the portal knows.
    void saveGoodToken()
    {
        mock().tokens << u"known"_s;
        saveToken(u"known"_s);
    }
    [[nodiscard]] QString savedToken() const
    {
        QFile file(m_tokenPath);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /// A file that is missing is an empty token.
    [[nodiscard]] bool becomesSaved(const QString& token)
    {
        return waitUntil([&] { return savedToken() == token; });
    }

    PortalKeySender& sender() { return *m_sender; }
    void startSender()
    {
        openPortal();
        m_sender = std::make_unique<PortalKeySender>(
            *m_portal,
            std::make_unique<RestoreTokenFile>(
                m_tokenPath, std::make_unique<ThreadExecutor>("token")),
            [this] { return m_keyOfV; });
    }
    /// Until the sender knows that it may ask.
    void startSenderAndWait()
    {
        startSender();
        ASSERT_TRUE(waitUntil([this] { return sender().isAvailable(); }));
    }
    void startAllowed()
    {
        startSenderAndWait();
        EXPECT_TRUE(sender().requestAccess());
        ASSERT_TRUE(becomesAllowed());
    }
    [[nodiscard]] bool becomesAllowed()
    {
        return waitUntil([this] { return sender().isAllowed(); });
    }
    [[nodiscard]] bool becomesForbidden()
    {
        return waitUntil([this] { return !sender().isAllowed(); });
    }
    [[nodiscard]] bool isAsked(int times)
    {
        return waitUntil([&] { return mock().questions() == times; });
    }

    QTemporaryDir m_folder;
    QString m_tokenPath = m_folder.filePath(u"remote-desktop-token"_s);
    quint32 m_keyOfV = v;
    std::unique_ptr<PortalKeySender> m_sender;
};

/// What comes before each chord.
std::vector<Key> releases()
{
    std::vector<Key> keys;
    for (const int modifier : {shift, 54, 56, 100, 125, 126, control, 97}) {
        keys.emplace_back(modifier, false);
    }
    return keys;
}

std::vector<Key> afterReleases(std::initializer_list<Key> chord)
{
    auto keys = releases();
    keys.insert(keys.end(), chord);
    return keys;
}

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

class PortalKeySenderDenialTest : public PortalKeySenderTest,
                                  public testing::WithParamInterface<MockPortal::User>
{
};

TEST_P(PortalKeySenderDenialTest, AUserWhoSaidNoIsAskedAgainOnlyAtTheirWish)
{
    mock().user = GetParam();
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

INSTANTIATE_TEST_SUITE_P(
    Each, PortalKeySenderDenialTest,
    testing::Values(MockPortal::User::cancels, MockPortal::User::denies));

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
    mock().user = User::denies;
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

// The portal's coming and going

TEST_F(PortalKeySenderTest, WhereThereIsNoPortalThereIsNobodyToAsk)
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

TEST_F(PortalKeySenderTest, APortalWithoutTheInterfaceIsSaidOnce)
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

TEST_F(PortalKeySenderTest, WithAPortalThatComesLateTheStartIsSilentThen)
{
    saveGoodToken();
    mock().die();
    startSender();
    ASSERT_TRUE(becomes(State::absent));
    mock().come();
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
}

TEST_F(PortalKeySenderTest, AccessThatIsTakenBackIsGoneUntilRequested)
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

TEST_F(PortalKeySenderTest, AccessThatALockedScreenTookAwayIsTakenUpWhenTheUserIsBack)
{
    startAllowed();
    for (const QString& desktop : {u"gnome"_s, u"freedesktop"_s}) {
        QDBusConnection screen = m_bus.connect();
        const auto tell = [&](bool isLocked) {
            auto signal = QDBusMessage::createSignal(
                u"/org/%1/ScreenSaver"_s.arg(desktop), u"org.%1.ScreenSaver"_s.arg(desktop),
                u"ActiveChanged"_s);
            signal << isLocked;
            ASSERT_TRUE(screen.send(signal));
        };
        tell(true);
        mock().revoke();
        ASSERT_TRUE(becomesForbidden());
        settle();
        EXPECT_EQ(m_clock.pending(), 0U) << "nothing is tried while the screen is locked";
        tell(false);
        ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
        settle();
        EXPECT_FALSE(sender().isAllowed());
        m_clock.advance(3s);
        ASSERT_TRUE(becomesAllowed());
        QDBusConnection::disconnectFromBus(screen.name());
    }
    EXPECT_EQ(mock().questions(), 1);
}

TEST_F(PortalKeySenderTest, AUserWhoSaidNoIsNotAskedWhenTheyAreBack)
{
    mock().user = User::denies;
    startSenderAndWait();
    EXPECT_TRUE(sender().requestAccess());
    ASSERT_TRUE(isAsked(1));
    settle();
    Q_EMIT m_portal->screenUnlocked();
    m_clock.advance(3s);
    settle();
    EXPECT_EQ(mock().questions(), 1);
}

TEST_F(PortalKeySenderTest, AfterThePortalsDeathAccessComesBackWithIt)
{
    startAllowed();
    ASSERT_TRUE(becomesSaved(mock().lastToken()));
    mock().die();
    ASSERT_TRUE(becomesForbidden());
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
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
    m_clock.advance(DesktopPortal::patience);
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

// Keys

TEST_F(PortalKeySenderTest, EachChordIsPressedAndReleasedAfterWhatMayBeHeld)
{
    startAllowed();
    EXPECT_EQ(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(
        mock().keys(), ElementsAreArray(afterReleases(
                           {{control, true}, {v, true}, {v, false}, {control, false}})));
}

TEST_F(PortalKeySenderTest, TheTerminalsChord)
{
    startAllowed();
    EXPECT_EQ(await(sender().send(PasteChord::controlShiftV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(
        mock().keys(), ElementsAreArray(afterReleases(
                           {{control, true},
                            {shift, true},
                            {v, true},
                            {v, false},
                            {shift, false},
                            {control, false}})));
}

TEST_F(PortalKeySenderTest, TheChordOfOldTerminals)
{
    startAllowed();
    EXPECT_EQ(await(sender().send(PasteChord::shiftInsert, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(
        mock().keys(), ElementsAreArray(afterReleases(
                           {{shift, true}, {insert, true}, {insert, false}, {shift, false}})));
}

TEST_F(PortalKeySenderTest, TheKeyOfVIsAskedForEachTime)
{
    startAllowed();
    m_keyOfV = 52;
    EXPECT_EQ(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(mock().keys(), testing::Contains(Key(52, true)));
    m_keyOfV = 0;
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(mock().keys(), SizeIs(releases().size() + 4));
}

TEST_F(PortalKeySenderTest, ChordsFollowOneAnother)
{
    startAllowed();
    auto first = sender().send(PasteChord::controlV, nullptr);
    auto second = sender().send(PasteChord::shiftInsert, nullptr);
    EXPECT_EQ(await(std::move(second)), KeySender::Sending::sent);
    EXPECT_EQ(await(std::move(first)), KeySender::Sending::sent);
    auto expected = afterReleases({{control, true}, {v, true}, {v, false}, {control, false}});
    const auto then =
        afterReleases({{shift, true}, {insert, true}, {insert, false}, {shift, false}});
    expected.insert(expected.end(), then.begin(), then.end());
    EXPECT_THAT(mock().keys(), ElementsAreArray(expected));
}

TEST_F(PortalKeySenderTest, KeysThatAreNotKnownToBeHeldAreNotWaitedFor)
{
    startAllowed();
    EXPECT_TRUE(await(sender().ready()));
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(PortalKeySenderTest, TheHotKeyIsWaitedForAndModifiersForAMoment)
{
    startAllowed();
    const LoopAnswer<bool> up(false);
    bool hadModifiers = true;
    sender().setHeldKeys(
        {.hotKeysUp = [up] { return up.future(); },
         .hadModifiers = [&hadModifiers] { return hadModifiers; }});
    auto waiting = sender().ready();
    settle();
    EXPECT_FALSE(waiting.isReady());
    up(true);
    ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
    EXPECT_FALSE(waiting.isReady());
    m_clock.advance(250ms);
    EXPECT_TRUE(await(std::move(waiting)));

    hadModifiers = false;
    EXPECT_TRUE(await(sender().ready()));
}

TEST_F(PortalKeySenderTest, WithoutAccessNoKeyIsSent)
{
    startSenderAndWait();
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(mock().keys(), IsEmpty());
}

TEST_F(PortalKeySenderTest, APortalThatDiesBetweenTheKeysHasNotTakenThem)
{
    startAllowed();
    mock().diesAtKey = 10;
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(mock().keys(), SizeIs(10));
    EXPECT_TRUE(becomesForbidden());
}

TEST_F(PortalKeySenderTest, WhereNothingIsToBeLiftedTheChordCountsAlone)
{
    const LogCapture log;
    mock().refusesLifting = true;
    startAllowed();
    EXPECT_EQ(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    EXPECT_EQ(await(sender().send(PasteChord::shiftInsert, nullptr)), KeySender::Sending::sent);
    EXPECT_THAT(
        mock().keys(),
        ElementsAre(
            Key(control, true), Key(v, true), Key(v, false), Key(control, false), Key(shift, true),
            Key(insert, true), Key(insert, false), Key(shift, false)));
    EXPECT_THAT(mock().calls(u"RemoteDesktop.CreateSession"_s), SizeIs(1));
    EXPECT_THAT(log.lines(logCategory), SizeIs(1)) << "that the start has been granted";
}

TEST_F(PortalKeySenderTest, KeysThatAreRefusedHaveNotBeenTakenAndAccessIsTakenUpAnew)
{
    startAllowed();
    mock().failsAt = {u"RemoteDesktop.NotifyKeyboardKeycode"_s};
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    mock().failsAt.clear();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_EQ(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
}

TEST_F(PortalKeySenderTest, AfterAPortalThatHangsNothingIsSentForLater)
{
    startAllowed();
    mock().hangsAt = {u"RemoteDesktop.NotifyKeyboardKeycode"_s, u"RemoteDesktop.CreateSession"_s};
    auto sending = sender().send(PasteChord::controlV, nullptr);
    EXPECT_FALSE(sending.isReady());
    settle();
    EXPECT_FALSE(sending.isReady());
    m_clock.advance(3s);
    EXPECT_EQ(await(std::move(sending)), KeySender::Sending::failed);
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_NE(await(sender().send(PasteChord::controlV, nullptr)), KeySender::Sending::sent);
    settle();
    EXPECT_THAT(
        mock().calls(u"RemoteDesktop.NotifyKeyboardKeycode"_s), SizeIs(releases().size() + 4));
}

TEST_F(PortalKeySenderTest, ItMayEndWhileKeysAreOnTheirWay)
{
    startAllowed();
    auto sending = sender().send(PasteChord::controlV, nullptr);
    m_sender.reset();
    static_cast<void>(await(std::move(sending)));
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));
    EXPECT_THAT(
        mock().keys(),
        ElementsAreArray(afterReleases({{control, true}, {v, true}, {v, false}, {control, false}})))
        << "no key is left pressed";
}

} // namespace

} // namespace tessly::test
