#include "WaylandPasteboardFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <ostream>
#include <string>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// Sanitizers keep freed memory and slow everything down: what they show of memory is their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

using WaylandPasteboardReadTest = WaylandPasteboardTest;

struct Fault
{
    const char* name;
    WaylandProgram::Offered offered;
    Flavour flavour;
    ReadStatus status;
    QByteArray value = {};

    friend std::ostream& operator<<(std::ostream& stream, const Fault& fault)
    {
        return stream << fault.name;
    }
};

class WaylandFaultyOwnerTest : public WaylandPasteboardTest,
                               public testing::WithParamInterface<Fault>
{
};

using Manner = WaylandProgram::Manner;

const Fault faults[] = {
    {"hangs", {"UTF8_STRING", "text", Manner::hangs}, Flavour::plainText, ReadStatus::unreadable},
    {"stallsHalfWay", {"text/html", "half", Manner::stalls}, Flavour::html, ReadStatus::unreadable},
    {"refuses", {"text/html", "<b>", Manner::refuses}, Flavour::html, ReadStatus::absent},
    {"refusesText", {"UTF8_STRING", "text", Manner::refuses}, Flavour::plainText, ReadStatus::read},
    {"neverEnds",
     {"text/html", QByteArray(4096, 'a'), Manner::neverEnds},
     Flavour::html,
     ReadStatus::tooLarge},
    {"neverEndsItsText",
     {"UTF8_STRING", QByteArray(4096, 'a'), Manner::neverEnds},
     Flavour::plainText,
     ReadStatus::tooLarge},
    {"takesTooLongInAll",
     {"UTF8_STRING", QByteArray(100, 'a'), Manner::dribbles},
     Flavour::plainText,
     ReadStatus::unreadable},
    {"isSlowButAlive",
     {"UTF8_STRING", "0123456789", Manner::dribbles},
     Flavour::plainText,
     ReadStatus::read,
     "0123456789"},
    {"claimsAnImage", {"image/png", "no such thing"}, Flavour::png, ReadStatus::absent},
    {"claimsFiles", {"text/uri-list", "no such thing"}, Flavour::rtf, ReadStatus::absent},
    {"sendsMoreThanTheLimit",
     {"text/html", QByteArray(8'000'000, 'a')},
     Flavour::html,
     ReadStatus::tooLarge},
    {"sendsTheLimit",
     {"text/html", QByteArray(1'048'576, 'a')},
     Flavour::html,
     ReadStatus::read,
     QByteArray(1'048'576, 'a')},
    {"sendsLatin1", {"STRING", "w\xF6rd"}, Flavour::plainText, ReadStatus::read, "w\xC3\xB6rd"},
};

qint64 memory(QByteArrayView field)
{
    QFile file(u"/proc/self/status"_s);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field)) {
            return line.sliced(field.size()).trimmed().split(' ').front().toLongLong() * 1024;
        }
    }
    return -1;
}

} // namespace

TEST_P(WaylandFaultyOwnerTest, isAnOrdinaryThing)
{
    const Fault& fault = GetParam();
    const qint64 count = copied({fault.offered});
    const auto result = read(count, fault.flavour, megabyte);
    EXPECT_EQ(result.status, fault.status);
    EXPECT_EQ(result.value, fault.value);
    expectThatTheNextCopyIsRead();
}

INSTANTIATE_TEST_SUITE_P(
    AnOwnerThat, WaylandFaultyOwnerTest, testing::ValuesIn(faults),
    testing::PrintToStringParamName());

TEST_F(WaylandPasteboardReadTest, whatThereIsAtTheStartIsReadAndNoChange)
{
    copied({{"UTF8_STRING", "before"}});
    usePasteboard(shortDeadlines());
    EXPECT_EQ(pasteboard().changeCount(), 1);
    EXPECT_EQ(read(1).value, "before");
}

TEST_F(WaylandPasteboardReadTest, typesAreListedWithoutAskingTheOwner)
{
    const qint64 count = copied({{"UTF8_STRING", "text", Manner::hangs}, {"x-own/type"}});
    EXPECT_EQ(types(count), (QSet<QString>{u"UTF8_STRING"_s, u"x-own/type"_s}));
    EXPECT_EQ(compositor().receives(), 0);
    EXPECT_EQ(program().sends(), 0);
}

TEST_F(WaylandPasteboardReadTest, onlyWhatIsOfferedIsAskedFor)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
    EXPECT_EQ(read(count, Flavour::png).status, ReadStatus::absent);
    EXPECT_EQ(compositor().receives(), 0);
    EXPECT_EQ(read(count).value, "text");
    EXPECT_EQ(compositor().receives(), 1);
}

