#include "ClipboardMonitor.h"

#include "FakeImageConverter.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "LogCapture.h"
#include "PasteboardItems.h"
#include "TestSupport.h"
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

enum class Desktop { notifies, isPolled };

class MonitorTest : public testing::Test
{
protected:
    explicit MonitorTest(Desktop desktop)
    {
        if (desktop == Desktop::isPolled) {
            m_pasteboard.stopNotifying();
        }
        makeMonitor();
    }

    void makeMonitor()
    {
        m_monitor = std::make_unique<ClipboardMonitor>(
            ClipboardMonitor::Dependencies{
                m_pasteboard, m_settings, m_converter, m_workspace, m_clock},
            [this](
                ClipPayload payload, std::optional<QString> name, std::optional<QString> bundleID) {
                m_captures.push_back({std::move(payload), std::move(name), std::move(bundleID)});
            },
            [this](AccessIssue issue) { m_issues.push_back(issue); });
    }

    /// Long enough for a change to be noticed and read on any desktop.
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

    /// Brings an application to the front; its name is made of its id.
    void setFront(const QString& bundleID)
    {
        m_workspace.setFrontmost(
            std::make_shared<FakeRunningApplication>(bundleID, u"The "_s + bundleID));
    }

    /// Begins with an application in front that has been there for long.
    void SetUp() override
    {
        setFront(u"org.example.Editor"_s);
        m_clock.advance(1h);
    }

    VirtualClock m_clock;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace{&m_clock};
    std::vector<Capture> m_captures;
    std::vector<AccessIssue> m_issues;
    std::unique_ptr<ClipboardMonitor> m_monitor;
};

/// What holds on every desktop.
class ClipboardMonitorTest : public MonitorTest, public testing::WithParamInterface<Desktop>
{
protected:
    ClipboardMonitorTest()
        : MonitorTest(GetParam())
    {
    }
};

INSTANTIATE_TEST_SUITE_P(
    Desktops, ClipboardMonitorTest, testing::Values(Desktop::notifies, Desktop::isPolled),
    [](const auto& test) {
        return test.param == Desktop::notifies ? "ThatNotifies" : "ThatIsPolled";
    });

/// A desktop that tells when the clipboard changes.
class NotifiedMonitorTest : public MonitorTest
{
protected:
    NotifiedMonitorTest()
        : MonitorTest(Desktop::notifies)
    {
    }
};

/// One that does not.
class PolledMonitorTest : public MonitorTest
{
protected:
    PolledMonitorTest()
        : MonitorTest(Desktop::isPolled)
    {
    }
};

ClipPayload text(const QByteArray& plainText)
{
    return ClipPayload({.plainText = plainText});
}

// Ticks

TEST_P(ClipboardMonitorTest, TheFirstCopyAfterTheStartIsRecordedWithItsSource)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    EXPECT_THAT(
        m_captures,
        ElementsAre(Capture{text("hello"), u"The org.example.Editor"_s, u"org.example.Editor"_s}));
}

TEST_P(ClipboardMonitorTest, ContentThatIsThereAtTheStartIsNeverRecorded)
{
    m_pasteboard.copyText("old");
    m_monitor->start();
    tick();
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

TEST_P(ClipboardMonitorTest, NothingHappensBeforeTheStart)
{
    m_pasteboard.copyText("hello");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(PolledMonitorTest, TicksComeEvery350Milliseconds)
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

TEST_P(ClipboardMonitorTest, StartingTwiceWatchesOnce)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    m_monitor->start();
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "the second start must not take the copy for seen";
}

TEST_P(ClipboardMonitorTest, OneCopyIsRecordedOnce)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, OfTwoCopiesWithinOneTickTheLaterIsRecorded)
{
    m_monitor->start();
    m_pasteboard.copyText("one");
    m_pasteboard.copyText("two");
    tick();
    EXPECT_THAT(texts(), ElementsAre("two"));
}

TEST_P(ClipboardMonitorTest, ATickWithNothingNewAsksThePasteboardNothing)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    tick();
    m_pasteboard.forgetRequests();
    m_clock.advance(60s);
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

// What speaks against recording

