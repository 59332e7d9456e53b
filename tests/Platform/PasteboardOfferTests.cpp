#include "PasteboardOffer.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr auto markerName = "com.brackmoor.tessly.internal-origin";

} // namespace

TEST(PasteboardOffer, textIsOfferedUnderEveryNameThatToolkitsLookFor)
{
    PasteboardOffer offer({PasteboardItem{.plainText = "text"}});
    EXPECT_EQ(
        offer.names(), QByteArrayList(
                           {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING",
                            "TEXT", markerName}));
    EXPECT_EQ(offer.bytes("text/plain"), "text");
    EXPECT_EQ(offer.bytes(markerName), "1");
    EXPECT_EQ(offer.bytes("text/html"), std::nullopt);
}

TEST(PasteboardOffer, allNamesOfOneFlavourShareItsBytes)
{
    const QByteArray text(1000, 'x');
    PasteboardOffer offer({PasteboardItem{.plainText = text}});
    for (const char* name : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING"}) {
        EXPECT_EQ(offer.bytes(name)->constData(), text.constData()) << name;
    }
}

TEST(PasteboardOffer, stringIsLatin1)
{
    PasteboardOffer offer({PasteboardItem{.plainText = "caf\xC3\xA9"}});
    EXPECT_EQ(offer.bytes("STRING"), "caf\xE9");
    EXPECT_EQ(offer.bytes("STRING"), "caf\xE9");
    EXPECT_EQ(offer.bytes("UTF8_STRING"), "caf\xC3\xA9");
}

TEST(PasteboardOffer, stringIsOfferedOnlyIfTheTextFits)
{
    PasteboardOffer offer({PasteboardItem{.plainText = "10 \xE2\x82\xAC"}});
    EXPECT_FALSE(offer.names().contains("STRING"));
    EXPECT_EQ(offer.bytes("STRING"), std::nullopt);
    EXPECT_TRUE(offer.names().contains("TEXT"));
}

TEST(PasteboardOffer, theOtherFlavoursHaveTheirNames)
{
    PasteboardOffer offer({PasteboardItem{.rtf = "{\\rtf}", .html = "<b>", .png = "PNG"}});
    EXPECT_EQ(
        offer.names(), QByteArrayList(
                           {"text/html", "text/rtf", "application/rtf", "text/richtext",
                            "image/png", markerName}));
    EXPECT_EQ(offer.bytes("text/html"), "<b>");
    EXPECT_EQ(offer.bytes("application/rtf"), "{\\rtf}");
    EXPECT_EQ(offer.bytes("image/png"), "PNG");
}

TEST(PasteboardOffer, filesAreOneListForEachKindOfFileManager)
{
    PasteboardOffer offer(
        {PasteboardItem{.fileURL = "file:///a"}, PasteboardItem{.fileURL = "file:///b"}});
    EXPECT_EQ(
        offer.names(), QByteArrayList(
                           {"text/uri-list", "x-special/gnome-copied-files",
                            "application/x-kde-cutselection", markerName}));
    EXPECT_EQ(offer.bytes("text/uri-list"), "file:///a\r\nfile:///b\r\n");
    EXPECT_EQ(offer.bytes("x-special/gnome-copied-files"), "copy\nfile:///a\nfile:///b");
    EXPECT_EQ(offer.bytes("application/x-kde-cutselection"), "0");
}

TEST(PasteboardOffer, ofSeveralItemsWithOneFlavourTheFirstCounts)
{
    PasteboardOffer offer(
        {PasteboardItem{.html = "<b>"}, PasteboardItem{.plainText = "first"},
         PasteboardItem{.plainText = "second"}});
    EXPECT_EQ(offer.bytes("UTF8_STRING"), "first");
    EXPECT_EQ(offer.bytes("text/html"), "<b>");
    EXPECT_EQ(offer.names().count("UTF8_STRING"), 1);
}

TEST(PasteboardOffer, isReadBackWithinTheLimit)
{
    PasteboardOffer offer({PasteboardItem{.plainText = "caf\xC3\xA9"}});
    EXPECT_EQ(offer.read(Flavour::plainText, 5).value, "caf\xC3\xA9");
    EXPECT_EQ(offer.read(Flavour::plainText, 4).status, ReadStatus::tooLarge);
    EXPECT_EQ(offer.read(Flavour::html, 100).status, ReadStatus::absent);
    EXPECT_EQ(offer.readFileURLs(100).status, ReadStatus::absent);
}

} // namespace tessly
