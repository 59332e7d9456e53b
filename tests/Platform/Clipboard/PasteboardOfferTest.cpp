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
                            "application/x-kde-cutselection", "text/plain;charset=utf-8",
                            "text/plain", "UTF8_STRING", "STRING", "TEXT", markerName}))
        << "file managers take what comes first";
    EXPECT_EQ(offer.bytes("text/uri-list"), "file:///a\r\nfile:///b\r\n");
    EXPECT_EQ(offer.bytes("x-special/gnome-copied-files"), "copy\nfile:///a\nfile:///b");
    EXPECT_EQ(offer.bytes("application/x-kde-cutselection"), "0");
}

TEST(PasteboardOffer, filesAreOfferedAsTextByTheirPaths)
{
    PasteboardOffer offer(
        {PasteboardItem{.fileURL = "file:///tmp/b%20c.png"},
         PasteboardItem{.fileURL = "file://host/caf%C3%A9/"},
         PasteboardItem{.fileURL = "file:///Song%20%5Blive%5D.mp3?x#y"}});
    const QByteArray paths = "/tmp/b c.png\n/caf\xC3\xA9\n/Song [live].mp3";
    for (const char* name : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "TEXT"}) {
        EXPECT_EQ(offer.bytes(name), paths) << name;
    }
    EXPECT_EQ(offer.bytes("STRING"), "/tmp/b c.png\n/caf\xE9\n/Song [live].mp3");
    EXPECT_EQ(offer.read(Flavour::plainText, 1000).value, paths);
    EXPECT_EQ(offer.readFileURLs(1000).value.size(), 3);
}

TEST(PasteboardOffer, pathsAreValidTextWhateverTheirBytes)
{
    PasteboardOffer odd({PasteboardItem{.fileURL = "file:///a%E9"}});
    EXPECT_EQ(odd.bytes("UTF8_STRING"), "/a\xEF\xBF\xBD");
    EXPECT_FALSE(odd.names().contains("STRING"));
    PasteboardOffer none({PasteboardItem{.fileURL = "no URL"}});
    EXPECT_FALSE(none.names().contains("UTF8_STRING"));
}

TEST(PasteboardOffer, textBesideFilesStandsForItself)
{
    PasteboardOffer offer(
        {PasteboardItem{.fileURL = "file:///a"}, PasteboardItem{.plainText = "text"}});
    EXPECT_EQ(offer.bytes("UTF8_STRING"), "text");
    EXPECT_EQ(offer.names().count("UTF8_STRING"), 1);
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
