#include "X11PasteboardFixture.h"
#include "XClient.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class X11PasteboardWriteTest : public X11PasteboardTest
{
protected:
    /// Returns once what happens is later than what has happened, by the server's clock.
    void waitForLaterTime()
    {
        XClient clock(session().display());
        const xcb_timestamp_t before = clock.time();
        EXPECT_TRUE(waitUntil([&] { return clock.time() > before; }));
    }
};

constexpr auto markerName = "com.brackmoor.tessly.internal-origin";

QByteArrayList sorted(QByteArrayList list)
{
    std::ranges::sort(list);
    return list;
}

} // namespace

TEST_F(X11PasteboardWriteTest, everyFlavourIsListedUnderEachOfItsNames)
{
    written({.plainText = "a", .rtf = "b", .html = "c", .png = "d"});
    const auto targets = xclip(u"TARGETS"_s);
    ASSERT_TRUE(targets);
    EXPECT_EQ(
        sorted(targets->trimmed().split('\n')),
        sorted(
            {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "text/plain;charset=utf-8",
             "text/plain", "UTF8_STRING", "STRING", "TEXT", "text/html", "text/rtf",
             "application/rtf", "text/richtext", "image/png", markerName}));
}

TEST_F(X11PasteboardWriteTest, eachTargetHasItsTypeAndBytes)
{
    written({.plainText = "caf\xC3\xA9", .rtf = "b", .html = "c", .png = "d"});
    EXPECT_EQ(
        reader(
            {u"UTF8_STRING"_s, u"STRING"_s, u"TEXT"_s, u"text/plain"_s,
             u"text/plain;charset=utf-8"_s, u"application/rtf"_s, u"text/html"_s, u"image/png"_s,
             QString::fromLatin1(markerName), u"image/tiff"_s}),
        QByteArrayList(
            {readerLine("UTF8_STRING", "UTF8_STRING", 8, "caf\xC3\xA9"),
             readerLine("STRING", "STRING", 8, "caf\xE9"),
             readerLine("TEXT", "UTF8_STRING", 8, "caf\xC3\xA9"),
             readerLine("text/plain", "text/plain", 8, "caf\xC3\xA9"),
             readerLine("text/plain;charset=utf-8", "text/plain;charset=utf-8", 8, "caf\xC3\xA9"),
             readerLine("application/rtf", "application/rtf", 8, "b"),
             readerLine("text/html", "text/html", 8, "c"),
             readerLine("image/png", "image/png", 8, "d"),
             readerLine(markerName, markerName, 8, "1"), "image/tiff refused"}));
}

TEST_F(X11PasteboardWriteTest, stringIsNotOfferedForTextBeyondLatin1)
{
    written({.plainText = "10 \xE2\x82\xAC"});
    EXPECT_FALSE(xclip(u"TARGETS"_s)->split('\n').contains("STRING"));
    EXPECT_EQ(xclip(u"STRING"_s), std::nullopt);
}

TEST_F(X11PasteboardWriteTest, filesAreOfferedToEveryFileManager)
{
    changed([this] {
        EXPECT_TRUE(
            m_ticket = pasteboard().write(
                {PasteboardItem{.fileURL = "file:///a"},
                 PasteboardItem{.fileURL = "file:///b%20c"}}));
    });
    EXPECT_EQ(xclip(u"text/uri-list"_s), "file:///a\r\nfile:///b%20c\r\n");
    EXPECT_EQ(xclip(u"x-special/gnome-copied-files"_s), "copy\nfile:///a\nfile:///b%20c");
    EXPECT_EQ(xclip(u"application/x-kde-cutselection"_s), "0");
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "/a\n/b c") << "for who knows no files";
}

TEST_F(X11PasteboardWriteTest, timestampAndSaveTargetsAreAnswered)
{
    written({.plainText = "text"});
    const auto lines = reader({u"TIMESTAMP"_s, u"SAVE_TARGETS"_s});
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith("TIMESTAMP INTEGER 32 4 ")) << lines[0].constData();
    EXPECT_NE(lines[0], readerLine("TIMESTAMP", "INTEGER", 32, "\0\0\0\0"_ba));
    EXPECT_EQ(lines[1], readerLine("SAVE_TARGETS", "NULL", 32, QByteArray()));
}