TEST_P(ClipboardMonitorTest, OwnWritesAreNotReadAndNotRecorded)
{
    m_monitor->start();
    ASSERT_TRUE(m_pasteboard.write(pasteboardItems(text("own"))));
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_P(ClipboardMonitorTest, ContentWithTheMarkerAmongItsTypesIsNotRecorded)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .extraTypes = {Pasteboard::markerType}});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_P(ClipboardMonitorTest, SensitiveContentIsNotReadAndNotRecorded)
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

TEST_P(ClipboardMonitorTest, SensitiveTypesAreComparedWithCase)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .extraTypes = {u"ORG.nspasteboard.ConcealedType"_s}});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, CopiesFromAnIgnoredApplicationAreNotRead)
{
    m_monitor->start();
    setFront(u"com.1Password.1Password"_s);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_P(ClipboardMonitorTest, ACopyMadeJustBeforeLeavingAnIgnoredApplicationIsNotRead)
{
    setFront(u"com.1password.1password"_s);
    m_monitor->start();
    m_pasteboard.copyText("secret");
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);

    m_pasteboard.copyText("harmless");
    tick();
    EXPECT_THAT(texts(), ElementsAre("harmless")) << "a tick later it is out of sight";
}

TEST_P(ClipboardMonitorTest, ThePreviousApplicationIsNotedOnEveryTick)
{
    m_monitor->start();
    setFront(u"com.1password.1password"_s);
    tick();
    setFront(u"org.example.Editor"_s);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_P(ClipboardMonitorTest, WithAnEmptyIgnoreListNothingIsIgnored)
{
    m_settings.setIgnoredBundleIDsText({});
    setFront(u"com.1password.1password"_s);
    m_monitor->start();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, ApplicationsWithoutAnIdentifierAreNotIgnored)
{
    m_settings.setIgnoredBundleIDsText(u"nobody"_s);
    m_workspace.setFrontmost(std::make_shared<FakeRunningApplication>(std::nullopt, u"Nobody"_s));
    m_monitor->start();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), u"Nobody"_s, std::nullopt}));
}

TEST_P(ClipboardMonitorTest, ContentWhoseTypesCannotBeHadIsDroppedAndTheNextCopyRecorded)
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

TEST_P(ClipboardMonitorTest, WithNothingInFrontACaptureHasNoSource)
{
    m_monitor->start();
    m_workspace.setFrontmost(nullptr);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), std::nullopt, std::nullopt}));
}

TEST_P(ClipboardMonitorTest, ACopyInTheProgramsOwnWindowIsCreditedToTheApplicationBefore)
{
    m_monitor->start();
    setFront(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Editor"_s);
    EXPECT_EQ(m_captures.at(0).name, u"The org.example.Editor"_s);
}

TEST_P(ClipboardMonitorTest, ACopyInTheProgramsOwnWindowWithNothingBeforeHasNoSource)
{
    m_workspace.setFrontmost(nullptr);
    m_clock.advance(1s);
    m_monitor->start();
    setFront(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, ElementsAre(Capture{text("text"), std::nullopt, std::nullopt}));
}

TEST_P(ClipboardMonitorTest, TheProgramsOwnIdentifierIsComparedWithCase)
{
    m_monitor->start();
    setFront(u"com.brackmoor.Tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"com.brackmoor.Tessly"_s);
}

TEST_P(ClipboardMonitorTest, TheSourceIsTheApplicationInFrontAtTheTickNotWhenReadingEnds)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    setFront(u"com.1password.1password"_s);
    m_pasteboard.gate().open();
    settle();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Editor"_s);
}

// Reading

TEST_P(ClipboardMonitorTest, TypesAreAskedFirstThenTheFlavoursInTheirOrder)
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
            Request{What::flavour, change, Flavour::otherImage, 4 * limit}));
}

TEST_P(ClipboardMonitorTest, AllTextFlavoursAreKept)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .rtf = "{\\rtf1}", .html = "<b>"});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload({.plainText = "text", .rtf = "{\\rtf1}", .html = "<b>"}));
}

