#include "PasteService.h"

#include "FakeKeyEventPoster.h"
#include "FakePasteboard.h"
#include "FakeRunningApplication.h"
#include "LogCapture.h"
#include "PasteboardItems.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Result = PasteService::Result;

namespace {

constexpr Result copiedOnly = {.resultCase = Result::Case::copiedOnly};
constexpr Result replaced = {.resultCase = Result::Case::copiedOnly, .isReplaced = true};
constexpr Result pasted = {.resultCase = Result::Case::pasted};
constexpr Result failed = {.resultCase = Result::Case::failed};

class PasteServiceTest : public testing::Test
{
protected:
    void paste(int attempts)
    {
        whenDone(
            m_service->pasteWhenTargetIsReady(m_target, attempts, m_ticket),
            [this](Result result) { m_results.push_back(result); });
    }

    /// What still waits refers to the test.
    void TearDown() override
    {
        m_service.reset();
        m_clock.advance(1s);
    }

    /// Asks for a turn; what is noted once it is there.
    void takeTurn(const QString& name)
    {
        whenDone(m_service->turn(), [this, name](const PasteService::Turn& turn) {
            m_turnsTaken.append(name);
            m_turns[name] = turn;
        });
    }

    VirtualClock m_clock;
    FakePasteboard m_pasteboard;
    FakeKeyEventPoster m_keys;
    std::shared_ptr<FakeRunningApplication> m_target =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s);
    WriteTicket m_ticket;
    std::vector<Result> m_results;
    QStringList m_turnsTaken;
    std::map<QString, PasteService::Turn> m_turns;
    std::unique_ptr<PasteService> m_service =
        std::make_unique<PasteService>(m_pasteboard, m_keys, m_clock, PasteService::Hooks{});
};

// Writing

TEST_F(PasteServiceTest, AnImageWithATextIsWrittenAsOneItemWithTheMarker)
{
    const ClipPayload payload({.plainText = "Screenshot", .imagePNG = "png"});
    EXPECT_TRUE(m_service->write(payload, false));
    EXPECT_THAT(m_pasteboard.writes(), ElementsAre(pasteboardItems(payload)));
    EXPECT_THAT(m_pasteboard.ownItems(), SizeIs(1));
    const auto types = await(m_pasteboard.types(m_pasteboard.changeCount()));
    EXPECT_TRUE(types->contains(u"com.brackmoor.tessly.internal-origin"_s));
}

TEST_F(PasteServiceTest, AClipWithOnlyHTMLIsWrittenAsHTML)
{
    EXPECT_TRUE(m_service->write(ClipPayload({.html = "<b>"}), false));
    PasteboardItem item;
    item.html = "<b>";
    EXPECT_THAT(m_pasteboard.ownItems(), ElementsAre(item));
}

TEST_F(PasteServiceTest, FilesAreWrittenInOneWrite)
{
    EXPECT_TRUE(m_service->write(
        ClipPayload({.plainText = "a", .fileURLs = {"file:///a", "file:///b"}}), false));
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_THAT(m_pasteboard.ownItems(), SizeIs(2));
}

TEST_F(PasteServiceTest, PlainTextOnlyOfTwoFilesWritesTheirPaths)
{
    EXPECT_TRUE(m_service->write(ClipPayload({.fileURLs = {"file:///a", "file:///b"}}), true));
    PasteboardItem item;
    item.plainText = "/a\n/b";
    EXPECT_THAT(m_pasteboard.ownItems(), ElementsAre(item));
}

TEST_F(PasteServiceTest, PlainTextOnlyLeavesTheOtherFlavoursOut)
{
    EXPECT_TRUE(m_service->write(ClipPayload({.plainText = "a", .html = "<b>a"}), true));
    PasteboardItem item;
    item.plainText = "a";
    EXPECT_THAT(m_pasteboard.ownItems(), ElementsAre(item));
}

TEST_F(PasteServiceTest, WithNothingToWriteThePasteboardIsLeftAlone)
{
    m_pasteboard.copyText("before");
    const qint64 changeCount = m_pasteboard.changeCount();
    EXPECT_FALSE(m_service->write(ClipPayload({.imagePNG = "png"}), true));
    EXPECT_FALSE(m_service->write(ClipPayload({.fileURLs = {"no URL"}}), false));
    EXPECT_FALSE(m_service->write(ClipPayload(), false));
    EXPECT_EQ(m_pasteboard.changeCount(), changeCount);
}

TEST_F(PasteServiceTest, ARefusedWriteIsReported)
{
    m_pasteboard.refuseWrites();
    EXPECT_FALSE(m_service->write(ClipPayload({.plainText = "a"}), false));
}

// Pasting