TEST_F(X11PasteboardWriteTest, multipleAnswersAllAtOnce)
{
    const QByteArray html = filling(1'000'000);
    written({.plainText = "text", .html = html});
    EXPECT_EQ(
        reader(
            {u"--multiple"_s, u"UTF8_STRING"_s, u"image/png"_s, u"text/html"_s, u"MULTIPLE"_s,
             u"STRING"_s}),
        QByteArrayList(
            {readerLine("UTF8_STRING", "UTF8_STRING", 8, "text"), "image/png refused",
             readerLine("text/html", "text/html", 8, html), "MULTIPLE refused",
             readerLine("STRING", "STRING", 8, "text")}));
}

TEST_F(X11PasteboardWriteTest, largeContentGoesToXclipAndXsel)
{
    const QByteArray text = filling(20'000'001);
    written({.plainText = text});
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), text);
    EXPECT_EQ(session().run(u"xsel"_s, {u"-o"_s, u"-b"_s}), text);
}

TEST_F(X11PasteboardWriteTest, aLargeStringIsLatin1ToTheEnd)
{
    const QByteArray text = QByteArray("caf\xC3\xA9 ").repeated(200'000);
    written({.plainText = text});
    EXPECT_EQ(xclip(u"STRING"_s), QByteArray("caf\xE9 ").repeated(200'000));
}

TEST_F(X11PasteboardWriteTest, severalReadersAreServedAtTheSameTime)
{
    const QByteArray text = filling(5'000'000);
    written({.plainText = text});
    const QByteArray line = readerLine("UTF8_STRING", "UTF8_STRING", 8, text);
    EXPECT_EQ(
        reader({u"--parallel"_s, u"UTF8_STRING"_s, u"UTF8_STRING"_s, u"UTF8_STRING"_s}),
        QByteArrayList({line, line, line}));
}

TEST_F(X11PasteboardWriteTest, aReaderThatVanishesHarmsNobody)
{
    const QByteArray text = filling(5'000'000);
    written({.plainText = text});
    reader({u"--vanish"_s, u"3"_s, u"UTF8_STRING"_s});
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), text);
}

TEST_F(X11PasteboardWriteTest, aReaderThatVanishesLetsGoOfTheBytes)
{
    QByteArray text = filling(5'000'000);
    written({.plainText = text});
    reader({u"--vanish"_s, u"3"_s, u"UTF8_STRING"_s});
    copied({u"--text"_s, u"other"_s});
    EXPECT_TRUE(waitUntil([&] { return text.isDetached(); }));
}

TEST_F(X11PasteboardWriteTest, aReaderThatHangsHarmsNobodyAndIsForgotten)
{
    usePasteboard(shortDeadlines());
    QByteArray text = filling(5'000'000);
    written({.plainText = text});
    const auto hung = session().start(
        u"/usr/bin/python3"_s,
        {desktopScript(u"reader.py"_s), u"--stall"_s, u"3"_s, u"UTF8_STRING"_s});
    ASSERT_TRUE(waitUntil([&] { return hung->canReadLine(); }));
    EXPECT_EQ(hung->readLine(), "stalled\n");
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), text);
    copied({u"--text"_s, u"other"_s});
    EXPECT_TRUE(waitUntil([&] { return text.isDetached(); }));
    hung->kill();
    hung->waitForFinished();
}

TEST_F(X11PasteboardWriteTest, aTransferOutlivesTheLossOfTheClipboard)
{
    const QByteArray text = filling(20'000'000);
    written({.plainText = text});
    const auto slow = session().start(
        u"/usr/bin/python3"_s,
        {desktopScript(u"reader.py"_s), u"--stall"_s, u"2"_s, u"UTF8_STRING"_s});
    ASSERT_TRUE(waitUntil([&] { return slow->canReadLine(); }));
    EXPECT_EQ(slow->readLine(), "stalled\n");
    copied({u"--text"_s, u"other"_s});
    slow->write("\n");
    ASSERT_TRUE(
        waitUntil([&] { return slow->state() == QProcess::NotRunning; }, std::chrono::seconds(30)));
    EXPECT_EQ(slow->readLine().trimmed(), readerLine("UTF8_STRING", "UTF8_STRING", 8, text));
}

