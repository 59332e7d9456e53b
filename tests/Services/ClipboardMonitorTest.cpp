#include "ClipboardMonitor.h"

#include "FakeImageConverter.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "PasteboardItems.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using AccessIssue = ClipboardMonitor::AccessIssue;
using SourceApplication = ClipboardMonitor::SourceApplication;
using Content = FakePasteboard::Content;
using What = FakePasteboard::Request::What;

namespace {

constexpr qint64 megabyte = 1'048'576;

struct Capture
{
    ClipPayload payload;
    std::optional<QString> name;
    std::optional<QString> bundleID;

    bool operator==(const Capture&) const = default;
};

class ClipboardMonitorTest : public testing::Test
{
protected:
    ClipboardMonitorTest() { makeMonitor(); }

    void makeMonitor()
    {
        m_monitor = std::make_unique<ClipboardMonitor>(
            ClipboardMonitor::Dependencies{m_pasteboard, m_settings, m_converter, m_clock},
            [this](
                ClipPayload payload, std::optional<QString> name, std::optional<QString> bundleID) {
                m_captures.push_back({std::move(payload), std::move(name), std::move(bundleID)});
            },
            [this](AccessIssue issue) { m_issues.push_back(issue); }, [this] { return m_front; });
    }

    void tick() { m_clock.advance(350ms); }
    /// Lets what was released go on, without time passing.
    void settle() { m_clock.advance(0ms); }

    [[nodiscard]] std::vector<QByteArray> texts() const
    {
        std::vector<QByteArray> texts;
        for (const Capture& capture : m_captures) {
            texts.push_back(capture.payload.plainText().value_or("(no text)"));
        }
        return texts;
    }

    static SourceApplication application(const QString& bundleID)
    {
        return {u"The "_s + bundleID, bundleID};
    }

    VirtualClock m_clock;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    std::optional<SourceApplication> m_front = application(u"org.example.Editor"_s);
    std::vector<Capture> m_captures;
    std::vector<AccessIssue> m_issues;
    std::unique_ptr<ClipboardMonitor> m_monitor;
};

ClipPayload text(const QByteArray& plainText)
{
    return ClipPayload({.plainText = plainText});
}

// Ticks

TEST_F(ClipboardMonitorTest, TheFirstCopyAfterTheStartIsRecordedWithItsSource)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    EXPECT_THAT(
        m_captures,
        ElementsAre(Capture{text("hello"), u"The org.example.Editor"_s, u"org.example.Editor"_s}));
}

TEST_F(ClipboardMonitorTest, ContentThatIsThereAtTheStartIsNeverRecorded)
{
    m_pasteboard.copyText("old");
    m_monitor->start();
    tick();
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

TEST_F(ClipboardMonitorTest, NothingHappensBeforeTheStart)
{
    m_pasteboard.copyText("hello");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(ClipboardMonitorTest, TicksComeEvery350Milliseconds)
{
    m_monitor->start();
    m_pasteboard.copyText("one");
    m_clock.advance(349ms);
    EXPECT_THAT(m_captures, IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(m_captures, SizeIs(1));
    m_pasteboard.copyText("two");
    m_clock.advance(350ms);
    EXPECT_THAT(m_captures, SizeIs(2));
}

TEST_F(ClipboardMonitorTest, StartingTwiceWatchesOnce)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    m_monitor->start();
    EXPECT_EQ(m_clock.pending(), 1U);
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "the second start must not take the copy for seen";
}

TEST_F(ClipboardMonitorTest, OneCopyIsRecordedOnce)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, OfTwoCopiesWithinOneTickTheLaterIsRecorded)
{
    m_monitor->start();
    m_pasteboard.copyText("one");
    m_pasteboard.copyText("two");
    tick();
    EXPECT_THAT(texts(), ElementsAre("two"));
}

TEST_F(ClipboardMonitorTest, ATickWithNothingNewAsksThePasteboardNothing)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    m_pasteboard.forgetRequests();
    m_clock.advance(60s);
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

// What speaks against recording

TEST_F(ClipboardMonitorTest, OwnWritesAreNotReadAndNotRecorded)
{
    m_monitor->start();
    ASSERT_TRUE(m_pasteboard.write(pasteboardItems(text("own"))));
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(ClipboardMonitorTest, ContentWithTheMarkerAmongItsTypesIsNotRecorded)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .extraTypes = {Pasteboard::markerType}});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(ClipboardMonitorTest, SensitiveContentIsNotReadAndNotRecorded)
{
    const QStringList types = {
        u"org.nspasteboard.TransientType"_s,
        u"org.nspasteboard.ConcealedType"_s,
        u"org.nspasteboard.AutoGeneratedType"_s,
        u"com.agilebits.onepassword"_s,
        u"com.1password.pasteboard"_s,
        u"net.antelle.keeweb"_s,
        u"de.petermaurer.TransientPasteboardType"_s,
    };
    m_monitor->start();
    for (const QString& type : types) {
        m_pasteboard.copy({.plainText = "secret", .extraTypes = {type}});
        tick();
        EXPECT_THAT(m_captures, IsEmpty()) << type.toStdString();
        EXPECT_EQ(m_pasteboard.contentRequests(), 0U) << type.toStdString();
        EXPECT_THAT(m_pasteboard.keeps(), IsEmpty()) << type.toStdString();
    }
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "the same text without the type is recorded";
}

