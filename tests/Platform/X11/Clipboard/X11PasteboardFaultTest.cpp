#include "X11PasteboardFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ostream>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// Sanitizers keep freed memory and slow everything down: what they show of memory is their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

struct Fault
{
    const char* name;
    QStringList arguments;
    Flavour flavour;
    qint64 byteLimit;
    ReadStatus status;

    friend std::ostream& operator<<(std::ostream& stream, const Fault& fault)
    {
        return stream << fault.name;
    }
};

class X11PasteboardFaultTest : public X11PasteboardTest
{
protected:
    X11PasteboardFaultTest() { usePasteboard(shortDeadlines()); }

    /// The most memory that this process has had resident since `forgetPeak`, in bytes.
    static qint64 peakMemory() { return memory("VmHWM:"); }
    static qint64 memory() { return memory("VmRSS:"); }
    static void forgetPeak()
    {
        QFile file(u"/proc/self/clear_refs"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        ASSERT_EQ(file.write("5"), 1);
    }

private:
    static qint64 memory(QByteArrayView field)
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
};

class X11PasteboardFaultyOwnerTest : public X11PasteboardFaultTest,
                                     public testing::WithParamInterface<Fault>
{
};

const QStringList text = {u"--text"_s, u"text"_s};
const QStringList html = {u"--target"_s, u"text/html"_s, u"fill:500000"_s};

QStringList behaving(const QStringList& content, const QString& behaviour)
{
    return content + QStringList{u"--behave"_s, u"*"_s, behaviour};
}

constexpr qint64 megabyte = 1'048'576;

const Fault faults[] = {
    {"refuses", behaving(text, u"refuse"_s), Flavour::plainText, megabyte, ReadStatus::absent},
    {"isSilent", behaving(text, u"silent"_s), Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"vanishesAtTheRequest", behaving(text, u"vanish"_s), Flavour::plainText, megabyte,
     ReadStatus::unreadable},
    {"storesNothing", behaving(text, u"no-property"_s), Flavour::plainText, megabyte,
     ReadStatus::absent},
    {"stallsBeforeTheFirstChunk",
     behaving(html, u"incr-stall"_s) + QStringList{u"--after"_s, u"0"_s}, Flavour::html, megabyte,
     ReadStatus::unreadable},
    {"stallsHalfWay", behaving(html, u"incr-stall"_s) + QStringList{u"--after"_s, u"4"_s},
     Flavour::html, megabyte, ReadStatus::unreadable},
    {"vanishesHalfWay", behaving(html, u"incr-vanish"_s) + QStringList{u"--after"_s, u"4"_s},
     Flavour::html, megabyte, ReadStatus::unreadable},
    {"neverEnds", behaving(html, u"incr-endless"_s), Flavour::html, megabyte, ReadStatus::tooLarge},
    {"announcesFourGigabytes", behaving(html, u"incr-lie"_s), Flavour::html, megabyte,
     ReadStatus::read},
    {"sendsMoreThanTheLimit",
     {u"--target"_s, u"text/html"_s, u"fill:8000000"_s},
     Flavour::html,
     megabyte,
     ReadStatus::tooLarge},
    {"sendsMoreThanTheLimitInOneProperty",
     {u"--target"_s, u"text/html"_s, u"fill:2000000"_s, u"--incr"_s, u"0"_s},
     Flavour::html,
     megabyte,
     ReadStatus::tooLarge},
    {"givesAnotherType", html + QStringList{u"--type"_s, u"text/html"_s, u"image/png"_s},
     Flavour::html, megabyte, ReadStatus::absent},
    {"givesAnotherTypeInOneProperty",
     {u"--target"_s, u"text/html"_s, u"small"_s, u"--type"_s, u"text/html"_s, u"UTF8_STRING"_s},
     Flavour::html,
     megabyte,
     ReadStatus::absent},
    {"givesFormat32",
     {u"--target"_s, u"text/html"_s, u"12345678"_s, u"--format"_s, u"text/html"_s, u"32"_s},
     Flavour::html,
     megabyte,
     ReadStatus::absent},
    {"givesFormat16",
     {u"--target"_s, u"UTF8_STRING"_s, u"12345678"_s, u"--format"_s, u"UTF8_STRING"_s, u"16"_s},
     Flavour::plainText,
     megabyte,
     ReadStatus::absent},
    {"claimsEverything", text + QStringList{u"--claims-everything"_s}, Flavour::png, megabyte,
     ReadStatus::absent},
    {"takesTooLongInAll",
     {u"--target"_s, u"text/html"_s, u"fill:500000"_s, u"--chunk"_s, u"10000"_s, u"--delay"_s,
      u"200"_s},
     Flavour::html,
     megabyte,
     ReadStatus::unreadable},
    {"isSlowButAlive",
     {u"--target"_s, u"text/html"_s, u"fill:500000"_s, u"--chunk"_s, u"80000"_s, u"--delay"_s,
      u"200"_s},
     Flavour::html,
     megabyte,
     ReadStatus::read},
    {"isSilentAboutItsTypes", text + QStringList{u"--behave"_s, u"TARGETS"_s, u"silent"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"refusesItsTypes", text + QStringList{u"--behave"_s, u"TARGETS"_s, u"refuse"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"vanishesAtTheTypes", text + QStringList{u"--behave"_s, u"TARGETS"_s, u"vanish"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"typesItsTypesAsText",
     text +
         QStringList{u"--type"_s, u"TARGETS"_s, u"STRING"_s, u"--format"_s, u"TARGETS"_s, u"8"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"listsItsTypesInBytes", text + QStringList{u"--format"_s, u"TARGETS"_s, u"8"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"listsTooManyTypes", text + QStringList{u"--extra-targets"_s, u"5000"_s}, Flavour::plainText,
     megabyte, ReadStatus::unreadable},
    {"listsManyTypes", text + QStringList{u"--extra-targets"_s, u"1000"_s}, Flavour::plainText,
     megabyte, ReadStatus::read},
    {"dribblesItsTypes",
     text +
         QStringList{
             u"--behave"_s, u"TARGETS"_s, u"incr-lie"_s, u"--chunk"_s, u"4"_s, u"--delay"_s,
             u"300"_s},
     Flavour::plainText, megabyte, ReadStatus::unreadable},
    {"listsItsTypesIncrementally", text + QStringList{u"--behave"_s, u"TARGETS"_s, u"incr-lie"_s},
     Flavour::plainText, megabyte, ReadStatus::read},
};

} // namespace

TEST_P(X11PasteboardFaultyOwnerTest, isAnOrdinaryThing)
{
    const Fault& fault = GetParam();
    const qint64 count = copied(fault.arguments);
    const auto result = read(count, fault.flavour, fault.byteLimit);
    EXPECT_EQ(result.status, fault.status);
    EXPECT_EQ(result.value.isEmpty(), fault.status != ReadStatus::read);
    expectThatTheNextCopyIsRead();
}

INSTANTIATE_TEST_SUITE_P(
    AnOwnerThat, X11PasteboardFaultyOwnerTest, testing::ValuesIn(faults),
    testing::PrintToStringParamName());

TEST_F(X11PasteboardFaultTest, noTypesAreKnownOfAnOwnerThatHangs)
{
    const qint64 count = copied(text);
    owner().hang();
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::unreadable);
    expectThatTheNextCopyIsRead();
}

TEST_F(X11PasteboardFaultTest, anOwnerThatMissesTheFirstQuestionForItsTypesIsAskedOnceMore)
{
    const qint64 count = copied(text + QStringList{u"--behave"_s, u"TARGETS"_s, u"silent-once"_s});
    const auto offered = types(count);
    ASSERT_TRUE(offered);
    EXPECT_TRUE(offered->contains(u"UTF8_STRING"_s));
    owner().command("counts");
    EXPECT_TRUE(owner().waitForLine("count TARGETS 2"));
    EXPECT_EQ(readText(count), "text");
}

TEST_F(X11PasteboardFaultTest, anOwnerIsAskedForItsTypesNoMoreThanTwice)
{
    const qint64 count = copied(text + QStringList{u"--behave"_s, u"TARGETS"_s, u"silent"_s});
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::unreadable);
    owner().command("counts");
    EXPECT_TRUE(owner().waitForLine("count TARGETS 2"));
}

TEST_F(X11PasteboardFaultTest, anOwnerThatRefusesItsTypesIsNotAskedAgain)
{
    const qint64 count = copied(text + QStringList{u"--behave"_s, u"TARGETS"_s, u"refuse"_s});
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(types(count), std::nullopt);
    owner().command("counts");
    EXPECT_TRUE(owner().waitForLine("count TARGETS 1"));
}

TEST_F(X11PasteboardFaultTest, atomsWithoutANameAreNoTypes)
{
    // As text of format 32, the bytes of the "names" are atoms that nobody has made.
    const qint64 count = copied(text);
    const auto before = types(count);
    ASSERT_TRUE(before);
    EXPECT_FALSE(before->contains(QString()));
}

TEST_F(X11PasteboardFaultTest, aNewerCopyEndsTheReadOfAHungOwnerAtOnce)
{
    usePasteboard(
        {.targets = std::chrono::hours(1),
         .stall = std::chrono::hours(1),
         .read = std::chrono::hours(1)});
    const qint64 hung = copied(behaving(text, u"silent"_s));
    auto first = pasteboard().read(hung, Flavour::plainText, megabyte);
    auto second = pasteboard().read(hung, Flavour::plainText, megabyte);
    ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));
    expectThatTheNextCopyIsRead();
    EXPECT_EQ(await(std::move(first)).status, ReadStatus::unreadable);
    EXPECT_EQ(await(std::move(second)).status, ReadStatus::unreadable);

    const qint64 silent = copied(text + QStringList{u"--behave"_s, u"TARGETS"_s, u"silent"_s});
    auto offered = pasteboard().types(silent);
    ASSERT_TRUE(owner().waitForLine("request TARGETS"));
    expectThatTheNextCopyIsRead();
    EXPECT_EQ(await(std::move(offered)), std::nullopt);

    const qint64 stalled = copied(behaving(html, u"incr-stall"_s));
    auto third = pasteboard().read(stalled, Flavour::html, megabyte);
    ASSERT_TRUE(owner().waitForLine("request text/html"));
    expectThatTheNextCopyIsRead();
    EXPECT_EQ(await(std::move(third)).status, ReadStatus::unreadable);
}

TEST_F(X11PasteboardFaultTest, whatAHungOwnerSendsLateDoesNotLandInTheNextRead)
{
    const qint64 late = copied(
        {u"--target"_s, u"UTF8_STRING"_s, u"fill:600000"_s, u"--behave"_s, u"UTF8_STRING"_s,
         u"hold"_s});
    EXPECT_EQ(read(late, Flavour::plainText).status, ReadStatus::unreadable);
    ClipboardOwner next(
        session(), {u"--text"_s, u"next"_s, u"--behave"_s, u"UTF8_STRING"_s, u"hold"_s});
    ASSERT_TRUE(waitUntil([&] { return pasteboard().changeCount() != late; }));
    auto text = pasteboard().read(pasteboard().changeCount(), Flavour::plainText, megabyte);
    ASSERT_TRUE(next.waitForLine("request UTF8_STRING"));
    owner().command("go");
    // The late transfer is taken to its end meanwhile, so that its owner is free again.
    ASSERT_TRUE(owner().waitForLine("served UTF8_STRING 600000"));
    next.command("go");
    EXPECT_EQ(await(std::move(text)).value, "next");
}

TEST_F(X11PasteboardFaultTest, anOverlongTransferIsTakenToItsEnd)
{
    const qint64 count = copied({u"--target"_s, u"text/html"_s, u"fill:8000000"_s});
    EXPECT_EQ(read(count, Flavour::html, megabyte).status, ReadStatus::tooLarge);
    EXPECT_TRUE(owner().waitForLine("served text/html 8000000"));
    // The same owner serves on.
    EXPECT_EQ(read(count, Flavour::html, 8 * megabyte).value, filling(8'000'000));
}

TEST_F(X11PasteboardFaultTest, aTransferOfTheWrongTypeIsTakenToItsEnd)
{
    const qint64 count = copied(
        {u"--target"_s, u"text/html"_s, u"fill:600000"_s, u"--type"_s, u"text/html"_s,
         u"PIXMAP"_s});
    EXPECT_EQ(read(count, Flavour::html, megabyte).status, ReadStatus::absent);
    EXPECT_TRUE(owner().waitForLine("served text/html 600000"));
}

TEST_F(X11PasteboardFaultTest, manyHungOwnersInARowDoNotExhaustIt)
{
    usePasteboard({.stall = std::chrono::milliseconds(50)});
    for (int round = 0; round < 12; ++round) {
        const qint64 count = copied(behaving(text, u"silent"_s));
        ASSERT_TRUE(types(count));
        EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::unreadable);
    }
    usePasteboard({});
    expectThatTheNextCopyIsRead();
}

