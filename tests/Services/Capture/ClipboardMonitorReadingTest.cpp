#include "ClipboardMonitorFixture.h"

#include "PasteboardItems.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Content = FakePasteboard::Content;
using What = FakePasteboard::Request::What;

namespace {

// Reading

TEST_P(ClipboardMonitorTest, TypesAreAskedFirstThenTheFlavoursInTheirOrder)
{
    start();
    settle();
    m_pasteboard.forgetRequests();
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
    start();
    m_pasteboard.copy({.plainText = "text", .rtf = "{\\rtf1}", .html = "<b>"});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload,
        ClipPayload({.plainText = "text", .rtf = "{\\rtf1}", .html = "<b>"}));
}

TEST_P(ClipboardMonitorTest, TheImageOfABrowserOrAScreenshotToolIsKeptWithItsText)
{
    start();
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
    start();
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
    start();
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
    start();
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
    start();
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
    start();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("photo")});
    tick();
    EXPECT_EQ(
        m_captures.at(0).payload, ClipPayload({.imagePNG = FakeImageConverter::png("photo")}));
}

TEST_P(ClipboardMonitorTest, APNGThatIsRefusedFallsBackToAnotherFormat)
{
    start();
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
    start();
    m_pasteboard.copy({.otherImage = "broken"});
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    m_pasteboard.copy({.plainText = "caption", .otherImage = "broken"});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("caption"));
}

TEST_P(ClipboardMonitorTest, AFlavourThatIsRefusedContributesNothing)
{
    start();
    m_pasteboard.copy({.plainText = "text", .rtf = "{}", .refused = {Flavour::rtf}});
    tick();
    EXPECT_EQ(m_captures.at(0).payload, text("text"));
}

TEST_P(ClipboardMonitorTest, WhatWasReadBeforeAnOwnerHungIsRecorded)
{
    start();
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
    start();
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
    start();
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
    start();
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
    start();
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
    start();
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
    start();
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
    start();
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
    start();
    m_pasteboard.copy({.plainText = QByteArray(megabyte + 1, 'a'), .html = "<b>"});
    tick();
    EXPECT_EQ(m_pasteboard.contentRequests(), 1U);
}

TEST_P(ClipboardMonitorTest, ThePNGOfAConvertedImageCountsNotTheOriginal)
{
    m_settings.setMaxItemSizeMB(1);
    start();
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
    start();
    m_settings.setMaxItemSizeMB(0);
    EXPECT_EQ(limitAskedFor(), megabyte);
    m_settings.setMaxItemSizeMB(-7);
    EXPECT_EQ(limitAskedFor(), megabyte);
    m_settings.setMaxItemSizeMB(1000);
    EXPECT_EQ(limitAskedFor(), 250 * megabyte);
}

// Images that are still to be decoded

TEST_P(ClipboardMonitorTest, AnUndecodedImageMayBeLargerThanTheLimit)
{
    m_settings.setMaxItemSizeMB(1);
    start();
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
    start();
    m_pasteboard.copy({.plainText = "caption", .otherImage = QByteArray(64 * megabyte + 1, 'a')});
    tick();
    ASSERT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_captures.at(0).payload, text("caption"));
}

// Content that outlives its owner

TEST_P(ClipboardMonitorTest, RecordedContentIsOfferedAgainWhenItsOwnerLeaves)
{
    start();
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
    start();
    m_pasteboard.copy({.plainText = "text", .leavesAfterOneRead = true});
    tick();
    EXPECT_THAT(texts(), ElementsAre("text"));
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(text("text")));
}

TEST_P(ClipboardMonitorTest, WhatAnotherProgramOffersInTheOwnersPlaceIsNoCopy)
{
    start();
    m_pasteboard.copy({.plainText = "text", .html = "<b>"});
    tick();
    m_pasteboard.ownerLeaves();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "the text of it alone";
    EXPECT_THAT(m_pasteboard.keeps(), SizeIs(2)) << "it outlives that program, too";

    m_pasteboard.ownerLeaves();
    m_pasteboard.copy({.plainText = "text", .html = "<b>"});
    tick();
    EXPECT_THAT(m_captures, SizeIs(1)) << "all of it";
}

TEST_P(ClipboardMonitorTest, SomethingElseAfterAnOwnerLeftIsACopy)
{
    start();
    m_pasteboard.copyText("text");
    tick();
    m_pasteboard.ownerLeaves();
    m_pasteboard.copyText("another text");
    tick();
    m_pasteboard.ownerLeaves();
    m_pasteboard.copy({.plainText = "another text", .html = "<b>"});
    tick();
    EXPECT_THAT(texts(), ElementsAre("text", "another text", "another text"));
}

TEST_P(ClipboardMonitorTest, TheSameAgainFromAnOwnerThatIsThereIsACopy)
{
    start();
    m_pasteboard.copyText("text");
    tick();
    m_pasteboard.copyText("text");
    tick();
    EXPECT_THAT(texts(), ElementsAre("text", "text"));
}

TEST_P(ClipboardMonitorTest, WhetherTheSourceOfKeptContentHasEndedCanBeAsked)
{
    const auto editor = std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s);
    m_workspace.setFrontmost(editor);
    start();
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
    start();
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
    start();
    m_pasteboard.copyText("recorded");
    tick();
    m_pasteboard.copy({.plainText = "secret", .extraTypes = {Pasteboard::concealedType}});
    tick();
    m_pasteboard.ownerLeaves();
    tick();
    EXPECT_THAT(m_pasteboard.keeps(), SizeIs(1));
    EXPECT_FALSE(m_pasteboard.isOwn());
}

} // namespace
} // namespace tessly::test