TEST_F(ClipboardMonitorTest, SensitiveTypesAreComparedWithCase)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .extraTypes = {u"ORG.nspasteboard.ConcealedType"_s}});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, CopiesFromAnIgnoredApplicationAreNotRead)
{
    m_monitor->start();
    m_front = application(u"com.1Password.1Password"_s);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(ClipboardMonitorTest, ACopyMadeJustBeforeLeavingAnIgnoredApplicationIsNotRead)
{
    m_front = application(u"com.1password.1password"_s);
    m_monitor->start();
    m_pasteboard.copyText("secret");
    m_front = application(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);

    m_pasteboard.copyText("harmless");
    tick();
    EXPECT_THAT(texts(), ElementsAre("harmless")) << "a tick later it is out of sight";
}

TEST_F(ClipboardMonitorTest, ThePreviousApplicationIsNotedOnEveryTick)
{
    m_monitor->start();
    m_front = application(u"com.1password.1password"_s);
    tick();
    m_front = application(u"org.example.Editor"_s);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(ClipboardMonitorTest, WithAnEmptyIgnoreListNothingIsIgnored)
{
    m_settings.setIgnoredBundleIDsText({});
    m_front = application(u"com.1password.1password"_s);
    m_monitor->start();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, ApplicationsWithoutAnIdentifierAreNotIgnored)
{
    m_settings.setIgnoredBundleIDsText(u"nobody"_s);
    m_front = SourceApplication{u"Nobody"_s, std::nullopt};
    m_monitor->start();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), u"Nobody"_s, std::nullopt}));
}

TEST_F(ClipboardMonitorTest, ContentWhoseTypesCannotBeHadIsDroppedAndTheNextCopyRecorded)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "lost", .hidesTypes = true});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
    m_pasteboard.copyText("next");
    tick();
    EXPECT_THAT(texts(), ElementsAre("next"));
}

// The source

TEST_F(ClipboardMonitorTest, WithNothingInFrontACaptureHasNoSource)
{
    m_monitor->start();
    m_front.reset();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), std::nullopt, std::nullopt}));
}

TEST_F(ClipboardMonitorTest, ACopyInTheProgramsOwnWindowIsCreditedToTheApplicationBefore)
{
    m_monitor->start();
    m_front = application(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Editor"_s);
    EXPECT_EQ(m_captures.at(0).name, u"The org.example.Editor"_s);
}

TEST_F(ClipboardMonitorTest, ACopyInTheProgramsOwnWindowWithNothingBeforeHasNoSource)
{
    m_front.reset();
    m_monitor->start();
    m_front = application(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), std::nullopt, std::nullopt}));
}