TEST_F(WaylandPasteboardReadTest, utf8StringIsTakenBeforeTheOtherNamesOfText)
{
    const qint64 count = copied(
        {{"text/plain", "crlf"}, {"TEXT/PLAIN;CHARSET=UTF-8", "upper"}, {"UTF8_STRING", "as is"}});
    EXPECT_EQ(read(count).value, "as is");
    const qint64 next = copied({{"text/plain", "plain"}, {"text/plain;charset=UTF-8", "utf-8"}});
    EXPECT_EQ(read(next).value, "utf-8");
}

TEST_F(WaylandPasteboardReadTest, aNameThatIsRefusedIsFollowedByTheNext)
{
    const qint64 count =
        copied({{"UTF8_STRING", "", Manner::refuses}, {"text/plain", "under another name"}});
    EXPECT_EQ(read(count).value, "under another name");
}

TEST_F(WaylandPasteboardReadTest, theOwnersEndOfThePipeIsAnOrdinaryOne)
{
    // Many programs take for an error what a non-blocking one says when it is full.
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    EXPECT_EQ(read(count).value, "text");
    EXPECT_FALSE(program().isGivenNonBlocking());
}

TEST_F(WaylandPasteboardReadTest, tooManyTypesAreNone)
{
    std::vector<Offered> offered = {{"UTF8_STRING", "text"}};
    for (int number = 0; number < 5000; ++number) {
        offered.push_back({"x-type/" + QByteArray::number(number)});
    }
    const qint64 count = copied(offered);
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(read(count).status, ReadStatus::unreadable);
    EXPECT_EQ(await(pasteboard().readFileURLs(count, noLimit)).status, ReadStatus::unreadable);
    expectThatTheNextCopyIsRead();
}

TEST_F(WaylandPasteboardReadTest, aNewerCopyEndsTheReadsOfAHungOwnerAtOnce)
{
    usePasteboard(longDeadlines());
    const qint64 hung = copied(
        {{"UTF8_STRING", "never", Manner::hangs},
         {"text/uri-list", "file:///a", Manner::stalls},
         {"text/html", "<", Manner::dribbles}});
    program().setPause(std::chrono::hours(1));
    auto text = pasteboard().read(hung, Flavour::plainText, megabyte);
    auto html = pasteboard().read(hung, Flavour::html, megabyte);
    auto files = pasteboard().readFileURLs(hung, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 3; }));
    WaylandProgram other(compositor().display());
    const qint64 next = changed([&] { other.copyText("newer"); });
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(await(std::move(html)).status, ReadStatus::unreadable);
    EXPECT_EQ(await(std::move(files)).status, ReadStatus::unreadable);
    EXPECT_EQ(read(next).value, "newer");
}

TEST_F(WaylandPasteboardReadTest, anOwnWriteEndsTheReadsOfAHungOwnerAtOnce)
{
    usePasteboard(longDeadlines());
    const qint64 hung = copied({{"UTF8_STRING", "never", Manner::hangs}});
    auto text = pasteboard().read(hung, Flavour::plainText, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 1; }));
    const qint64 own = written({.plainText = "own"});
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(read(own).value, "own");
}

TEST_F(WaylandPasteboardReadTest, whatAnOwnerWritesAfterItTookItBackIsStillRead)
{
    const qint64 count = copied({{"UTF8_STRING", "text", Manner::stalls}});
    auto text = pasteboard().read(count, Flavour::plainText, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 1; }));
    program().takeBack();
    program().closePipes();
    EXPECT_EQ(await(std::move(text)).value, "text");
}

TEST_F(WaylandPasteboardReadTest, anOwnerThatEndsBeforeItHandsOverAnythingIsUnreadable)
{
    const qint64 count = copied({{"UTF8_STRING", "text", Manner::hangs}});
    auto text = pasteboard().read(count, Flavour::plainText, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 1; }));
    program().leave();
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(WaylandPasteboardReadTest, anOverlongContentIsTakenToItsEnd)
{
    // A program that does not expect a closed pipe would die of it.
    const qint64 count =
        copied({{"text/html", QByteArray(10, 'a'), Manner::dribbles}, {"UTF8_STRING", "text"}});
    EXPECT_EQ(read(count, Flavour::html, 4).status, ReadStatus::tooLarge);
    ASSERT_TRUE(waitUntil([this] { return program().written() == 10; }));
    EXPECT_FALSE(program().isCutOff());
    EXPECT_EQ(read(count).value, "text");
}

