#include "PortalKeySender.h"

#include "FakePasteTarget.h"
#include "LogCapture.h"
#include "PortalWorld.h"
#include "ThreadExecutor.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <algorithm>
#include <ranges>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace tessly::test {

namespace {

using Key = MockPortal::Key;
using Sending = KeySender::Sending;

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
            [this](PasteChord chord) { return strokes(chord); });
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
    /// As on an American keyboard.
    [[nodiscard]] std::optional<KeyStrokes> strokes(PasteChord chord) const
    {
        std::vector<int> keys;
        if (chord == PasteChord::shiftInsert) {
            keys = {shift, insert};
        } else if (!m_keyOfV) {
            return std::nullopt;
        } else if (chord == PasteChord::controlShiftV) {
            keys = {control, shift, *m_keyOfV};
        } else {
            keys = {control, *m_keyOfV};
        }
        KeyStrokes strokes;
        for (const int key : keys) {
            strokes.push_back({.key = static_cast<quint32>(key), .isPress = true});
        }
        for (const int key : keys | std::views::reverse) {
            strokes.push_back({.key = static_cast<quint32>(key), .isPress = false});
        }
        return strokes;
    }

    /// None where no layout has the letter.
    std::optional<int> m_keyOfV = v;
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

/// Whether these are chords, each after the releases of what may be held, in any order.
testing::AssertionResult
areChords(std::vector<Key> keys, std::initializer_list<std::vector<Key>> chords)
{
    std::vector<Key> expected;
    for (const auto& chord : chords) {
        auto lifted = releases();
        if (keys.size() >= expected.size() + lifted.size()) {
            const auto begin = keys.begin() + std::ssize(expected);
            std::sort(begin, begin + std::ssize(lifted));
        }
        std::ranges::sort(lifted);
        expected.insert(expected.end(), lifted.begin(), lifted.end());
        expected.insert(expected.end(), chord.begin(), chord.end());
    }
    if (keys == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << testing::PrintToString(keys);
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

TEST_F(PortalKeySenderTest, APortalThatWasSlowOnceIsAskedAgain)
{
    saveGoodToken();
    mock().hangsAt = {u"Properties.Get"_s};
    startSender();
    const auto isLookedAt = [this](qsizetype times) {
        return waitUntil([&] { return mock().calls(u"Properties.Get"_s).size() == times; });
    };
    ASSERT_TRUE(isLookedAt(1));
    m_clock.advance(DesktopPortal::patience);
    ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
    EXPECT_TRUE(sender().askAgain()) << "there may be somebody to ask";
    ASSERT_TRUE(isLookedAt(2));
    m_clock.advance(DesktopPortal::patience);
    ASSERT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
    mock().hangsAt.clear();
    m_clock.advance(1min);
    EXPECT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 0);
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

TEST_F(PortalKeySenderTest, WhatTheUserEndedByHandDoesNotComeBackFromALockedScreen)
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

TEST_F(PortalKeySenderTest, AfterThePortalsDeathAccessComesBackWithIt)
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
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_TRUE(
        areChords(mock().keys(), {{{control, true}, {v, true}, {v, false}, {control, false}}}));
}

TEST_F(PortalKeySenderTest, TheTerminalsChord)
{
    startAllowed();
    EXPECT_EQ(Sending::sent, await(sender().send(PasteChord::controlShiftV, nullptr, [] {
                  return true;
              })));
    EXPECT_TRUE(areChords(
        mock().keys(), {{{control, true},
                         {shift, true},
                         {v, true},
                         {v, false},
                         {shift, false},
                         {control, false}}}));
}

TEST_F(PortalKeySenderTest, TheChordOfOldTerminals)
{
    startAllowed();
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })));
    EXPECT_TRUE(areChords(
        mock().keys(), {{{shift, true}, {insert, true}, {insert, false}, {shift, false}}}));
}

TEST_F(PortalKeySenderTest, TheKeysOfAChordAreAskedForEachTime)
{
    startAllowed();
    m_keyOfV = 52;
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), testing::Contains(Key(52, true)));
}

TEST_F(PortalKeySenderTest, ChordsFollowOneAnother)
{
    startAllowed();
    auto first = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    auto second = sender().send(PasteChord::shiftInsert, nullptr, [] { return true; });
    EXPECT_EQ(await(std::move(second)), Sending::sent);
    EXPECT_EQ(await(std::move(first)), Sending::sent);
    EXPECT_TRUE(areChords(
        mock().keys(), {{{control, true}, {v, true}, {v, false}, {control, false}},
                        {{shift, true}, {insert, true}, {insert, false}, {shift, false}}}));
}

class PortalKeySenderReadyTest : public PortalKeySenderTest
{
protected:
    /// Whether it is ready, after this time and no earlier.
    [[nodiscard]] bool isReadyAfter(std::chrono::milliseconds duration)
    {
        auto waiting = sender().ready();
        if (duration > 0ms) {
            EXPECT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
            m_clock.advance(duration - 1ms);
            settle();
            EXPECT_FALSE(waiting.isReady());
            m_clock.advance(1ms);
        }
        return await(std::move(waiting));
    }
};

TEST_F(PortalKeySenderReadyTest, WhereNothingIsKnownOfHeldKeysAMomentIsWaited)
{
    startAllowed();
    EXPECT_TRUE(isReadyAfter(100ms));
    sender().setHeldKeys(
        {.hotKeysUp =
             [] {
                 const LoopAnswer<bool> up(true);
                 return up.future();
             },
         .hadModifiers = {}});
    EXPECT_TRUE(isReadyAfter(100ms)) << "it was not one of the hot keys";
}