TEST_F(ClipboardMonitorTest, TheProgramsOwnIdentifierIsComparedWithCase)
{
    m_monitor->start();
    m_front = application(u"com.brackmoor.Tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"com.brackmoor.Tessly"_s);
}

TEST_F(ClipboardMonitorTest, TheSourceIsTheApplicationInFrontAtTheTickNotWhenReadingEnds)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_front = application(u"com.1password.1password"_s);
    m_pasteboard.gate().open();
    settle();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Editor"_s);
}

// Reading

TEST_F(ClipboardMonitorTest, TypesAreAskedFirstThenTheFlavoursInTheirOrder)
{
    m_monitor->start();
    const qint64 change = m_pasteboard.copyText("12345");
    tick();
    const qint64 limit = 25 * megabyte;
    using Request = FakePasteboard::Request;
    EXPECT_THAT(
        m_pasteboard.requests(),
        ElementsAre(
            Request{What::types, change}, Request{What::flavour, change, Flavour::plainText, limit},
            Request{What::flavour, change, Flavour::rtf, limit - 5},
            Request{What::flavour, change, Flavour::html, limit - 5},
            Request{What::fileURLs, change, Flavour::plainText, limit - 5},
            Request{What::flavour, change, Flavour::png, limit - 5},
            Request{What::flavour, change, Flavour::otherImage, limit - 5}));
}

TEST_F(ClipboardMonitorTest, AllTextFlavoursAndTheImageAreKept)
{
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "text",
         .rtf = "{\\rtf1}",
         .html = "<b>",
         .png = FakeImageConverter::png("1"),
         .otherImage = FakeImageConverter::image("2")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload, ClipPayload(
                                      {.plainText = "text",
                                       .rtf = "{\\rtf1}",
                                       .html = "<b>",
                                       .imagePNG = FakeImageConverter::png("1")}));
    EXPECT_EQ(m_pasteboard.requests(Flavour::otherImage), 0U);
    EXPECT_EQ(m_converter.conversions(), 0U);
}

TEST_F(ClipboardMonitorTest, FilesAreKeptWithoutAnImage)
{
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "b.txt",
         .png = FakeImageConverter::png("icon"),
         .fileURLs = {"file:///tmp/b.txt", "file:///tmp/a%20b"}});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload(
            {.plainText = "b.txt", .fileURLs = {"file:///tmp/b.txt", "file:///tmp/a%20b"}}));
    EXPECT_EQ(m_pasteboard.requests(Flavour::png), 0U);
}

TEST_F(ClipboardMonitorTest, WithFileCaptureOffOnlyTheOtherFlavoursOfAFileCopyAreKept)
{
    m_settings.setCaptureFiles(false);
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "b.txt",
         .png = FakeImageConverter::png("icon"),
         .fileURLs = {"file:///tmp/b.txt"}});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload({.plainText = "b.txt", .imagePNG = FakeImageConverter::png("icon")}));
    EXPECT_EQ(m_pasteboard.fileURLRequests(), 0U);
}

TEST_F(ClipboardMonitorTest, WithImageCaptureOffNoImageIsRead)
{
    m_settings.setCaptureImages(false);
    m_monitor->start();
    m_pasteboard.copy({.png = FakeImageConverter::png("1")});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.requests(Flavour::png), 0U);
    EXPECT_EQ(m_pasteboard.requests(Flavour::otherImage), 0U);
    m_pasteboard.copy({.html = "<b>", .png = FakeImageConverter::png("1")});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, ClipPayload({.html = "<b>"}));
}

TEST_F(ClipboardMonitorTest, AnotherImageFormatIsConverted)
{
    m_monitor->start();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("photo")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload, ClipPayload({.imagePNG = FakeImageConverter::png("photo")}));
}

TEST_F(ClipboardMonitorTest, APNGThatIsRefusedFallsBackToAnotherFormat)
{
    m_monitor->start();
    m_pasteboard.copy(
        {.png = "not a PNG",
         .otherImage = FakeImageConverter::image("photo"),
         .refused = {Flavour::png}});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload, ClipPayload({.imagePNG = FakeImageConverter::png("photo")}));
}

