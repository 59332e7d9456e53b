#include "ClipPayload.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

namespace tessly::test {

namespace {

ClipPayload text(QByteArray plainText)
{
    return ClipPayload({.plainText = std::move(plainText)});
}

ClipPayload files(QByteArrayList urls)
{
    return ClipPayload({.fileURLs = std::move(urls)});
}

const QByteArrayList twoFiles = {"file:///tmp/a.txt", "file:///tmp/b%20c.png"};

} // namespace

TEST(ClipPayload, isEmptyWithoutAnyContent)
{
    EXPECT_TRUE(ClipPayload().isEmpty());
    EXPECT_TRUE(text("").isEmpty());
    EXPECT_FALSE(text(" ").isEmpty());
    EXPECT_FALSE(ClipPayload({.rtf = QByteArray()}).isEmpty());
    EXPECT_FALSE(ClipPayload({.html = QByteArray()}).isEmpty());
    EXPECT_FALSE(ClipPayload({.imagePNG = QByteArray()}).isEmpty());
    EXPECT_FALSE(files({""}).isEmpty());
}

TEST(ClipPayload, countsTheBytesOfAllFlavours)
{
    EXPECT_EQ(ClipPayload().byteCount(), 0);
    EXPECT_EQ(text("caf\xc3\xa9").byteCount(), 5);
    EXPECT_EQ(
        ClipPayload({.plainText = "1",
                     .rtf = "22",
                     .html = "333",
                     .imagePNG = "4444",
                     .fileURLs = {"a", "bc"}})
            .byteCount(),
        13);
}

TEST(ClipPayload, isOfTheFirstKindThatFits)
{
    EXPECT_EQ(ClipPayload().kind(), ClipKind::text);
    EXPECT_EQ(text("hello world").kind(), ClipKind::text);
    EXPECT_EQ(text("mailto:someone").kind(), ClipKind::link);
    EXPECT_EQ(text("note:1").kind(), ClipKind::link);
    EXPECT_EQ(ClipPayload({.rtf = QByteArray()}).kind(), ClipKind::richText);
    EXPECT_EQ(ClipPayload({.html = QByteArray()}).kind(), ClipKind::richText);
    EXPECT_EQ(ClipPayload({.plainText = "a:b", .rtf = "x"}).kind(), ClipKind::richText);
    EXPECT_EQ(ClipPayload({.rtf = "x", .imagePNG = QByteArray()}).kind(), ClipKind::image);
    EXPECT_EQ(
        ClipPayload(
            {.plainText = "a:b", .rtf = "x", .html = "y", .imagePNG = "z", .fileURLs = {"q"}})
            .kind(),
        ClipKind::files);
}

TEST(ClipPayload, ofOnlyWhiteSpaceIsATextWithoutAPreview)
{
    const ClipPayload blank = text("   \n  ");
    EXPECT_FALSE(blank.isEmpty());
    EXPECT_EQ(blank.kind(), ClipKind::text);
    EXPECT_EQ(blank.preview(), "Clipboard item");
    EXPECT_EQ(blank.previewLine(), QStringLiteral("Clipboard item"));
    EXPECT_EQ(blank.searchText(), "   \n  ");
}

TEST(ClipPayload, isTrimmedForKindAndPreview)
{
    EXPECT_EQ(text(" tel:12345 \n").kind(), ClipKind::link);
    EXPECT_EQ(text(" tel:12345 \n").preview(), "tel:12345");
    // No-break space, ideographic space, line and paragraph separator, next line.
    const ClipPayload unicode =
        text("\xc2\xa0\xe3\x80\x80\xe2\x80\xa8tel:1\xe2\x80\xa9\xc2\x85\v\f\r");
    EXPECT_EQ(unicode.kind(), ClipKind::link);
    EXPECT_EQ(unicode.preview(), "tel:1");
    EXPECT_EQ(text("\xe2\x80\x8b").preview(), "\xe2\x80\x8b") << "a zero-width space is no space";
}

TEST(ClipPayload, previewsEachLineFeedAsOneSpace)
{
    EXPECT_EQ(text("a\nb\tc").preview(), "a b\tc");
    EXPECT_EQ(text("a\r\n\n b").preview(), "a\r   b");
}

TEST(ClipPayload, previewsAnImageWithoutTextAsImage)
{
    EXPECT_EQ(ClipPayload({.imagePNG = "x"}).preview(), "Image");
    EXPECT_EQ(ClipPayload({.plainText = " \n", .imagePNG = "x"}).preview(), "Image");
    EXPECT_EQ(ClipPayload({.rtf = "x"}).preview(), "Clipboard item");
    EXPECT_EQ(ClipPayload().preview(), "Clipboard item");
}

TEST(ClipPayload, ofFilesShowsNamesAndFindsNamesAndPaths)
{
    const ClipPayload payload = files(twoFiles);
    EXPECT_EQ(payload.kind(), ClipKind::files);
    EXPECT_EQ(payload.preview(), "a.txt, b c.png");
    EXPECT_EQ(payload.searchText(), "a.txt /tmp/a.txt\nb c.png /tmp/b c.png");
    EXPECT_EQ(files({"file:///Users/a/Report.pdf"}).searchText(), "Report.pdf /Users/a/Report.pdf");
}

TEST(ClipPayload, leavesOutFilesWhoseURLDoesNotParse)
{
    const ClipPayload payload = files({"file:///no good", "file:///good", "%"});
    EXPECT_EQ(payload.preview(), "good");
    EXPECT_EQ(payload.searchText(), "good /good");
    const ClipPayload none({.plainText = "text", .imagePNG = "x", .fileURLs = {"no good"}});
    EXPECT_EQ(none.preview(), "");
    EXPECT_EQ(none.previewLine(), QString());
    EXPECT_EQ(none.searchText(), "text\nimage screenshot photo");
}

TEST(ClipPayload, showsFileNamesThatAreNoUTF8)
{
    const ClipPayload payload = files({"file:///caf%E9"});
    EXPECT_EQ(payload.preview(), "caf\xef\xbf\xbd");
    EXPECT_EQ(payload.searchText(), "caf\xef\xbf\xbd /caf\xef\xbf\xbd");
}

TEST(ClipPayload, withRichTextIsShownAndFoundByItsPlainText)
{
    const ClipPayload payload({.plainText = "x", .rtf = "{\\rtf1 y}", .html = "<p>z"});
    EXPECT_EQ(payload.kind(), ClipKind::richText);
    EXPECT_EQ(payload.preview(), "x");
    EXPECT_EQ(payload.searchText(), "x");
    EXPECT_EQ(ClipPayload({.html = "<p>z"}).searchText(), "");
}

TEST(ClipPayload, withAnImageIsFoundByItsTextAndByWordsForImages)
{
    const ClipPayload payload({.plainText = "Screenshot", .imagePNG = "x"});
    EXPECT_EQ(payload.kind(), ClipKind::image);
    EXPECT_EQ(payload.preview(), "Screenshot");
    EXPECT_EQ(payload.searchText(), "Screenshot\nimage screenshot photo");
    EXPECT_EQ(ClipPayload({.imagePNG = QByteArray()}).searchText(), "image screenshot photo");
}

TEST(ClipPayload, previewLineIsTheBeginningOfThePreview)
{
    EXPECT_EQ(text("  a\nb  ").previewLine(), QStringLiteral("a b"));
    EXPECT_EQ(text("x" + QByteArray(100'000, ' ')).previewLine(), QStringLiteral("x"));
    EXPECT_EQ(text(QByteArray(100'000, ' ') + "x").previewLine(), QStringLiteral("x"));

    QByteArrayList many;
    for (int i = 0; i < 1000; ++i) {
        many.append("file:///tmp/caf%C3%A9" + QByteArray::number(i));
    }
    const ClipPayload payload = files(many);
    EXPECT_EQ(payload.previewLine().size(), 400);
    EXPECT_TRUE(QString::fromUtf8(payload.preview()).startsWith(payload.previewLine()));
}

TEST(ClipPayload, hashesItsContentByLabelledSections)
{
    EXPECT_EQ(
        text("hello").contentHash(),
        "2fe005d63955be175ad105f4cb08f3b137a2a4c69a5c54898c3fa2be0d3413cd");
    EXPECT_EQ(
        ClipPayload().contentHash(),
        "544b6839243d88678fd912437a28aa871ba0af82f9ae5d7ab65e730399d896aa");
    EXPECT_EQ(
        files(twoFiles).contentHash(),
        "a901350e3599a84577112a7e6f44eb04defafe2df5eb819393bbf8ae1bf6994d");
}

TEST(ClipPayload, hashesDifferWithTheFlavourAndTheOrder)
{
    const std::vector<ClipPayload> different = {
        text("x"),
        ClipPayload({.rtf = "x"}),
        ClipPayload({.html = "x"}),
        ClipPayload({.imagePNG = "x"}),
        files({"x"}),
        files({"a", "b"}),
        files({"b", "a"}),
        files({"a\",\"b"}),
        ClipPayload({.plainText = "x", .rtf = "y"}),
        ClipPayload({.plainText = "x", .html = "y"}),
    };
    for (size_t i = 0; i < different.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            EXPECT_NE(different[i].contentHash(), different[j].contentHash()) << i << ' ' << j;
            EXPECT_NE(different[i], different[j]) << i << ' ' << j;
        }
    }
}

TEST(ClipPayload, absentAndEmptyHashAlikeButAreNotEqual)
{
    const ClipPayload absent;
    const ClipPayload empty({.rtf = QByteArray()});
    EXPECT_EQ(absent.contentHash(), empty.contentHash());
    EXPECT_NE(absent, empty);
    EXPECT_NE(absent.isEmpty(), empty.isEmpty());

    const ClipPayload withText = text("x");
    const ClipPayload withEmpty({.plainText = "x", .rtf = QByteArray()});
    EXPECT_EQ(withText.contentHash(), withEmpty.contentHash());
    EXPECT_NE(withText, withEmpty);
}

TEST(ClipPayload, equalsByContentAlso)
{
    EXPECT_EQ(text("x"), text("x"));
    EXPECT_EQ(ClipPayload(), ClipPayload(ClipPayload::Fields()));
}

TEST(ClipPayload, mendsFileURLsThatAreNoText)
{
    EXPECT_EQ(files({"file:///caf\xe9"}).fileURLs(), QByteArrayList({"file:///caf\xef\xbf\xbd"}));
}

TEST(ClipPayload, sharesItsContentWithItsCopies)
{
    ClipPayload payload = text(QByteArray(1000, 'x'));
    const ClipPayload copy = payload;
    EXPECT_EQ(copy.plainText()->constData(), payload.plainText()->constData());
    const ClipPayload taken = std::move(payload);
    // NOLINTNEXTLINE(bugprone-use-after-move): what is moved from is still a payload.
    EXPECT_EQ(payload.contentHash(), taken.contentHash());
}

TEST(ClipPayload, makesDerivedValuesOnceForAllThreads)
{
    const ClipPayload payload = text("hello " + QByteArray(1'000'000, 'x'));
    const QByteArray expected = text("hello " + QByteArray(1'000'000, 'x')).contentHash();
    std::vector<const char*> hashes(4);
    std::vector<std::thread> threads;
    for (const char*& hash : hashes) {
        threads.emplace_back([payload, &hash] {
            hash = payload.contentHash().constData();
            EXPECT_EQ(payload.kind(), ClipKind::text);
            EXPECT_EQ(payload.previewLine().size(), 400);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(payload.contentHash(), expected);
    for (const char* hash : hashes) {
        EXPECT_EQ(hash, hashes.front()) << "not the one shared value";
    }
}

} // namespace tessly::test
