#include "X11PasteboardFixture.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

using X11PasteboardReadTest = X11PasteboardTest;

} // namespace

TEST_F(X11PasteboardReadTest, whatWasCopiedBeforeItCameIsReadable)
{
    endPasteboard();
    ClipboardOwner owner(session(), {u"--text"_s, u"early"_s});
    usePasteboard({});
    EXPECT_EQ(readText(pasteboard().changeCount()), "early");
}

TEST_F(X11PasteboardReadTest, anEmptyClipboardHasNoTypes)
{
    EXPECT_EQ(types(pasteboard().changeCount()), QSet<QString>());
}

TEST_F(X11PasteboardReadTest, aCopyByTheSameProgramIsACopy)
{
    copied({u"--text"_s, u"first"_s});
    const qint64 second = changed([this] { owner().command("text second"); });
    EXPECT_EQ(readText(second), "second");
}

TEST_F(X11PasteboardReadTest, anotherSelectionIsNotTheClipboard)
{
    const qint64 before = copied({u"--text"_s, u"clipboard"_s});
    ClipboardOwner primary(session(), {u"--selection"_s, u"PRIMARY"_s, u"--text"_s, u"primary"_s});
    EXPECT_EQ(readText(before), "clipboard");
    EXPECT_EQ(pasteboard().changeCount(), before);
}

TEST_F(X11PasteboardReadTest, listingTheTypesRequestsNotAByteOfContent)
{
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--target"_s, u"image/png"_s, u"x"_s});
    const auto offered = types(count);
    ASSERT_TRUE(offered);
    EXPECT_TRUE(offered->contains(u"image/png"_s));
    owner().leave();
    EXPECT_EQ(owner().lines(), QByteArrayList({"owns", "request TARGETS", "served TARGETS 24"}));
}

TEST_F(X11PasteboardReadTest, theTypesAreAskedForOnceAndContentOnlyAsWanted)
{
    const qint64 count = copied(
        {u"--text"_s, u"text"_s, u"--target"_s, u"text/html"_s, u"<b>"_s, u"--target"_s,
         u"image/png"_s, u"x"_s});
    ASSERT_TRUE(types(count));
    ASSERT_TRUE(types(count));
    EXPECT_EQ(readText(count), "text");
    EXPECT_EQ(read(count, Flavour::rtf).status, ReadStatus::absent);
    EXPECT_EQ(read(count, Flavour::html).value, "<b>");
    owner().leave();
    QByteArrayList requests;
    for (const QByteArray& line : owner().lines()) {
        if (line.startsWith("request ")) {
            requests << line.sliced(8);
        }
    }
    EXPECT_EQ(requests, QByteArrayList({"TARGETS", "UTF8_STRING", "text/html"}));
}

TEST_F(X11PasteboardReadTest, conversionsGoToTheOwnerOneAtATime)
{
    const qint64 count = copied(
        {u"--text"_s, u"text"_s, u"--target"_s, u"text/html"_s, u"<b>"_s, u"--behave"_s,
         u"UTF8_STRING"_s, u"hold"_s});
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    auto html = pasteboard().read(count, Flavour::html, noLimit);
    ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));
    owner().command("go");
    EXPECT_EQ(await(std::move(html)).value, "<b>");
    EXPECT_EQ(await(std::move(text)).value, "text");
    const auto& lines = owner().lines();
    EXPECT_LT(lines.indexOf("served UTF8_STRING 4"), lines.indexOf("request text/html"));
}

TEST_F(X11PasteboardReadTest, plainTextFallsBackAlongItsNames)
{
    const QStringList names = {
        u"UTF8_STRING"_s, u"text/plain;charset=UTF-8"_s, u"text/plain"_s, u"STRING"_s, u"TEXT"_s};
    for (qsizetype first = 0; first < names.size(); ++first) {
        QStringList arguments;
        for (qsizetype index = names.size() - 1; index >= 0; --index) {
            arguments << u"--target"_s << names[index] << names[index];
            if (index < first) {
                arguments << u"--behave"_s << names[index] << u"refuse"_s;
            }
        }
        EXPECT_EQ(readText(copied(arguments)), names[first].toUtf8());
    }
}