TEST_P(ClipboardMonitorTest, TheImageOfABrowserOrAScreenshotToolIsKeptWithItsText)
{
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "text",
         .html = "<img>",
         .png = FakeImageConverter::png("1"),
         .otherImage = FakeImageConverter::image("2")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload(
            {.plainText = "text", .html = "<img>", .imagePNG = FakeImageConverter::png("1")}));
    EXPECT_EQ(m_pasteboard.requests(Flavour::otherImage), 0U);
    EXPECT_EQ(m_converter.conversions(), 0U);
    m_pasteboard.copy({.rtf = "{\\rtf1}", .png = FakeImageConverter::png("chart")});
    tick();
    EXPECT_EQ(m_captures.at(1).payload.imagePNG(), FakeImageConverter::png("chart"));
}

TEST_P(ClipboardMonitorTest, ThePictureThatASpreadsheetOffersOfItsCellsIsNotRead)
{
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "1\t2",
         .rtf = "{\\rtf1}",
         .html = "<table>",
         .png = FakeImageConverter::png("cells"),
         .otherImage = FakeImageConverter::image("cells")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload({.plainText = "1\t2", .rtf = "{\\rtf1}", .html = "<table>"}));
    EXPECT_EQ(m_pasteboard.requests(Flavour::png), 0U);
    EXPECT_EQ(m_pasteboard.requests(Flavour::otherImage), 0U);
}

TEST_P(ClipboardMonitorTest, FilesAreKeptWithoutAnImage)
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

TEST_P(ClipboardMonitorTest, WithFileCaptureOffOnlyTheOtherFlavoursOfAFileCopyAreKept)
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

TEST_P(ClipboardMonitorTest, WithImageCaptureOffNoImageIsRead)
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

TEST_P(ClipboardMonitorTest, AnotherImageFormatIsConverted)
{
    m_monitor->start();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("photo")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload, ClipPayload({.imagePNG = FakeImageConverter::png("photo")}));
}

TEST_P(ClipboardMonitorTest, APNGThatIsRefusedFallsBackToAnotherFormat)
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

TEST_P(ClipboardMonitorTest, AnImageThatCannotBeDecodedContributesNothing)
{
    m_monitor->start();
    m_pasteboard.copy({.otherImage = "broken"});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    m_pasteboard.copy({.plainText = "caption", .otherImage = "broken"});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("caption"));
}

TEST_P(ClipboardMonitorTest, AFlavourThatIsRefusedContributesNothing)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .rtf = "{}", .refused = {Flavour::rtf}});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("text"));
}

TEST_P(ClipboardMonitorTest, WhatWasReadBeforeAnOwnerHungIsRecorded)
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

TEST_P(ClipboardMonitorTest, ContentWhoseFirstFlavourIsUnreadableIsDroppedAndTheNextCopyRecorded)
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

TEST_P(ClipboardMonitorTest, ContentWhoseOwnerLeavesDuringTheReadIsDropped)
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

TEST_P(ClipboardMonitorTest, EmptyContentIsDropped)
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

TEST_P(ClipboardMonitorTest, BlanksAndEmptyBuffersAreContent)
{
    m_monitor->start();
    m_pasteboard.copyText("  \n ");
    tick();
    m_pasteboard.copy({.rtf = ""});
    tick();
    EXPECT_THAT(m_captures, SizeIs(2));
}

// The size limit

TEST_P(ClipboardMonitorTest, ContentOfExactlyTheLimitIsRecorded)
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

TEST_P(ClipboardMonitorTest, ContentOverTheLimitIsDropped)
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

TEST_P(ClipboardMonitorTest, AnImageOf30MegabytesIsOverTheDefaultLimit)
{
    m_monitor->start();
    m_pasteboard.copy({.png = QByteArray(30 * megabyte, 'a')});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    m_pasteboard.copy({.png = QByteArray(25 * megabyte, 'a')});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, NothingMoreIsReadOnceTheLimitIsPassed)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copy({.plainText = QByteArray(megabyte + 1, 'a'), .html = "<b>"});
    tick();
    EXPECT_EQ(m_pasteboard.contentRequests(), 1U);
}

TEST_P(ClipboardMonitorTest, ThePNGOfAConvertedImageCountsNotTheOriginal)
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

TEST_P(ClipboardMonitorTest, ALimitOutOfRangeIsClamped)
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

