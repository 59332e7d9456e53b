#include "PasteboardItems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {
namespace {

PasteboardItem file(const QByteArray& url)
{
    PasteboardItem item;
    item.fileURL = url;
    return item;
}

PasteboardItem text(const QByteArray& plainText)
{
    PasteboardItem item;
    item.plainText = plainText;
    return item;
}

TEST(PasteboardItems, ContentWithoutFilesIsOneItemOfAllItsFlavours)
{
    PasteboardItem item = text("text");
    item.rtf = "{}";
    item.html = "<b>";
    item.png = "png";
    EXPECT_THAT(
        pasteboardItems(
            ClipPayload({.plainText = "text", .rtf = "{}", .html = "<b>", .imagePNG = "png"})),
        ElementsAre(item));
}

TEST(PasteboardItems, FlavoursThatAreAbsentStayAbsent)
{
    PasteboardItem item;
    item.html = "<b>";
    EXPECT_THAT(pasteboardItems(ClipPayload({.html = "<b>"})), ElementsAre(item));
}

TEST(PasteboardItems, FilesGoAloneOneItemEach)
{
    EXPECT_THAT(
        pasteboardItems(ClipPayload(
            {.plainText = "a b",
             .imagePNG = "png",
             .fileURLs = {"file:///tmp/a%20b", "no URL", "file:///c"}})),
        ElementsAre(file("file:///tmp/a%20b"), file("file:///c")));
}

TEST(PasteboardItems, FilesThatAllFailToParseAreNothingToWrite)
{
    EXPECT_THAT(
        pasteboardItems(ClipPayload({.plainText = "text", .fileURLs = {"no URL", "%%"}})),
        IsEmpty());
}

TEST(PasteboardItems, NothingIsNothingToWrite)
{
    EXPECT_THAT(pasteboardItems(ClipPayload()), IsEmpty());
    EXPECT_THAT(plainTextItems(ClipPayload()), IsEmpty());
}

TEST(PasteboardItems, PlainTextIsTheTextAlone)
{
    EXPECT_THAT(
        plainTextItems(
            ClipPayload({.plainText = "text", .html = "<b>", .fileURLs = {"file:///a"}})),
        ElementsAre(text("text")));
}

TEST(PasteboardItems, PlainTextOfFilesIsTheirPathsOneALine)
{
    EXPECT_THAT(
        plainTextItems(
            ClipPayload({.fileURLs = {"file:///tmp/a%20b.txt", "no URL", "file:///c%C3%BC"}})),
        ElementsAre(text("/tmp/a b.txt\n/cü")));
}

TEST(PasteboardItems, PlainTextOfAPathThatIsNoUTF8IsStillUTF8)
{
    EXPECT_THAT(
        plainTextItems(ClipPayload({.fileURLs = {"file:///a%FFb"}})),
        ElementsAre(text("/a\uFFFDb")));
}

TEST(PasteboardItems, AnImageOrAnEmptyTextHasNoPlainText)
{
    EXPECT_THAT(plainTextItems(ClipPayload({.imagePNG = "png"})), IsEmpty());
    EXPECT_THAT(plainTextItems(ClipPayload({.plainText = "", .html = "<b>"})), IsEmpty());
    EXPECT_THAT(
        plainTextItems(ClipPayload({.plainText = "", .fileURLs = {"file:///a"}})), IsEmpty());
}

} // namespace
} // namespace tessly::test