TEST_F(X11PasteboardReadTest, textOfAnUnexpectedTypeIsPassedOverForTheNext)
{
    const qint64 count = copied(
        {u"--target"_s, u"UTF8_STRING"_s, u"a picture"_s, u"--type"_s, u"UTF8_STRING"_s,
         u"PIXMAP"_s, u"--target"_s, u"STRING"_s, u"hex:636166e9"_s});
    EXPECT_EQ(readText(count), "caf\xC3\xA9");
}

TEST_F(X11PasteboardReadTest, textIsDecodedByTheTypeThatTheOwnerGives)
{
    const qint64 latin1 = copied(
        {u"--target"_s, u"text/plain"_s, u"hex:636166e9"_s, u"--type"_s, u"text/plain"_s,
         u"STRING"_s});
    EXPECT_EQ(readText(latin1), "caf\xC3\xA9");
    const qint64 utf8 = copied(
        {u"--target"_s, u"TEXT"_s, u"hex:636166c3a9"_s, u"--type"_s, u"TEXT"_s, u"UTF8_STRING"_s});
    EXPECT_EQ(readText(utf8), "caf\xC3\xA9");
}

TEST_F(X11PasteboardReadTest, textThatGrowsOverTheLimitInUTF8IsTooLarge)
{
    const qint64 count = copied({u"--target"_s, u"STRING"_s, u"hex:636166e9"_s});
    EXPECT_EQ(read(count, Flavour::plainText, 5).status, ReadStatus::read);
    EXPECT_EQ(read(count, Flavour::plainText, 4).status, ReadStatus::tooLarge);
}

TEST_F(X11PasteboardReadTest, nulsInTextSurvive)
{
    const qint64 count = copied({u"--target"_s, u"UTF8_STRING"_s, u"hex:61006200"_s});
    EXPECT_EQ(readText(count), "a\0b\0"_ba);
}

TEST_F(X11PasteboardReadTest, richTextIsTakenFromTheFirstNameThatIsOffered)
{
    const qint64 count = copied(
        {u"--target"_s, u"text/richtext"_s, u"third"_s, u"--target"_s, u"application/rtf"_s,
         u"second"_s});
    EXPECT_EQ(read(count, Flavour::rtf).value, "second");
}

TEST_F(X11PasteboardReadTest, htmlIsReadByteForByte)
{
    // Some browsers offer UTF-16.
    const qint64 count = copied({u"--target"_s, u"text/html"_s, u"hex:fffe3c006200"_s});
    EXPECT_EQ(read(count, Flavour::html).value, "\xFF\xFE<\0b\0"_ba);
}

TEST_F(X11PasteboardReadTest, aPNGWithoutItsSignatureIsAbsent)
{
    const qint64 count = copied({u"--target"_s, u"image/png"_s, u"no picture"_s});
    EXPECT_EQ(read(count, Flavour::png).status, ReadStatus::absent);
}

TEST_F(X11PasteboardReadTest, otherImagesAreTakenInTheirOrderAsOffered)
{
    const qint64 count = copied(
        {u"--target"_s, u"image/gif"_s, u"gif"_s, u"--target"_s, u"image/jpeg"_s, u"jpeg"_s,
         u"--target"_s, u"image/webp"_s, u"webp"_s});
    EXPECT_EQ(read(count, Flavour::otherImage).value, "jpeg");
}

TEST_F(X11PasteboardReadTest, filesAreTakenFromTheURIListFirst)
{
    const qint64 count = copied(
        {u"--target"_s, u"x-special/gnome-copied-files"_s, u"cut\nfile:///other"_s, u"--target"_s,
         u"text/uri-list"_s, u"# comment\r\nfile:///a\r\nhttp://b/\r\nfile:///c\r\n"_s});
    EXPECT_EQ(readFiles(count).value, QByteArrayList({"file:///a", "file:///c"}));
    EXPECT_EQ(owner().requests("x-special/gnome-copied-files"), 0);
}

TEST_F(X11PasteboardReadTest, filesAreTakenFromCopiedFilesWhereThereIsNoURIList)
{
    for (const auto& name : {u"x-special/gnome-copied-files"_s, u"x-special/mate-copied-files"_s}) {
        const qint64 count = copied({u"--target"_s, name, u"cut\nfile:///a\nfile:///b"_s});
        EXPECT_EQ(readFiles(count).value, QByteArrayList({"file:///a", "file:///b"}));
    }
}