TEST_F(PortalKeySenderReadyTest, ModifiersThatThePanelSawAreWaitedForLonger)
{
    startAllowed();
    sender().setHeldKeys({.hotKeysUp = {}, .hadModifiers = [] { return true; }});
    EXPECT_TRUE(isReadyAfter(250ms));
}

TEST_F(PortalKeySenderReadyTest, TheHotKeyIsWaitedFor)
{
    startAllowed();
    for (const bool comesUp : {true, false}) {
        const LoopAnswer<bool> up(false);
        sender().setHeldKeys({.hotKeysUp = [up] { return up.future(); }, .hadModifiers = {}});
        auto waiting = sender().ready();
        settle();
        EXPECT_FALSE(waiting.isReady());
        up(comesUp);
        EXPECT_EQ(await(std::move(waiting)), comesUp);
    }
}

TEST_F(PortalKeySenderReadyTest, APortalThatDoesNotAnswerTakesNoKeys)
{
    startAllowed();
    mock().hangsAt = {u"Properties.Get"_s};
    auto waiting = sender().ready();
    m_clock.advance(100ms);
    const auto asked = mock().calls(u"Properties.Get"_s).size();
    ASSERT_TRUE(waitUntil([&] { return mock().calls(u"Properties.Get"_s).size() > asked; }));
    EXPECT_FALSE(waiting.isReady());
    m_clock.advance(300ms);
    EXPECT_FALSE(await(std::move(waiting)));
    EXPECT_THAT(mock().keys(), IsEmpty());
    mock().hangsAt.clear();
    EXPECT_TRUE(isReadyAfter(100ms));
}

TEST_F(PortalKeySenderReadyTest, ItMayEndWhileKeysAreWaitedFor)
{
    startAllowed();
    auto waiting = sender().ready();
    m_sender.reset();
    m_clock.advance(100ms);
    EXPECT_FALSE(await(std::move(waiting)));
}

// The target

TEST_F(PortalKeySenderTest, ATargetThatLeftWhileKeysWereLiftedGetsNone)
{
    startAllowed();
    const auto target = std::make_shared<FakePasteTarget>(u"Editor"_s);
    target->setActive(true);
    auto sending = sender().send(PasteChord::controlV, target, [] { return true; });
    target->setActive(false);
    EXPECT_EQ(await(std::move(sending)), Sending::notInFront);
    EXPECT_TRUE(areChords(mock().keys(), {{}}));
    EXPECT_TRUE(sender().isAllowed());
}

TEST_F(PortalKeySenderTest, WhatIsDownWhenTheTargetLeavesIsLetGo)
{
    startAllowed();
    const auto target = std::make_shared<FakePasteTarget>(u"Editor"_s);
    target->setActive(true);
    mock().keyArrived = [&](const Key& key) {
        if (key.second) {
            target->setActive(false);
        }
    };
    EXPECT_EQ(
        await(sender().send(PasteChord::controlShiftV, target, [] { return true; })),
        Sending::notInFront);
    EXPECT_TRUE(areChords(mock().keys(), {{{control, true}, {control, false}}}));
}

TEST_F(PortalKeySenderTest, AKeyboardWithoutKeysForAChordIsToldSo)
{
    startAllowed();
    m_keyOfV.reset();
    EXPECT_EQ(
        await(sender().send(PasteChord::controlV, nullptr, [] { return true; })), Sending::noKeys);
    EXPECT_THAT(mock().keys(), IsEmpty());
    EXPECT_TRUE(sender().isAllowed());
    EXPECT_EQ(
        await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })), Sending::sent);
}

TEST_F(PortalKeySenderTest, WithoutAccessNoKeyIsSent)
{
    startSenderAndWait();
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), IsEmpty());
}

TEST_F(PortalKeySenderTest, APortalThatDiesBetweenTheKeysHasNotTakenThem)
{
    startAllowed();
    mock().diesAtKey = 10;
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), SizeIs(10));
    EXPECT_TRUE(becomesForbidden());
}

TEST_F(PortalKeySenderTest, WhereNothingIsToBeLiftedTheChordCountsAlone)
{
    const LogCapture log;
    mock().refusesLifting = true;
    startAllowed();
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })));
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
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    mock().failsAt.clear();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
}

TEST_F(PortalKeySenderTest, APortalThatHangsHasNothingToPressWhenItWakes)
{
    startAllowed();
    mock().hangsAt = {u"RemoteDesktop.NotifyKeyboardKeycode"_s, u"RemoteDesktop.CreateSession"_s};
    auto sending = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    settle();
    EXPECT_FALSE(sending.isReady());
    m_clock.advance(3s);
    EXPECT_EQ(await(std::move(sending)), Sending::failed);
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    settle();
    const auto calls = mock().calls(u"RemoteDesktop.NotifyKeyboardKeycode"_s);
    EXPECT_THAT(calls, SizeIs(releases().size()));
    for (const auto& call : calls) {
        EXPECT_EQ(call.arguments.value(3), 0U) << "only released";
    }
}

TEST_F(PortalKeySenderTest, ItMayEndWhileKeysAreOnTheirWay)
{
    startAllowed();
    auto sending = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    m_sender.reset();
    static_cast<void>(await(std::move(sending)));
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }))
        << "with it goes what is still pressed";
}

} // namespace

} // namespace tessly::test