TEST_F(X11PasteboardWriteTest, nobodyAsksInItsOwnName)
{
    written({.html = filling(1'000'000)});
    reader({u"--impersonate"_s, u"text/html"_s});
    // Serving that would have turned off the events by which it reads.
    const qint64 count = copied({u"--target"_s, u"text/html"_s, u"fill:1000000"_s});
    EXPECT_EQ(read(count, Flavour::html).value, filling(1'000'000));
}

TEST_F(X11PasteboardWriteTest, contentIsServedWithoutCopiesAndFreedWithTheClipboard)
{
    QByteArray text = filling(1'000'000);
    written({.plainText = text});
    EXPECT_FALSE(text.isDetached());
    EXPECT_EQ(xclip(u"UTF8_STRING"_s)->size(), text.size());
    copied({u"--text"_s, u"other"_s});
    EXPECT_TRUE(waitUntil([&] { return text.isDetached(); }));
}

TEST_F(X11PasteboardWriteTest, theLastOfManyWritesIsTheContent)
{
    for (int number = 0; number < 50; ++number) {
        EXPECT_TRUE(
            m_ticket =
                pasteboard().write({PasteboardItem{.plainText = QByteArray::number(number)}}));
    }
    EXPECT_TRUE(waitUntil([&] { return xclip(u"UTF8_STRING"_s) == "49"; }));
    EXPECT_EQ(readText(pasteboard().changeCount()), "49");
}

TEST_F(X11PasteboardWriteTest, aWriteReplacesEveryFlavourOfTheOneBefore)
{
    written({.plainText = "text", .html = "<b>"});
    written({.rtf = "{}"});
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), std::nullopt);
    EXPECT_EQ(xclip(u"text/html"_s), std::nullopt);
    EXPECT_EQ(xclip(u"text/rtf"_s), "{}");
}

TEST_F(X11PasteboardWriteTest, anEmptyTextIsOffered)
{
    written({.plainText = ""});
    EXPECT_EQ(
        reader({u"UTF8_STRING"_s}),
        QByteArrayList({readerLine("UTF8_STRING", "UTF8_STRING", 8, QByteArray())}));
}

TEST_F(X11PasteboardWriteTest, clearingLeavesTheClipboardWithoutAnOwner)
{
    QByteArray text = filling(1'000'000);
    written({.plainText = text});
    changed([this] { pasteboard().clear(); });
    EXPECT_EQ(xclip(u"TARGETS"_s), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return text.isDetached(); }));
}

TEST_F(X11PasteboardWriteTest, theTakeoverNeverOverrunsANewerCopy)
{
    const qint64 count = copied({u"--text"_s, u"older"_s});
    ASSERT_EQ(readText(count), "older");
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "older"}});
    // The owner's end and the newer copy are one step: the takeover comes too late, always.
    const qint64 newer = changed([this] { owner().command("replace newer"); });
    EXPECT_EQ(readText(newer), "newer");
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "newer");
    EXPECT_EQ(pasteboard().changeCount(), newer);
}

TEST_F(X11PasteboardWriteTest, theTakeoverNeverOverrunsACopyWithTheTimeOfTheOneBefore)
{
    const qint64 count = copied({u"--text"_s, u"older"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "older"}});
    const qint64 newer = changed([this] { owner().command("again newer"); });
    EXPECT_EQ(readText(newer), "newer");
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "newer");
    EXPECT_EQ(pasteboard().changeCount(), newer);
}

