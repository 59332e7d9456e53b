#include "ClipDatabase.h"
#include "ClosedHistory.h"
#include "ExportedClips.h"
#include "FaultVFS.h"
#include "ManualExecutor.h"
#include "TestSupport.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

#include <algorithm>
#include <set>
#include <tuple>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

constexpr qint64 noLimit = 10'000;

ImportOutcome outcomeOf(qint64 added, qint64 present)
{
    return {.added = added, .present = present, .refused = {}};
}

class ClipImportTest : public testing::Test
{
protected:
    ImportOutcome import(const std::vector<Clip>& clips, qint64 maximum = noLimit)
    {
        return m_database->importLines(linesOf(clips), maximum);
    }
    static QByteArray linesOf(const std::vector<Clip>& clips)
    {
        QByteArray lines;
        for (const Clip& clip : clips) {
            lines += lineOf(clip);
        }
        return lines;
    }
    Clip save(const QByteArray& text, qint64 maximum = noLimit)
    {
        return m_database->save(ClipPayload({.plainText = text}), u"Program"_s, {}, maximum);
    }
    [[nodiscard]] std::vector<Clip> stored() const
    {
        std::vector<Clip> clips;
        ClosedHistory::forEach(
            m_path, [&](const Clip& clip) { clips.push_back(clip); },
            [](qint64 position, const QString& /*reason*/) { ADD_FAILURE() << position; });
        return clips;
    }
    [[nodiscard]] std::vector<std::string> texts() const
    {
        std::vector<std::string> texts;
        for (const Clip& clip : stored()) {
            texts.push_back(clip.payload.held()->plainText().value_or(QByteArray()).toStdString());
        }
        return texts;
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"history.sqlite"_s);
    double m_now = 1'700'000'000;
    std::unique_ptr<ClipDatabase> m_database =
        std::make_unique<ClipDatabase>(m_path, [this] { return m_now++; });
};

TEST_F(ClipImportTest, EveryEntryIsInTheHistoryAsItWas)
{
    const std::vector<Clip> clips = clipsOfEveryKind();
    EXPECT_EQ(import(clips), outcomeOf(std::ssize(clips), 0));
    std::vector<Clip> expected = clips;
    std::ranges::stable_sort(expected, [](const Clip& a, const Clip& b) {
        return std::tuple(a.isPinned, a.pinOrder.value_or(-1), a.lastUsedAt) >
               std::tuple(b.isPinned, b.pinOrder.value_or(-1), b.lastUsedAt);
    });
    EXPECT_EQ(stored(), expected);
}

TEST_F(ClipImportTest, WhatIsImportedIsFound)
{
    import({textClip("needle in a haystack"), clipOf({.imagePNG = smallPNG}, 2)});
    EXPECT_THAT(m_database->search(u"needle"_s, {}, -1), SizeIs(1));
    EXPECT_THAT(m_database->search(u"screenshot"_s, {}, -1), SizeIs(1));
    EXPECT_THAT(m_database->search({}, ClipKind::image, -1), SizeIs(1));
    EXPECT_EQ(m_database->scrub(), ClipStore::Upkeep::done);
}

TEST_F(ClipImportTest, WhatIsThereAlreadyStaysAsItIs)
{
    const Clip there = save("text");
    Clip imported = pinned(textClip("text"), 7);
    imported.copyCount = 99;
    EXPECT_EQ(import({imported}), outcomeOf(0, 1));
    ASSERT_THAT(stored(), SizeIs(1));
    EXPECT_EQ(stored().front(), there);
}

TEST_F(ClipImportTest, ImportingTwiceChangesNothing)
{
    import(clipsOfEveryKind());
    const std::vector<Clip> before = stored();
    EXPECT_EQ(import(clipsOfEveryKind()), outcomeOf(0, std::ssize(before)));
    EXPECT_EQ(stored(), before);
}