TEST_P(ClipboardMonitorTest, WhilePausedNothingIsAskedAndNothingIsRecordedLater)
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

TEST_P(ClipboardMonitorTest, WhatWasInFrontWhilePausedDoesNotCountForLong)
{
    setFront(u"com.1password.1password"_s);
    m_monitor->start();
    m_monitor->togglePaused();
    setFront(u"org.example.Editor"_s);
    m_monitor->togglePaused();
    m_clock.advance(351ms);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, PausingIsTold)
{
    const QSignalSpy spy(m_monitor.get(), &ClipboardMonitor::isPausedChanged);
    m_monitor->togglePaused();
    m_monitor->togglePaused();
    EXPECT_EQ(spy.count(), 2);
}

TEST_P(ClipboardMonitorTest, WhatIsBeingReadWhenTheUserPausesIsNotRecorded)
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

TEST_P(ClipboardMonitorTest, ResumingDoesNotRecordWhatWasBeingReadBefore)
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

TEST_P(ClipboardMonitorTest, StoppingEndsTheTicksAndWhatIsBeingRead)
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

TEST_P(ClipboardMonitorTest, AMonitorThatGoesDuringAReadRecordsNothing)
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

TEST_P(ClipboardMonitorTest, AMonitorThatGoesDuringAConversionRecordsNothing)
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

TEST_P(ClipboardMonitorTest, ANewerCopyEndsTheReadOfAnOlderOne)
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

TEST_P(ClipboardMonitorTest, AnImageThatIsBeingDecodedWhenSomethingNewerIsCopiedIsRecordedBeforeIt)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("older")});
    tick();
    m_pasteboard.copyText("newer");
    tick();
    EXPECT_THAT(texts(), IsEmpty());
    m_converter.gate().open();
    settle();
    EXPECT_THAT(texts(), ElementsAre("(no text)", "newer"));
}

TEST_P(ClipboardMonitorTest, WhatHasBeenReadIsRecordedThoughAnOlderImageIsStillBeingDecodedAtTheEnd)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("older")});
    tick();
    m_pasteboard.copyText("newer");
    tick();
    m_monitor->stop();
    EXPECT_THAT(texts(), ElementsAre("newer"));
    m_converter.gate().open();
    settle();
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_P(ClipboardMonitorTest, AnImageThatTurnsOutToBeBrokenHoldsUpNothing)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = "broken"});
    tick();
    m_pasteboard.copyText("newer");
    tick();
    m_converter.gate().open();
    settle();
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_P(ClipboardMonitorTest, AnImageThatIsBeingDecodedWhenTheUserPausesIsNotRecorded)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("1")});
    tick();
    m_monitor->togglePaused();
    m_converter.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_P(ClipboardMonitorTest, ASlowReadIsRecordedHoweverManyTicksItTakes)
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

// Being told of changes

TEST_F(NotifiedMonitorTest, ACopyIsReadOnceNothingFollowedIt)
{
    m_monitor->start();
    m_pasteboard.copyText("one");
    m_clock.advance(19ms);
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
    m_clock.advance(1ms);
    EXPECT_THAT(texts(), ElementsAre("one"));
}

TEST_F(NotifiedMonitorTest, SeveralChangesInARowAreReadOnce)
{
    m_monitor->start();
    for (const char* text : {"a", "b", "c"}) {
        m_pasteboard.copyText(text);
        m_clock.advance(15ms);
    }
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
    m_clock.advance(5ms);
    EXPECT_THAT(texts(), ElementsAre("c"));
}

TEST_F(NotifiedMonitorTest, ChangesThatDoNotEndAreReadSixtyMillisecondsAfterTheFirst)
{
    m_monitor->start();
    for (int number = 1; number <= 12; ++number) {
        m_pasteboard.copyText(QByteArray::number(number));
        m_clock.advance(10ms);
    }
    EXPECT_THAT(texts(), ElementsAre("6", "12"));
}

TEST_F(NotifiedMonitorTest, CopiesThatFollowEachOtherQuicklyAreEachAnEntry)
{
    m_monitor->start();
    for (int number = 0; number < 50; ++number) {
        m_pasteboard.copyText(QByteArray::number(number));
        m_clock.advance(50ms);
    }
    EXPECT_THAT(m_captures, SizeIs(50));
}