TEST_F(X11PasteboardWriteTest, aCopyWithATimeFromBeforeTheOldOwnersEndSucceedsAfterTheTakeover)
{
    ClipboardOwner late(session(), {u"--text"_s, u"first"_s});
    const qint64 count = copied({u"--text"_s, u"older"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "older"}});
    late.command("remember");
    ASSERT_TRUE(late.waitForLine("remembered"));
    // The end is later, also by the server's clock.
    waitForLaterTime();
    changed([this] { owner().leave(); });
    ASSERT_EQ(xclip(u"UTF8_STRING"_s), "older");
    const qint64 newer = changed([&] { late.command("late newer"); });
    EXPECT_EQ(readText(newer), "newer");
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "newer");
}

TEST_F(X11PasteboardWriteTest, theTakeoverHasTheTimeAtWhichTheOldOwnerHadCopied)
{
    const qint64 count = copied({u"--text"_s, u"older"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "older"}});
    const auto time = xclip(u"TIMESTAMP"_s);
    ASSERT_TRUE(time);
    waitForLaterTime();
    changed([this] { owner().leave(); });
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "older");
    EXPECT_EQ(xclip(u"TIMESTAMP"_s), time);
}

TEST_F(X11PasteboardWriteTest, aProgramThatIsKilledLeavesItsContentToBeKept)
{
    const auto program =
        session().program(u"xclip"_s, {u"-quiet"_s, u"-selection"_s, u"clipboard"_s});
    const qint64 count = changed([&] {
        program->start();
        program->write("older");
        program->closeWriteChannel();
    });
    ASSERT_EQ(readText(count), "older");
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "kept"}});
    const qint64 kept = changed([&] { program->kill(); });
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "kept");
    EXPECT_EQ(readText(kept), "kept");
    EXPECT_TRUE(waitUntil([&] { return program->state() == QProcess::NotRunning; }));
}

TEST_F(X11PasteboardWriteTest, anOwnerFromBeforeTheStartIsNotTakenOverFor)
{
    copied({u"--text"_s, u"older"_s});
    usePasteboard({});
    const qint64 count = pasteboard().changeCount();
    ASSERT_EQ(readText(count), "older");
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "older"}});
    owner().leave();
    XClient other(session().display());
    ASSERT_TRUE(waitUntil(
        [&other] { return other.ownerOf("CLIPBOARD") == xcb_window_t{XCB_WINDOW_NONE}; }));
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    EXPECT_EQ(other.ownerOf("CLIPBOARD"), xcb_window_t{XCB_WINDOW_NONE});
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(X11PasteboardWriteTest, aTakeoverThatCameTooLateLetsGoOfTheBytes)
{
    QByteArray text = filling(1'000'000);
    const qint64 count = copied({u"--text"_s, u"older"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = text}});
    changed([this] { owner().command("replace newer"); });
    EXPECT_TRUE(waitUntil([&] { return text.isDetached(); }));
}

TEST_F(X11PasteboardWriteTest, contentThatItsOwnerClearedIsNotBroughtBack)
{
    const qint64 count = copied({u"--text"_s, u"secret"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "secret"}});
    changed([this] { owner().command("release"); });
    owner().leave();
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), std::nullopt);
    EXPECT_EQ(types(pasteboard().changeCount()), QSet<QString>());
}

TEST_F(X11PasteboardWriteTest, contentThatWasNotKeptIsNotBroughtBack)
{
    const qint64 count = copied({u"--text"_s, u"skipped"_s});
    ASSERT_TRUE(types(count));
    owner().leave();
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), std::nullopt);
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(X11PasteboardWriteTest, isOnTheClipboardOnceItSaysSo)
{
    EXPECT_FALSE(await(pasteboard().holds(m_ticket))) << "nothing was";
    XClient other(session().display());
    for (int write = 0; write < 20; ++write) {
        ASSERT_TRUE(
            m_ticket = pasteboard().write({PasteboardItem{.plainText = filling(1'000'000)}}));
        EXPECT_TRUE(await(pasteboard().holds(m_ticket)));
        EXPECT_NE(other.ownerOf("CLIPBOARD"), xcb_window_t{XCB_WINDOW_NONE}) << write;
        pasteboard().clear();
        ASSERT_TRUE(waitUntil(
            [&other] { return other.ownerOf("CLIPBOARD") == xcb_window_t{XCB_WINDOW_NONE}; }));
    }
}