TEST_F(X11PasteboardReadTest, aURIListWithoutFilesIsNoFileCopy)
{
    const qint64 count = copied({u"--target"_s, u"text/uri-list"_s, u"http://example.com/\r\n"_s});
    EXPECT_EQ(readFiles(count).status, ReadStatus::absent);
}

TEST_F(X11PasteboardReadTest, incrementalTransfersArePutTogether)
{
    const qint64 count =
        copied({u"--target"_s, u"UTF8_STRING"_s, u"fill:3000001"_s, u"--chunk"_s, u"99991"_s});
    EXPECT_EQ(readText(count), filling(3000001));
}

TEST_F(X11PasteboardReadTest, anIncrementalTransferOfExactlyTheLimitIsRead)
{
    const qint64 count = copied({u"--target"_s, u"text/html"_s, u"fill:1000000"_s});
    EXPECT_EQ(read(count, Flavour::html, 1000000).value, filling(1000000));
    const auto tooLarge = read(count, Flavour::html, 999999);
    EXPECT_EQ(tooLarge.status, ReadStatus::tooLarge);
}

TEST_F(X11PasteboardReadTest, anEmptyIncrementalTransferIsAnEmptyContent)
{
    const qint64 count = copied(
        {u"--target"_s, u"text/html"_s, QString(), u"--behave"_s, u"text/html"_s, u"incr-lie"_s});
    const auto html = read(count, Flavour::html);
    EXPECT_EQ(html.status, ReadStatus::read);
    EXPECT_TRUE(html.value.isEmpty());
}

TEST_F(X11PasteboardReadTest, aLargeValueInOnePropertyIsReadInPieces)
{
    const qint64 count =
        copied({u"--target"_s, u"text/html"_s, u"fill:5000003"_s, u"--incr"_s, u"0"_s});
    EXPECT_EQ(read(count, Flavour::html).value, filling(5000003));
}

TEST_F(X11PasteboardReadTest, readsWhatXclipCopies)
{
    for (const QByteArray& text : {QByteArray("short"), filling(30'000'000)}) {
        std::unique_ptr<QProcess> process;
        const qint64 count = changed([&] {
            process = session().start(
                u"xclip"_s, {u"-i"_s, u"-quiet"_s, u"-selection"_s, u"clipboard"_s});
            process->write(text);
            process->closeWriteChannel();
        });
        EXPECT_EQ(readText(count), text);
        EXPECT_EQ(readText(count), text) << "a second time";
        process->kill();
        process->waitForFinished();
    }
}

TEST_F(X11PasteboardReadTest, xclipServesOnAfterATransferThatWasTooLarge)
{
    const QByteArray text = filling(20'000'000);
    std::unique_ptr<QProcess> process;
    const qint64 count = changed([&] {
        process =
            session().start(u"xclip"_s, {u"-i"_s, u"-quiet"_s, u"-selection"_s, u"clipboard"_s});
        process->write(text);
        process->closeWriteChannel();
    });
    EXPECT_EQ(read(count, Flavour::plainText, 1'000'000).status, ReadStatus::tooLarge);
    EXPECT_EQ(readText(count), text);
    process->kill();
    process->waitForFinished();
}

TEST_F(X11PasteboardReadTest, aOneShotXclipIsKeptForTheUsersPaste)
{
    std::unique_ptr<QProcess> process;
    const qint64 count = changed([&] {
        process = session().start(
            u"xclip"_s,
            {u"-i"_s, u"-quiet"_s, u"-loops"_s, u"1"_s, u"-selection"_s, u"clipboard"_s});
        process->write("once");
        process->closeWriteChannel();
    });
    ASSERT_TRUE(types(count));
    EXPECT_EQ(readText(count), "once");
    ASSERT_TRUE(waitUntil([&] { return process->state() == QProcess::NotRunning; }));
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "once"}});
    EXPECT_TRUE(waitUntil([&] { return xclip(u"UTF8_STRING"_s) == "once"; }));
}

TEST_F(X11PasteboardReadTest, readsWhatXselCopies)
{
    const QByteArray text = filling(5'000'000);
    std::unique_ptr<QProcess> process;
    const qint64 count = changed([&] {
        process = session().start(u"xsel"_s, {u"-i"_s, u"-b"_s, u"--nodetach"_s});
        process->write(text);
        process->closeWriteChannel();
    });
    EXPECT_EQ(readText(count), text);
    process->kill();
    process->waitForFinished();
}

} // namespace tessly::test