TEST_F(NotifiedMonitorTest, TheTimeUntilAChangeIsToldOfCounts)
{
    m_pasteboard.setContentAge(15ms);
    m_monitor->start();
    m_pasteboard.copyText("one");
    m_clock.advance(5ms);
    EXPECT_THAT(m_captures, SizeIs(1));
    m_pasteboard.setContentAge(1h);
    m_pasteboard.copyText("two");
    settle();
    EXPECT_THAT(m_captures, SizeIs(2));
}

TEST_F(NotifiedMonitorTest, AtRestNothingIsWaitedFor)
{
    m_monitor->start();
    EXPECT_EQ(m_clock.pending(), 0U);
    m_pasteboard.copyText("one");
    m_clock.advance(60ms);
    EXPECT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_clock.pending(), 0U);
}

// What was in front

TEST_F(NotifiedMonitorTest, AnIgnoredApplicationThatWasInFrontForAMomentCounts)
{
    m_monitor->start();
    setFront(u"com.1password.1password"_s);
    m_clock.advance(10ms);
    m_pasteboard.copyText("secret");
    m_clock.advance(10ms);
    setFront(u"org.example.Other"_s);
    m_clock.advance(10ms);
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(NotifiedMonitorTest, HowLongTheChangeWasThereIsAddedToTheTimeThatCounts)
{
    m_monitor->start();
    setFront(u"com.1password.1password"_s);
    setFront(u"org.example.Editor"_s);
    m_clock.advance(500ms);
    m_pasteboard.setContentAge(151ms);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(NotifiedMonitorTest, ACopyInTheOwnWindowIsCreditedToTheLastOtherApplication)
{
    m_monitor->start();
    setFront(u"org.example.Viewer"_s);
    setFront(u"com.brackmoor.tessly"_s);
    setFront(u"org.example.Terminal"_s);
    setFront(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Terminal"_s);
}

TEST_P(ClipboardMonitorTest, AnIgnoredApplicationIsKnownByAnyOfItsNames)
{
    m_settings.setIgnoredBundleIDsText(u"libreoffice-writer"_s);
    const auto writer = std::make_shared<FakeRunningApplication>(u"soffice"_s, u"Writer"_s);
    writer->setNames({u"soffice"_s, u"libreoffice-Writer"_s});
    m_workspace.setFrontmost(writer);
    m_monitor->start();
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

// Images that are still to be decoded

TEST_P(ClipboardMonitorTest, AnUndecodedImageMayBeLargerThanTheLimit)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copy(
        {.plainText = "caption", .otherImage = FakeImageConverter::image("small, decoded")});
    tick();
    EXPECT_EQ(m_captures.at(0).payload.plainText(), "caption");
    EXPECT_THAT(
        m_pasteboard.requests(),
        testing::Contains(testing::AllOf(
            testing::Field(&FakePasteboard::Request::flavour, Flavour::otherImage),
            testing::Field(&FakePasteboard::Request::byteLimit, 64 * megabyte))));
}

TEST_P(ClipboardMonitorTest, AnUndecodedImageThatIsFarTooLargeIsLeftOut)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    m_pasteboard.copy({.plainText = "caption", .otherImage = QByteArray(64 * megabyte + 1, 'a')});
    tick();
    ASSERT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_captures.at(0).payload, text("caption"));
}

// Content that its owner changes without telling

class MutableContentTest : public NotifiedMonitorTest
{
protected:
    void copyFirst()
    {
        setFront(u"tk"_s);
        m_clock.advance(1s);
        m_monitor->start();
        m_pasteboard.copy(content("one"));
        tick();
    }

    static Content content(const QByteArray& text)
    {
        return {.plainText = text, .extraTypes = {u"TK_APPLICATION"_s}};
    }
};

TEST_F(MutableContentTest, ItIsReadAgainWhenTheFocusLeaves)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    tick();
    EXPECT_THAT(texts(), ElementsAre("one"));
    setFront(u"org.example.Editor"_s);
    settle();
    EXPECT_THAT(texts(), ElementsAre("one", "two"));
    EXPECT_EQ(m_captures.at(1).bundleID, u"tk"_s);
    setFront(u"tk"_s);
    settle();
    EXPECT_THAT(m_captures, SizeIs(2)) << "what has not changed is no entry";
}