TEST_F(X11PasteboardWriteTest, isNotOnTheClipboardOnceSomethingElseHasBeenCopied)
{
    written({.plainText = "text"});
    EXPECT_TRUE(pasteboard().beginPaste(m_ticket, false));
    copied({u"--text"_s, u"other"_s});
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    EXPECT_FALSE(pasteboard().beginPaste(m_ticket, false));
}

TEST_F(X11PasteboardWriteTest, onlyTheLastWriteIsOnTheClipboard)
{
    written({.plainText = "first"});
    const WriteTicket first = m_ticket;
    written({.plainText = "second"});
    EXPECT_FALSE(await(pasteboard().holds(first)));
    EXPECT_FALSE(pasteboard().beginPaste(first, false));
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(first)));
    EXPECT_TRUE(await(pasteboard().holds(m_ticket)));
    EXPECT_TRUE(pasteboard().beginPaste(m_ticket, false));
}

TEST_F(X11PasteboardWriteTest, whatIsBroughtBackIsNoWrite)
{
    written({.plainText = "first"});
    const qint64 count = copied({u"--text"_s, u"kept"_s});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "kept"}});
    changed([this] { owner().leave(); });
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "kept");
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    EXPECT_FALSE(pasteboard().beginPaste(m_ticket, false));
    EXPECT_FALSE(await(pasteboard().holds({})));
}

TEST_F(X11PasteboardWriteTest, countsWhatOtherProgramsFetchButNotTheirQuestionsForTypes)
{
    written({.plainText = "text"});
    EXPECT_EQ(pasteboard().fetchCount(), 0U);
    EXPECT_NE(xclip(u"TARGETS"_s), std::nullopt);
    EXPECT_EQ(pasteboard().fetchCount(), 0U);
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "text");
    EXPECT_EQ(pasteboard().fetchCount(), 1U);
    EXPECT_TRUE(pasteboard().beginPaste(m_ticket, false));
    EXPECT_EQ(pasteboard().fetchCount(), 0U) << "counted for the next paste alone";
}

TEST_F(X11PasteboardWriteTest, primaryIsOwnedOnRequestUntilAnotherProgramTakesIt)
{
    // At once, before the write has reached the server.
    ASSERT_TRUE(
        m_ticket = pasteboard().write({PasteboardItem{.plainText = "text", .html = "<b>"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(xclip(u"UTF8_STRING"_s, u"primary"_s), "text");
    EXPECT_EQ(xclip(u"text/html"_s, u"primary"_s), "<b>");
    EXPECT_TRUE(waitUntil([this] { return pasteboard().beginPaste(m_ticket, true); }));
    ClipboardOwner other(session(), {u"--selection"_s, u"PRIMARY"_s, u"--text"_s, u"other"_s});
    EXPECT_EQ(xclip(u"UTF8_STRING"_s, u"primary"_s), "other");
    EXPECT_TRUE(waitUntil([this] { return !pasteboard().beginPaste(m_ticket, true); }));
    EXPECT_TRUE(pasteboard().beginPaste(m_ticket, false));
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "text");
}

TEST_F(X11PasteboardWriteTest, primaryOutlivesTheLossOfTheClipboard)
{
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "text"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    copied({u"--text"_s, u"other"_s});
    EXPECT_EQ(xclip(u"UTF8_STRING"_s, u"primary"_s), "text");
}

TEST_F(X11PasteboardWriteTest, primaryIsNotOfferedWithoutTheClipboard)
{
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
    written({.plainText = "text"});
    copied({u"--text"_s, u"other"_s});
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(xclip(u"UTF8_STRING"_s, u"primary"_s), std::nullopt);
}

TEST_F(X11PasteboardWriteTest, clearingGivesUpPrimaryToo)
{
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "text"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    changed([this] { pasteboard().clear(); });
    EXPECT_TRUE(waitUntil([&] { return xclip(u"UTF8_STRING"_s, u"primary"_s) == std::nullopt; }));
}

} // namespace tessly::test
