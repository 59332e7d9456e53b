#include "PasteService.h"

#include "FakeKeyEventPoster.h"
#include "FakePasteboard.h"
#include "FakeRunningApplication.h"
#include "PasteboardItems.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Result = PasteService::Result;

namespace {

constexpr Result copiedOnly = {Result::Case::copiedOnly, false};
constexpr Result pasted = {Result::Case::pasted, false};
constexpr Result failed = {Result::Case::failed, false};

class PasteServiceTest : public testing::Test
{
protected:
    void paste(int attempts)
    {
        m_service->pasteWhenTargetIsReady(
            m_target, attempts, [this](Result result) { m_results.push_back(result); });
    }

    VirtualClock m_clock;
    FakePasteboard m_pasteboard;
    FakeKeyEventPoster m_keys;
    std::shared_ptr<FakeRunningApplication> m_target =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s);
    std::vector<Result> m_results;
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

TEST_F(PasteServiceTest, TwoPastesRunBesideEachOther)
{
    m_target->setActive(true);
    paste(8);
    m_clock.advance(30ms);
    paste(8);
    m_clock.advance(60ms);
    EXPECT_THAT(m_results, ElementsAre(pasted, pasted));
}

TEST_F(PasteServiceTest, NothingHappensOnceTheServiceIsGone)
{
    paste(8);
    m_service.reset();
    EXPECT_EQ(m_clock.pending(), 0U);
    m_clock.advance(1s);
    EXPECT_THAT(m_results, IsEmpty());
}

TEST_F(PasteServiceTest, NothingIsReportedOnceTheServiceIsGone)
{
    m_keys.gate().hold();
    m_target->setActive(true);
    paste(8);
    m_clock.advance(60ms);
    m_service.reset();
    m_keys.gate().open();
    m_clock.advance(0ms);
    EXPECT_THAT(m_results, IsEmpty());
}

TEST_F(PasteServiceTest, ACompletionMayEndTheService)
{
    m_service->pasteWhenTargetIsReady(m_target, 1, [this](Result result) {
        m_results.push_back(result);
        m_service.reset();
    });
    m_clock.advance(1s);
    EXPECT_THAT(m_results, ElementsAre(copiedOnly));
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