TEST_F(PasteServiceTest, ATargetInFrontIsPastedIntoAfterASettlingTime)
{
    m_target->setActive(true);
    paste(8);
    m_clock.advance(59ms);
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_target));
    EXPECT_THAT(m_results, ElementsAre(pasted));
    EXPECT_EQ(m_target->activations(), 0);
    m_clock.advance(300ms);
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(PasteServiceTest, ATargetThatComesToTheFrontByTheThirdAttemptIsPastedInto)
{
    m_target->becomeActiveAfter(2);
    paste(8);
    m_clock.advance(159ms);
    EXPECT_THAT(m_results, IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(m_results, ElementsAre(pasted));
    EXPECT_EQ(m_target->activations(), 2);
}

TEST_F(PasteServiceTest, ATargetThatNeverComesIsGivenUpAfterEightAttempts)
{
    paste(8);
    m_clock.advance(399ms);
    EXPECT_THAT(m_results, IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
    EXPECT_EQ(m_target->activations(), 8);
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
}

TEST_F(PasteServiceTest, WithoutAttemptsATargetThatIsNotInFrontIsGivenUpAtOnce)
{
    paste(0);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
    EXPECT_EQ(m_target->activations(), 0);
}

TEST_F(PasteServiceTest, ATargetThatQuitBeforeIsGivenUpAtOnce)
{
    m_target->terminate();
    paste(8);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
}

TEST_F(PasteServiceTest, ATargetThatQuitsDuringTheWaitIsGivenUp)
{
    paste(8);
    m_clock.advance(50ms);
    m_target->terminate();
    m_clock.advance(50ms);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
}

TEST_F(PasteServiceTest, ATargetThatQuitsOrLosesTheFrontWhileItSettlesGetsNoKeys)
{
    m_target->setActive(true);
    paste(8);
    m_target->setActive(false);
    m_clock.advance(60ms);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
    m_target->setActive(true);
    paste(8);
    m_target->terminate();
    m_clock.advance(60ms);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly, copiedOnly));
    EXPECT_EQ(m_keys.posts(), 0);
}

TEST_F(PasteServiceTest, ATargetThatLosesTheFrontJustBeforeTheKeysIsGivenUp)
{
    m_keys.gate().hold();
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    m_target->setActive(false);
    m_keys.gate().open();
    m_clock.advance(0ms);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
}

TEST_F(PasteServiceTest, KeysThatCannotBeMadeAreAFailure)
{
    m_keys.breakKeys();
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    EXPECT_THAT(m_results, ElementsAre(failed));
}

TEST_F(PasteServiceTest, WhatAnotherProgramCopiedSinceIsNotPasted)
{
    m_keys.setPasteboard(&m_pasteboard);
    m_keys.gate().hold();
    m_ticket = m_service->write(ClipPayload({.plainText = "own"}), false);
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    m_pasteboard.copyText("a password");
    m_keys.gate().open();
    m_clock.advance(0ms);
    EXPECT_THAT(m_results, ElementsAre(replaced));
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
}

TEST_F(PasteServiceTest, OnlyWhatWasWrittenForThePasteIsPasted)
{
    m_keys.setPasteboard(&m_pasteboard);
    m_ticket = m_service->write(ClipPayload({.plainText = "first"}), false);
    static_cast<void>(m_service->write(ClipPayload({.plainText = "second"}), false));
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    EXPECT_THAT(m_results, ElementsAre(replaced));
}

TEST_F(PasteServiceTest, TheLogTellsWhyNoKeysWerePressed)
{
    const auto linesOfAPaste = [this] {
        const LogCapture log;
        paste(1);
        m_clock.advance(1s);
        std::vector<QString> lines;
        for (const auto& line : log.lines(u"com.brackmoor.tessly.PasteService"_s)) {
            lines.push_back(line.text);
        }
        return lines;
    };
    EXPECT_THAT(
        linesOfAPaste(),
        ElementsAre(u"No paste keys were pressed: the application did not come to the front."_s));
    m_target->setActive(true);
    EXPECT_THAT(linesOfAPaste(), IsEmpty());
    m_keys.replaceContent();
    EXPECT_THAT(
        linesOfAPaste(),
        ElementsAre(u"No paste keys were pressed: something else has been copied."_s));
    m_keys.breakKeys();
    EXPECT_THAT(linesOfAPaste(), ElementsAre(u"The paste keys could not be pressed."_s));
    m_target->terminate();
    EXPECT_THAT(
        linesOfAPaste(), ElementsAre(u"No paste keys were pressed: the application has ended."_s));
}

TEST_F(PasteServiceTest, APasteHasFailedOnceTheServiceIsGone)
{
    paste(8);
    m_service.reset();
    m_clock.advance(1s);
    EXPECT_THAT(m_results, ElementsAre(failed));
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
}

TEST_F(PasteServiceTest, APasteWhoseKeysArePressedIsReportedThoughTheServiceIsGone)
{
    m_keys.gate().hold();
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    m_service.reset();
    m_keys.gate().open();
    m_clock.advance(0ms);
    EXPECT_THAT(m_results, ElementsAre(pasted));
}

// Turns