TEST_F(ClipboardMonitorTest, AnImageThatCannotBeDecodedContributesNothing)
{
    m_monitor->start();
    m_pasteboard.copy({.otherImage = "broken"});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    m_pasteboard.copy({.plainText = "caption", .otherImage = "broken"});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("caption"));
}

TEST_F(ClipboardMonitorTest, AFlavourThatIsRefusedContributesNothing)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .rtf = "{}", .refused = {Flavour::rtf}});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("text"));
}

TEST_F(ClipboardMonitorTest, WhatWasReadBeforeAnOwnerHungIsRecorded)
{
    m_monitor->start();
    for (const Flavour flavour : {Flavour::rtf, Flavour::html, Flavour::png}) {
        m_pasteboard.copy(
            {.plainText = "text",
             .rtf = "{}",
             .html = "<b>",
             .png = FakeImageConverter::png("1"),
             .hanging = {flavour}});
        tick();
    }
    ASSERT_THAT(m_captures, SizeIs(3));
    EXPECT_EQ(m_captures.at(0).payload, text("text"));
    EXPECT_EQ(m_captures.at(1).payload, ClipPayload({.plainText = "text", .rtf = "{}"}));
    EXPECT_EQ(
        m_captures.at(2).payload, ClipPayload({.plainText = "text", .rtf = "{}", .html = "<b>"}));
}

TEST_F(ClipboardMonitorTest, ContentWhoseFirstFlavourIsUnreadableIsDroppedAndTheNextCopyRecorded)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .html = "<b>", .hanging = {Flavour::plainText}});
    tick();
    m_pasteboard.copy(
        {.otherImage = FakeImageConverter::image("1"), .hanging = {Flavour::otherImage}});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.keeps(), IsEmpty());
    m_pasteboard.copyText("next");
    tick();
    EXPECT_THAT(texts(), ElementsAre("next"));
}

TEST_F(ClipboardMonitorTest, ContentWhoseOwnerLeavesDuringTheReadIsDropped)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_pasteboard.gate().releaseOne();
    settle();
    m_pasteboard.ownerLeaves();
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(ClipboardMonitorTest, EmptyContentIsDropped)
{
    m_monitor->start();
    m_pasteboard.copyText("");
    tick();
    m_pasteboard.copy({.extraTypes = {u"application/x-odd"_s}});
    tick();
    m_pasteboard.clear();
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.keeps(), IsEmpty());
}

TEST_F(ClipboardMonitorTest, BlanksAndEmptyBuffersAreContent)
{
    m_monitor->start();
    m_pasteboard.copyText("  \n ");
    tick();
    m_pasteboard.copy({.rtf = ""});
    tick();
    EXPECT_THAT(m_captures, SizeIs(2));
}

// The size limit

TEST_F(ClipboardMonitorTest, ContentOfExactlyTheLimitIsRecorded)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copyText(QByteArray(megabyte, 'a'));
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
    m_pasteboard.copy(
        {.plainText = QByteArray(megabyte / 2, 'a'),
         .html = QByteArray(megabyte / 2 - 10, 'b'),
         .fileURLs = {"file:///a", "f"}});
    tick();
    ASSERT_THAT(m_captures, SizeIs(2));
    EXPECT_EQ(m_captures.at(1).payload.byteCount(), megabyte);
}

TEST_F(ClipboardMonitorTest, ContentOverTheLimitIsDropped)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copyText(QByteArray(megabyte + 1, 'a'));
    tick();
    m_pasteboard.copy(
        {.plainText = QByteArray(megabyte / 2, 'a'),
         .html = QByteArray(megabyte / 2, 'b'),
         .fileURLs = {"f"}});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.keeps(), IsEmpty());
}

TEST_F(ClipboardMonitorTest, AnImageOf30MegabytesIsOverTheDefaultLimit)
{
    m_monitor->start();
    m_pasteboard.copy({.png = QByteArray(30 * megabyte, 'a')});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    m_pasteboard.copy({.png = QByteArray(25 * megabyte, 'a')});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, NothingMoreIsReadOnceTheLimitIsPassed)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copy({.plainText = QByteArray(megabyte + 1, 'a'), .html = "<b>"});
    tick();
    EXPECT_EQ(m_pasteboard.contentRequests(), 1U);
}