TEST_F(ClipImportTest, AContentThatComesTwiceIsOneEntry)
{
    EXPECT_EQ(import({textClip("text", 1), textClip("text", 2)}), outcomeOf(1, 1));
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(ClipImportTest, AnIdentifierThatIsTakenIsReplaced)
{
    const Clip there = save("there");
    Clip same = textClip("other");
    same.id = there.id;
    EXPECT_EQ(import({same, textClip("one", 3), textClip("two", 3)}), outcomeOf(3, 0));
    EXPECT_THAT(texts(), ElementsAre("there", "one", "two", "other"));
    std::set<QUuid> ids;
    for (const Clip& clip : stored()) {
        ids.insert(clip.id);
        if (clip.id == there.id) {
            EXPECT_EQ(clip, there);
        }
    }
    EXPECT_THAT(ids, SizeIs(4));
}

TEST_F(ClipImportTest, RefusedLinesAreToldAndTheOthersAdded)
{
    QByteArray lines = lineOf(textClip("one", 1)) + "nonsense\n\n \r\n" +
                       lineOf(textClip("two", 2)).replace("\"copyCount\":2", "\"copyCount\":0");
    // The last needs no end.
    lines += lineOf(textClip("three", 3)).chopped(1);
    const ImportOutcome outcome = m_database->importLines(lines, noLimit);
    EXPECT_EQ(outcome.added, 2);
    EXPECT_THAT(
        outcome.refused,
        ElementsAre(
            ImportOutcome::Refusal{1, u"it is no entry: not a JSON object of the right form"_s},
            ImportOutcome::Refusal{4, u"copyCount is out of range"_s}));
    EXPECT_THAT(texts(), ElementsAre("three", "one"));
}

TEST_F(ClipImportTest, NothingGoesToMakeRoom)
{
    for (int i = 0; i < 10; ++i) {
        save("there " + QByteArray::number(i));
    }
    const std::vector<Clip> before = stored();
    Clip newer = textClip("newer");
    newer.lastUsedAt = m_now + 1000;
    const ImportOutcome outcome = import({newer, pinned(textClip("pinned", 2), 1)}, 10);
    EXPECT_EQ(outcome.added, 1) << "those that are pinned have no limit";
    EXPECT_THAT(
        outcome.refused,
        ElementsAre(ImportOutcome::Refusal{0, u"the history has the 10 entries that it keeps"_s}));
    std::vector<Clip> after = stored();
    EXPECT_EQ(after.front().payload.held()->plainText(), "pinned");
    after.erase(after.begin());
    EXPECT_EQ(after, before);
}

TEST_F(ClipImportTest, TheFirstLinesFillTheRoomThatThereIs)
{
    for (int i = 0; i < 9; ++i) {
        save("there " + QByteArray::number(i));
    }
    const ImportOutcome outcome =
        import({textClip("newest", 9), textClip("older", 5), textClip("there 3", 4)}, 10);
    EXPECT_EQ(outcome.added, 1);
    EXPECT_EQ(outcome.present, 1) << "what is there needs no room";
    EXPECT_THAT(outcome.refused, SizeIs(1));
    // And the next copy drops none but the oldest.
    save("copied", 10);
    EXPECT_EQ(texts().front(), "copied");
    EXPECT_THAT(texts(), testing::Not(testing::Contains("newest")));
    EXPECT_THAT(texts(), SizeIs(10));
}

TEST_F(ClipImportTest, ALimitBelowTenIsTen)
{
    std::vector<Clip> clips;
    for (int i = 1; i <= 12; ++i) {
        clips.push_back(textClip(QByteArray::number(i), i));
    }
    EXPECT_EQ(import(clips, 1).added, 10);
}

TEST_F(ClipImportTest, TheNextCopyComesBeforeWhatIsDatedAheadOfIt)
{
    Clip ahead = textClip("ahead");
    ahead.lastUsedAt = m_now + 3600;
    EXPECT_EQ(import({ahead}).added, 1);
    EXPECT_THAT(texts(), ElementsAre("ahead"));
    save("copied");
    EXPECT_THAT(texts(), ElementsAre("copied", "ahead"));
}

TEST_F(ClipImportTest, PinningAfterwardsPutsOnTop)
{
    import({pinned(textClip("low", 1), -3), pinned(textClip("high", 2), 4'000'000'000'000'000)});
    m_database->setPinned(true, save("pinned now").id);
    EXPECT_THAT(texts(), ElementsAre("pinned now", "high", "low"));
}

TEST_F(ClipImportTest, AFileThatIsGoneIsMadeAnew)
{
    save("lost");
    QFile::remove(m_path);
    EXPECT_EQ(import({textClip("text")}).added, 1);
    EXPECT_THAT(texts(), ElementsAre("text"));
}

TEST_F(ClipImportTest, OfAPartThatFailsNothingIsThere)
{
    save("there");
    const std::vector<Clip> before = stored();
    m_database.reset();
    FaultVFS faults;
    m_database = std::make_unique<ClipDatabase>(m_path, [this] { return m_now++; });
    std::vector<Clip> clips = clipsOfEveryKind();
    // A large one is some hundred writes more.
    clips.pop_back();
    int tried = 0;
    for (bool hasFailed = true; hasFailed && tried < 500; ++tried) {
        faults.fail(
            FaultVFS::Call::write, FaultVFS::Fault::noSpace, tried + 1, FaultVFS::Span::fromThenOn);
        try {
            EXPECT_EQ(import(clips).added, std::ssize(clips));
        } catch (const ClipStoreError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("disk is full"));
        }
        hasFailed = faults.hasFailed();
        faults.failNothing();
        if (hasFailed) {
            ASSERT_EQ(stored(), before) << "write " << tried + 1;
        }
    }
    EXPECT_GT(tried, 10);
    EXPECT_THAT(stored(), SizeIs(clips.size() + 1));
    m_database.reset();
}

TEST_F(ClipImportTest, TheStoreAddsWhatItsCallerHasByThen)
{
    m_database.reset();
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& worker = *executor;
    ClipStore store(m_path, [this] { return m_now++; }, std::move(executor));
    const auto lines = std::make_shared<QByteArray>(lineOf(textClip("one")));
    auto importing = store.importLines([lines] { return QByteArrayView(*lines); }, noLimit);
    while (worker.runOne()) {
    }
    EXPECT_EQ(await(std::move(importing)), outcomeOf(1, 0));
    EXPECT_THAT(texts(), ElementsAre("one"));
}

} // namespace
} // namespace tessly::test