TEST_F(PasteServiceTest, TurnsComeOneAfterAnotherInTheOrderOfTheCalls)
{
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s}) {
        takeTurn(name);
    }
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s}));
    m_clock.advance(10s);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s}));
    m_turns.erase(u"a"_s);
    m_clock.advance(0ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s, u"b"_s}));
    m_turns.erase(u"b"_s);
    m_clock.advance(0ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s, u"b"_s, u"c"_s}));
    m_turns.erase(u"c"_s);
    takeTurn(u"d"_s);
    EXPECT_EQ(m_turnsTaken.size(), 4);
}

TEST_F(PasteServiceTest, ATurnThatNobodyWantsAnyMoreHoldsUpNobody)
{
    takeTurn(u"a"_s);
    {
        const auto dropped = m_service->turn();
    }
    takeTurn(u"b"_s);
    m_turns.clear();
    m_clock.advance(0ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s, u"b"_s}));
    m_turns.clear();
    {
        const auto dropped = m_service->turn();
    }
    takeTurn(u"c"_s);
    EXPECT_EQ(m_turnsTaken.size(), 3);
}

TEST_F(PasteServiceTest, WhatWasPastedIsFetchedBeforeTheNextTurn)
{
    m_target->setActive(true);
    takeTurn(u"a"_s);
    paste(8);
    m_clock.advance(60ms);
    ASSERT_THAT(m_results, ElementsAre(pasted));
    m_turns.clear();
    takeTurn(u"b"_s);
    m_clock.advance(100ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s}));
    m_pasteboard.fetch();
    m_clock.advance(20ms);
    m_pasteboard.fetch();
    m_clock.advance(30ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s})) << "it may fetch still more";
    m_clock.advance(30ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s, u"b"_s}));
}

TEST_F(PasteServiceTest, WhatIsNotFetchedIsWaitedForNotLong)
{
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    takeTurn(u"b"_s);
    m_clock.advance(299ms);
    EXPECT_TRUE(m_turnsTaken.isEmpty());
    m_clock.advance(10ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"b"_s}));
}

TEST_F(PasteServiceTest, WhatWasFetchedBeforeTheKeysDoesNotCount)
{
    // Others fetch what was written, also while the user still holds a modifier.
    m_keys.setPasteboard(&m_pasteboard);
    m_ticket = m_service->write(ClipPayload({.plainText = "own"}), false);
    m_target->setActive(true);
    m_keys.gate().hold();
    paste(8);
    m_clock.advance(60ms);
    m_pasteboard.fetch();
    m_keys.gate().open();
    m_clock.advance(0ms);
    ASSERT_THAT(m_results, ElementsAre(pasted));
    takeTurn(u"b"_s);
    m_clock.advance(100ms);
    EXPECT_TRUE(m_turnsTaken.isEmpty());
}

TEST_F(PasteServiceTest, APasteThatPressedNoKeysIsNotWaitedFor)
{
    m_keys.breakKeys();
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    takeTurn(u"b"_s);
    EXPECT_EQ(m_turnsTaken, QStringList({u"b"_s}));
}

TEST_F(PasteServiceTest, ATurnMayOutliveTheService)
{
    takeTurn(u"a"_s);
    takeTurn(u"b"_s);
    m_service.reset();
    m_clock.advance(0ms);
    m_turns.clear();
    m_clock.advance(0ms);
    EXPECT_EQ(m_turnsTaken, QStringList({u"a"_s, u"b"_s})) << "nobody waits for ever";
}

// Access

TEST_F(PasteServiceTest, AccessIsThePostersUnlessAHookSaysOtherwise)
{
    m_keys.setAllowed(false);
    EXPECT_FALSE(m_service->checkAutomaticPasteAccess());
    EXPECT_FALSE(m_service->requestAutomaticPasteAccess());
    m_keys.setGrantsRequests(true);
    EXPECT_TRUE(m_service->requestAutomaticPasteAccess());
    EXPECT_TRUE(m_service->checkAutomaticPasteAccess());
    EXPECT_EQ(m_keys.accessRequests(), 2);

    const PasteService hooked(
        m_pasteboard, m_keys, m_clock,
        {.checkAutomaticPasteAccess = [] { return false; },
         .requestAutomaticPasteAccess = [] { return false; },
         .openSettingsURL =
             [](const QUrl& url) { return url == PasteService::automaticPasteSettingsURL; }});
    EXPECT_FALSE(hooked.checkAutomaticPasteAccess());
    EXPECT_FALSE(hooked.requestAutomaticPasteAccess());
    EXPECT_TRUE(hooked.openSettingsURL(PasteService::automaticPasteSettingsURL));
    EXPECT_FALSE(hooked.openSettingsURL(QUrl(u"https://example.org"_s)));
    EXPECT_EQ(m_keys.accessRequests(), 2);
}

TEST_F(PasteServiceTest, WithoutAHookNoSettingsPageOpens)
{
    EXPECT_FALSE(m_service->openSettingsURL(PasteService::automaticPasteSettingsURL));
}

TEST_F(PasteServiceTest, TheSettingsPageIsTheOneOfAccessibility)
{
    EXPECT_EQ(
        PasteService::automaticPasteSettingsURL.toString(),
        u"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"_s);
}

} // namespace
} // namespace tessly::test