TEST_F(MutableContentTest, ItIsReadAgainWhereEverythingIsToBeRecorded)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    m_monitor->settle(1s);
    settle();
    EXPECT_THAT(texts(), ElementsAre("one", "two"));
}

TEST_F(MutableContentTest, WhatMayHaveChangedIsNotBroughtBack)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    m_pasteboard.ownerLeaves();
    EXPECT_FALSE(m_pasteboard.isOwn());
}

TEST_F(MutableContentTest, WhatWasReadAfterTheFocusLeftIsBroughtBack)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    setFront(u"org.example.Editor"_s);
    settle();
    m_pasteboard.ownerLeaves();
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(text("two")));
}

TEST_F(MutableContentTest, OnceTheFocusIsBackItMayChangeAgain)
{
    copyFirst();
    setFront(u"org.example.Editor"_s);
    settle();
    setFront(u"tk"_s);
    settle();
    m_pasteboard.ownerLeaves();
    EXPECT_FALSE(m_pasteboard.isOwn());
}

TEST_F(MutableContentTest, AnotherCopyPutsAnEndToIt)
{
    copyFirst();
    m_pasteboard.copyText("other");
    tick();
    m_pasteboard.forgetRequests();
    setFront(u"org.example.Editor"_s);
    settle();
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

// Settling

TEST_F(NotifiedMonitorTest, SettlingReadsAtOnceWhatWasCopied)
{
    m_monitor->start();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    settle();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(texts(), ElementsAre("hello"));
}

TEST_F(NotifiedMonitorTest, SettlingWaitsForWhatIsBeingRead)
{
    m_monitor->start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("1")});
    tick();
    std::size_t capturesThen = 0;
    whenDone(m_monitor->settle(1s), [&] { capturesThen = m_captures.size(); });
    settle();
    EXPECT_EQ(capturesThen, 0U);
    m_converter.gate().open();
    settle();
    EXPECT_EQ(capturesThen, 1U);
}

TEST_F(NotifiedMonitorTest, SettlingDoesNotWaitForAnOwnerThatHangs)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    m_clock.advance(999ms);
    EXPECT_FALSE(isSettled);
    m_clock.advance(1ms);
    EXPECT_TRUE(isSettled);
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(texts(), ElementsAre("hello")) << "it is recorded all the same";
}

TEST_P(ClipboardMonitorTest, SettlingEndsAtOnceWhereNothingIsRecorded)
{
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    EXPECT_TRUE(isSettled);
    m_monitor->start();
    m_monitor->togglePaused();
    m_pasteboard.copyText("hello");
    isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

TEST_F(NotifiedMonitorTest, SettlingEndsWhenTheMonitorStops)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    settle();
    const LogCapture log;
    m_monitor->stop();
    settle();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s), SizeIs(1));
}

// What the log tells

class MonitorLogTest : public NotifiedMonitorTest
{
protected:
    /// The lines about one copy, which must be all there are.
    std::vector<QString> linesAbout(Content content)
    {
        const LogCapture log;
        m_pasteboard.copy(std::move(content));
        tick();
        std::vector<QString> lines;
        for (const auto& line : log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s)) {
            EXPECT_EQ(line.level, QtWarningMsg);
            lines.push_back(line.text);
        }
        return lines;
    }
};

TEST_F(MonitorLogTest, EveryCopyThatIsLostIsOneLineWithItsReason)
{
    m_settings.setMaxItemSizeMB(1);
    m_monitor->start();
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .hidesTypes = true}),
        ElementsAre(u"A copy was not recorded: its types could not be read in time."_s));
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .hanging = {Flavour::plainText}}),
        ElementsAre(u"A copy was not recorded: its content could not be read in time."_s));
    EXPECT_THAT(
        linesAbout({.plainText = QByteArray(megabyte + 1, 'a')}),
        ElementsAre(u"A copy was not recorded: it is larger than the configured maximum."_s));
    EXPECT_THAT(
        linesAbout({.otherImage = QByteArray(64 * megabyte + 1, 'a')}),
        ElementsAre(u"A copy was not recorded: it is larger than the configured maximum."_s));
    EXPECT_THAT(
        linesAbout({.otherImage = "broken"}),
        ElementsAre(u"A copy was not recorded: its image could not be read."_s));
    EXPECT_THAT(
        linesAbout({.html = "<b>", .refused = {Flavour::html}}),
        ElementsAre(
            u"A copy was not recorded: its owner handed over nothing of what can be recorded."_s));
}