TEST_F(ClipboardMonitorTest, ThePNGOfAConvertedImageCountsNotTheOriginal)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    const qint64 signature = FakeImageConverter::png({}).size();
    m_pasteboard.copy(
        {.otherImage = FakeImageConverter::image(QByteArray(megabyte - signature, 'a'))});
    tick();
    ASSERT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_captures.at(0).payload.byteCount(), megabyte);
    // The fake's images have a shorter prefix than its PNGs: this one still may be read.
    m_pasteboard.copy(
        {.otherImage = FakeImageConverter::image(QByteArray(megabyte - signature + 1, 'a'))});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_converter.conversions(), 2U);
}

TEST_F(ClipboardMonitorTest, ALimitOutOfRangeIsClamped)
{
    const auto limitAskedFor = [this] {
        m_pasteboard.forgetRequests();
        m_pasteboard.copyText({});
        tick();
        return m_pasteboard.requests().at(1).byteLimit;
    };
    m_monitor->start();
    m_settings.setMaxItemSizeMB(0);
    EXPECT_EQ(limitAskedFor(), megabyte);
    m_settings.setMaxItemSizeMB(-7);
    EXPECT_EQ(limitAskedFor(), megabyte);
    m_settings.setMaxItemSizeMB(1000);
    EXPECT_EQ(limitAskedFor(), 250 * megabyte);
}

// Pausing and stopping

TEST_F(ClipboardMonitorTest, WhilePausedNothingIsAskedAndNothingIsRecordedLater)
{
    m_monitor->start();
    m_monitor->togglePaused();
    EXPECT_TRUE(m_monitor->isPaused());
    m_pasteboard.copyText("one");
    tick();
    m_pasteboard.copyText("two");
    m_monitor->togglePaused();
    EXPECT_FALSE(m_monitor->isPaused());
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
    m_pasteboard.copyText("three");
    tick();
    EXPECT_THAT(texts(), ElementsAre("three"));
}

TEST_F(ClipboardMonitorTest, ResumingLooksAtTheApplicationInFrontAnew)
{
    m_front = application(u"com.1password.1password"_s);
    m_monitor->start();
    m_monitor->togglePaused();
    m_front = application(u"org.example.Editor"_s);
    m_monitor->togglePaused();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, PausingIsTold)
{
    const QSignalSpy spy(m_monitor.get(), &ClipboardMonitor::isPausedChanged);
    m_monitor->togglePaused();
    m_monitor->togglePaused();
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(ClipboardMonitorTest, WhatIsBeingReadWhenTheUserPausesIsNotRecorded)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_pasteboard.gate().releaseOne();
    settle();
    m_monitor->togglePaused();
    const std::size_t requests = m_pasteboard.requests().size();
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.requests().size(), requests) << "nor is any more of it read";
    EXPECT_THAT(m_pasteboard.keeps(), IsEmpty());
}

TEST_F(ClipboardMonitorTest, ResumingDoesNotRecordWhatWasBeingReadBefore)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_monitor->togglePaused();
    m_monitor->togglePaused();
    m_pasteboard.gate().open();
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(ClipboardMonitorTest, StoppingEndsTheTicksAndWhatIsBeingRead)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_monitor->stop();
    EXPECT_EQ(m_clock.pending(), 0U);
    m_pasteboard.gate().open();
    settle();
    m_pasteboard.copyText("later");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(ClipboardMonitorTest, AMonitorThatGoesDuringAReadRecordsNothing)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    m_monitor.reset();
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(ClipboardMonitorTest, AMonitorThatGoesDuringAConversionRecordsNothing)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("1")});
    tick();
    ASSERT_EQ(m_converter.conversions(), 1U);
    m_monitor.reset();
    m_converter.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
}

// Overtaking