TEST_F(WaylandPasteboardReadTest, anEndlessContentIsCutOff)
{
    usePasteboard(longDeadlines());
    const qint64 count = copied({{"text/html", QByteArray(65536, 'a'), Manner::neverEnds}});
    EXPECT_EQ(read(count, Flavour::html, megabyte).status, ReadStatus::tooLarge);
    EXPECT_TRUE(waitUntil([this] { return program().isCutOff(); }, std::chrono::seconds(30)));
    // What was read as the limit's worth, what was drained, and what a pipe holds.
    EXPECT_LT(program().written(), 260 * megabyte);
}

TEST_F(WaylandPasteboardReadTest, aContentThatTakesTooLongIsLetGoOfInTheEnd)
{
    const qint64 count = copied({{"UTF8_STRING", QByteArray(1000, 'a'), Manner::dribbles}});
    EXPECT_EQ(read(count).status, ReadStatus::unreadable);
    EXPECT_TRUE(waitUntil([this] { return program().isCutOff(); }));
}

TEST_F(WaylandPasteboardReadTest, anOverlongContentTakesNoMoreMemoryThanTheLimitAndAChunk)
{
    const qint64 warm = copied({{"text/html", QByteArray(1'000'000, 'a')}});
    EXPECT_EQ(read(warm, Flavour::html, megabyte).status, ReadStatus::read);
    const qint64 count = copied({{"text/html", QByteArray(4096, 'a'), Manner::neverEnds}});
    QFile peak(u"/proc/self/clear_refs"_s);
    ASSERT_TRUE(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    ASSERT_EQ(peak.write("5"), 1);
    const qint64 before = memory("VmRSS:");
    EXPECT_EQ(read(count, Flavour::html, 4 * megabyte).status, ReadStatus::tooLarge);
    const qint64 growth = memory("VmHWM:") - before;
    std::printf("peak above the start: %lld KiB\n", static_cast<long long>(growth / 1024));
    if (!isSanitized) {
        EXPECT_LT(growth, 6 * megabyte);
    }
}

TEST_F(WaylandPasteboardReadTest, theMainThreadIsNeverHeld)
{
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    QElapsedTimer sinceTick;
    qint64 longestGap = 0;
    QObject::connect(&probe, &QTimer::timeout, &probe, [&] {
        longestGap = std::max(longestGap, sinceTick.nsecsElapsed());
        sinceTick.start();
    });
    const auto measure = [&](const char* what, auto action) {
        longestGap = 0;
        sinceTick.start();
        probe.start(1);
        action();
        probe.stop();
        const double milliseconds = static_cast<double>(longestGap) / 1e6;
        RecordProperty(what, std::to_string(milliseconds));
        std::printf("%s: longest gap on the main thread %.1f ms\n", what, milliseconds);
        EXPECT_LT(milliseconds, 250.0) << what;
    };

    const QByteArray large(25 * megabyte, 'a');
    const qint64 count = copied({{"UTF8_STRING", large}});
    measure("large", [&] { EXPECT_EQ(read(count).value.size(), large.size()); });
    const qint64 hung = copied({{"UTF8_STRING", "never", Manner::hangs}});
    measure("hung", [&] { EXPECT_EQ(read(hung).status, ReadStatus::unreadable); });
    measure("written", [&] { written({.plainText = large}); });
    const qint64 endless = copied({{"text/html", QByteArray(65536, 'a'), Manner::neverEnds}});
    measure("endless", [&] {
        EXPECT_EQ(read(endless, Flavour::html, 25 * megabyte).status, ReadStatus::tooLarge);
    });
}

TEST_F(WaylandPasteboardReadTest, manyHungOwnersInARowDoNotExhaustIt)
{
    usePasteboard(longDeadlines());
    std::vector<std::unique_ptr<QCoro::Task<ReadResult<QByteArray>>>> reads;
    for (int round = 0; round < 200; ++round) {
        const qint64 count = copied({{"UTF8_STRING", "never", Manner::hangs}});
        reads.push_back(std::make_unique<QCoro::Task<ReadResult<QByteArray>>>(
            pasteboard().read(count, Flavour::plainText, megabyte)));
        ASSERT_TRUE(waitUntil([&] { return program().sends() == round + 1; }));
    }
    expectThatTheNextCopyIsRead();
    for (const auto& hung : reads) {
        EXPECT_EQ(await(std::move(*hung)).status, ReadStatus::unreadable);
    }
}

TEST_F(WaylandPasteboardReadTest, whatIsAwaitedWhenItGoesIsUnreadable)
{
    usePasteboard(longDeadlines());
    const qint64 count = copied({{"UTF8_STRING", "never", Manner::hangs}});
    auto text = pasteboard().read(count, Flavour::plainText, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 1; }));
    endPasteboard();
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
}

} // namespace tessly::test
