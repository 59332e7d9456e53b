#include "HistoryFile.h"
#include "QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A history that was filled by a clock that is then set back.
class ClipDates : public testing::Test
{
protected:
    ClipDates() { history.open(); }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }
    QStringList previews() { return HistoryFile::previews(all()); }

    void fill(int clips)
    {
        for (int i = 0; i < clips; ++i) {
            history.saveText("old " + QByteArray::number(i));
        }
    }

    /// No entry is dated later than `now`, and none was used before it was made.
    void expectNothingLaterThan(double now)
    {
        for (const Clip& clip : all()) {
            EXPECT_LE(clip.lastUsedAt, now);
            EXPECT_LE(clip.createdAt, clip.lastUsedAt);
        }
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    HistoryFile history;
};

} // namespace

TEST_F(ClipDates, aSavedClipIsKeptWhateverTheClock)
{
    fill(10);
    for (const double time : {999'000.0, 998'000.0, 0.0, -5.0, 997'000.0}) {
        history.now = time;
        const QByteArray text = "new at " + QByteArray::number(time);
        history.saveText(text, 10);
        EXPECT_EQ(previews().first(), QString::fromLatin1(text));
        EXPECT_EQ(all().size(), 10U);
        expectNothingLaterThan(time);
    }
    // What was dropped are the oldest, in the order of the copies.
    EXPECT_EQ(
        previews(),
        QStringList(
            {u"new at 997000"_s, u"new at -5"_s, u"new at 0"_s, u"new at 998000"_s,
             u"new at 999000"_s, u"old 9"_s, u"old 8"_s, u"old 7"_s, u"old 6"_s, u"old 5"_s}));
    expectSound();
}

TEST_F(ClipDates, aSavedClipIsKeptWhenTheClockStandsStill)
{
    for (int i = 0; i < 15; ++i) {
        history.now = 1000;
        const QByteArray text = QByteArray::number(i);
        history.saveText(text, 10);
        EXPECT_EQ(previews().first(), QString::fromLatin1(text));
    }
    EXPECT_EQ(previews().last(), u"5"_s);
}

TEST_F(ClipDates, aRecopiedClipComesToTheTop)
{
    fill(5);
    history.now = 500;
    const Clip again = history.saveText("old 2");
    EXPECT_EQ(again.lastUsedAt, 500);
    EXPECT_LE(again.createdAt, 500);
    EXPECT_EQ(again.copyCount, 2);
    EXPECT_EQ(all().front(), again);
    EXPECT_EQ(
        previews(), QStringList({u"old 2"_s, u"old 4"_s, u"old 3"_s, u"old 1"_s, u"old 0"_s}));
    expectNothingLaterThan(500);
    expectSound();
}

TEST_F(ClipDates, aUsedClipComesToTheTop)
{
    fill(4);
    history.now = 500;
    history.database().markUsed(all().back().id, true);
    EXPECT_EQ(previews(), QStringList({u"old 0"_s, u"old 3"_s, u"old 2"_s, u"old 1"_s}));
    expectNothingLaterThan(500);
    expectSound();
}

TEST_F(ClipDates, entriesOfALaterClockAreDatedToJustBeforeNow)
{
    history.now = 1000;
    history.saveText("before");
    history.now = 2'000'000'000;
    fill(3);
    const Clip pinned = history.saveText("pinned");
    history.database().setPinned(true, pinned.id);
    history.now = 1'700'000'000;
    history.saveText("now");
    EXPECT_EQ(
        previews(),
        QStringList({u"pinned"_s, u"now"_s, u"old 2"_s, u"old 1"_s, u"old 0"_s, u"before"_s}));
    expectNothingLaterThan(1'700'000'000);
    for (const Clip& clip : all()) {
        EXPECT_TRUE(clip.lastUsedAt > 1'699'999'999 || clip.lastUsedAt == 1000);
        EXPECT_EQ(clip.createdAt, clip.lastUsedAt);
    }
    expectSound();
}

TEST_F(ClipDates, entriesJustBeforeNowMakeRoomForThem)
{
    history.now = 999.9999999;
    history.saveText("a moment ago");
    fill(3);
    history.now = 1000;
    history.saveText("now");
    EXPECT_EQ(
        previews(), QStringList({u"now"_s, u"old 2"_s, u"old 1"_s, u"old 0"_s, u"a moment ago"_s}));
    expectNothingLaterThan(1000);
}

TEST_F(ClipDates, entriesThatAreNotLaterStayAsTheyAre)
{
    fill(3);
    const std::vector<Clip> before = all();
    history.saveText("new");
    history.database().setPinned(true, before.front().id);
    std::vector<Clip> after = all();
    EXPECT_EQ(after[0].lastUsedAt, before[0].lastUsedAt);
    EXPECT_EQ(after[2], before[1]);
    EXPECT_EQ(after[3], before[2]);
}

TEST_F(ClipDates, aSaveThatFailsLeavesTheDatesAlone)
{
    fill(3);
    const std::vector<Clip> before = all();
    history.execute(
        "CREATE TRIGGER refusal BEFORE INSERT ON clips BEGIN SELECT raise(FAIL, 'no'); END");
    history.now = 500;
    EXPECT_THROW(history.saveText("new"), ClipStoreError);
    EXPECT_EQ(all(), before);
}

} // namespace tessly::test