TEST_F(ClipboardMonitorTest, ANewerCopyEndsTheReadOfAnOlderOne)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("older");
    tick();
    m_pasteboard.gate().releaseOne();
    settle();
    m_pasteboard.copyText("newer");
    m_pasteboard.gate().open();
    tick();
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(ClipboardMonitorTest, AnImageThatIsStillBeingConvertedWhenANewerCopyIsTakenUpIsDropped)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("older")});
    tick();
    m_pasteboard.copyText("newer");
    tick();
    m_converter.gate().open();
    settle();
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(ClipboardMonitorTest, AnImageWhoseConversionEndsBeforeTheNewerCopyIsTakenUpIsRecordedFirst)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("older")});
    tick();
    m_pasteboard.copyText("newer");
    m_converter.gate().open();
    tick();
    EXPECT_THAT(texts(), ElementsAre("(no text)", "newer"));
}

TEST_F(ClipboardMonitorTest, ASlowReadIsRecordedHoweverManyTicksItTakes)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("slow");
    for (int i = 0; i < 20; ++i) {
        tick();
        m_pasteboard.gate().releaseOne();
    }
    EXPECT_THAT(texts(), ElementsAre("slow"));
    EXPECT_EQ(m_pasteboard.typesRequests(), 1U);
}

// Content that outlives its owner

TEST_F(ClipboardMonitorTest, RecordedContentIsOfferedAgainWhenItsOwnerLeaves)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .html = "<b>"});
    tick();
    m_pasteboard.ownerLeaves();
    EXPECT_EQ(
        m_pasteboard.ownItems(),
        pasteboardItems(ClipPayload({.plainText = "text", .html = "<b>"})));
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "the offer carries the marker";
}

TEST_F(ClipboardMonitorTest, ContentOfAnOwnerThatServesOneReadIsRecordedAndOfferedAgain)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .leavesAfterOneRead = true});
    tick();
    EXPECT_THAT(texts(), ElementsAre("text"));
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(text("text")));
}

TEST_F(ClipboardMonitorTest, ContentThatWasSkippedIsNotOfferedAgain)
{
    m_monitor->start();
    m_pasteboard.copyText("recorded");
    tick();
    m_pasteboard.copy({.plainText = "secret", .extraTypes = {Pasteboard::concealedType}});
    tick();
    m_pasteboard.ownerLeaves();
    tick();
    EXPECT_THAT(m_pasteboard.keeps(), SizeIs(1));
    EXPECT_FALSE(m_pasteboard.isOwn());
}

// Restricted access

TEST_F(ClipboardMonitorTest, ARestrictionIsReportedAtTheFirstChangeAndOnlyOnce)
{
    m_monitor->start();
    m_pasteboard.setAccess(PasteboardAccess::askEveryTime);
    tick();
    EXPECT_THAT(m_issues, IsEmpty());
    m_pasteboard.copyText("one");
    tick();
    tick();
    m_pasteboard.copyText("two");
    tick();
    EXPECT_THAT(m_issues, ElementsAre(AccessIssue::askEveryTime));
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

TEST_F(ClipboardMonitorTest, AnotherRestrictionIsReportedAnew)
{
    m_monitor->start();
    for (const PasteboardAccess access :
         {PasteboardAccess::askEveryTime, PasteboardAccess::denied, PasteboardAccess::denied,
          PasteboardAccess::available, PasteboardAccess::denied}) {
        m_pasteboard.setAccess(access);
        m_pasteboard.copyText("text");
        tick();
    }
    EXPECT_THAT(
        m_issues, ElementsAre(AccessIssue::askEveryTime, AccessIssue::denied, AccessIssue::denied));
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(ClipboardMonitorTest, ACopyThatMayNotBeReadStillOvertakesAnOlderOne)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("older")});
    tick();
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_pasteboard.copyText("newer");
    tick();
    m_converter.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(ClipboardMonitorTest, NoRestrictionIsReportedWhilePaused)
{
    m_monitor->start();
    m_monitor->togglePaused();
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_issues, IsEmpty());
}

} // namespace
} // namespace tessly::test