TEST_F(MonitorLogTest, ACopyThatIsOvertakenIsALine)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("older");
    tick();
    m_pasteboard.gate().open();
    EXPECT_THAT(
        linesAbout({.plainText = "newer"}),
        ElementsAre(u"A copy was not recorded: a newer copy took its place before it was read."_s));
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(MonitorLogTest, WhatIsNotToBeRecordedIsNoLine)
{
    m_monitor->start();
    EXPECT_THAT(linesAbout({.plainText = "recorded"}), IsEmpty());
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .extraTypes = {Pasteboard::concealedType}}), IsEmpty());
    EXPECT_THAT(
        linesAbout({.plainText = "own", .extraTypes = {Pasteboard::markerType}}), IsEmpty());
    setFront(u"com.1password.1password"_s);
    EXPECT_THAT(linesAbout({.plainText = "secret"}), IsEmpty());
    setFront(u"org.example.Editor"_s);
    m_clock.advance(1s);
    m_settings.setCaptureImages(false);
    EXPECT_THAT(linesAbout({.png = FakeImageConverter::png("1")}), IsEmpty());
}

// Content that outlives its owner

TEST_P(ClipboardMonitorTest, RecordedContentIsOfferedAgainWhenItsOwnerLeaves)
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

TEST_P(ClipboardMonitorTest, ContentOfAnOwnerThatServesOneReadIsRecordedAndOfferedAgain)
{
    m_monitor->start();
    m_pasteboard.copy({.plainText = "text", .leavesAfterOneRead = true});
    tick();
    EXPECT_THAT(texts(), ElementsAre("text"));
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(text("text")));
}

TEST_P(ClipboardMonitorTest, WhetherTheSourceOfKeptContentHasEndedCanBeAsked)
{
    const auto editor = std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s);
    m_workspace.setFrontmost(editor);
    m_monitor->start();
    m_pasteboard.copyText("text");
    tick();
    setFront(u"org.example.Viewer"_s);
    ASSERT_THAT(m_pasteboard.keeps(), SizeIs(1));
    const auto hasEnded = m_pasteboard.keeps().at(0).hasSourceEnded;
    ASSERT_TRUE(hasEnded);
    EXPECT_FALSE(hasEnded());
    editor->terminate();
    EXPECT_TRUE(hasEnded());
}

TEST_P(ClipboardMonitorTest, TheEndOfASourceThatIsNotKnownCannotBeAskedFor)
{
    m_monitor->start();
    m_workspace.setFrontmost(nullptr);
    m_pasteboard.copyText("nobody in front");
    tick();
    // On a desktop that does not tell who is in front.
    m_workspace.setFrontmost(std::make_shared<FakeRunningApplication>(std::nullopt));
    m_pasteboard.copyText("whoever is in front");
    tick();
    ASSERT_THAT(m_pasteboard.keeps(), SizeIs(2));
    EXPECT_FALSE(m_pasteboard.keeps().at(0).hasSourceEnded);
    EXPECT_FALSE(m_pasteboard.keeps().at(1).hasSourceEnded);
}

TEST_P(ClipboardMonitorTest, ContentThatWasSkippedIsNotOfferedAgain)
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

TEST_P(ClipboardMonitorTest, ARestrictionIsReportedAtTheFirstChangeAndOnlyOnce)
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

TEST_P(ClipboardMonitorTest, AnotherRestrictionIsReportedAnew)
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

TEST_P(ClipboardMonitorTest, ACopyThatMayNotBeReadStillOvertakesAnOlderOne)
{
    m_monitor->start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("older");
    tick();
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_pasteboard.copyText("newer");
    tick();
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_P(ClipboardMonitorTest, NoRestrictionIsReportedWhilePaused)
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