TEST_F(X11PasteboardFaultTest, anOwnerThatLeavesDuringATransferAfterAnotherIsAbsent)
{
    const qint64 count =
        copied(text + html + QStringList{u"--behave"_s, u"text/html"_s, u"incr-vanish"_s});
    EXPECT_EQ(readText(count), "text");
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
}

TEST_F(X11PasteboardFaultTest, aOneShotOwnerHandsOverAnIncrementalTransferWhole)
{
    const qint64 count = copied({u"--target"_s, u"text/html"_s, u"fill:600000"_s, u"--one-shot"_s});
    EXPECT_EQ(read(count, Flavour::html).value, filling(600'000));
}

TEST_F(X11PasteboardFaultTest, anOverlongTransferTakesNoMoreMemoryThanTheLimitAndAChunk)
{
    const qint64 warm = copied({u"--target"_s, u"text/html"_s, u"fill:1000000"_s});
    EXPECT_EQ(read(warm, Flavour::html, megabyte).status, ReadStatus::read);
    for (const QString& incr : {u"100000"_s, u"0"_s}) {
        const qint64 count =
            copied({u"--target"_s, u"text/html"_s, u"fill:8000000"_s, u"--incr"_s, incr});
        forgetPeak();
        const qint64 before = memory();
        EXPECT_EQ(read(count, Flavour::html, megabyte).status, ReadStatus::tooLarge);
        ASSERT_TRUE(owner().waitForLine("served text/html 8000000"));
        const qint64 growth = peakMemory() - before;
        RecordProperty("growth", std::to_string(growth));
        std::printf("peak above the start: %lld KiB\n", static_cast<long long>(growth / 1024));
        if (!isSanitized) {
            EXPECT_LT(growth, 4 * megabyte);
        }
    }
}

TEST_F(X11PasteboardFaultTest, theMainThreadIsNeverHeld)
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

    usePasteboard({});
    const qint64 slow = copied(
        {u"--target"_s, u"UTF8_STRING"_s, u"fill:26214400"_s, u"--chunk"_s, u"1000000"_s,
         u"--delay"_s, u"5"_s});
    measure("slowOwner", [&] {
        EXPECT_EQ(read(slow, Flavour::plainText, 26'214'400).status, ReadStatus::read);
    });
    usePasteboard(shortDeadlines());
    const qint64 hung = copied(behaving(html, u"incr-stall"_s));
    measure(
        "hungOwner", [&] { EXPECT_EQ(read(hung, Flavour::html).status, ReadStatus::unreadable); });
    const QByteArray large = filling(26'214'400);
    measure("write", [&] {
        changed([&] { EXPECT_TRUE(pasteboard().write({PasteboardItem{.plainText = large}})); });
        EXPECT_EQ(xclip(u"UTF8_STRING"_s)->size(), large.size());
    });
}

} // namespace tessly::test
