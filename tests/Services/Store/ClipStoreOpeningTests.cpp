#include "AppPaths.h"
#include "ClipDatabase.h"
#include "ClipStore.h"
#include "FaultVFS.h"
#include "HeldCheck.h"
#include "HistoryFile.h"
#include "InlineExecutor.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryFolder.h"
#include "SQLiteHook.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"
#include "UI/QtPrinting.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cstring>

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

/// A store whose worker is still at the check of a history from before.
class ClipStoreOpeningTest : public testing::Test
{
protected:
    ~ClipStoreOpeningTest() override
    {
        // The store waits for it.
        if (m_check) {
            m_check->letGo();
        }
        m_store.reset();
        const auto isDone = [](const QCoro::Task<>& operation) { return operation.isReady(); };
        EXPECT_TRUE(waitUntil([&] { return std::ranges::all_of(m_notes, isDone); }));
    }

    /// The history from before: one clip for each text, the last the latest.
    std::vector<Clip> fill(const QByteArrayList& texts)
    {
        ClipDatabase database(m_path, [this] { return double(m_now++); });
        std::vector<Clip> clips;
        for (const QByteArray& plainText : texts) {
            clips.push_back(database.save(text(plainText), {}, {}, maximum));
        }
        return clips;
    }
    void executeSQL(const char* sql) const { SQLiteConnection(m_path).execute(sql); }

    /// Overwrites the first page on which these bytes are, or the first page of a table.
    void damage(const QByteArray& bytes)
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        const qsizetype page = file.readAll().indexOf(bytes) / pageSize;
        ASSERT_GT(page, 0);
        file.seek(page * pageSize);
        file.write(QByteArray(pageSize, 'x'));
    }
    void damageTable(const char* name)
    {
        qint64 page = 0;
        {
            const SQLiteConnection connection(m_path);
            ClipStatement statement(
                connection, "SELECT rootpage FROM sqlite_master WHERE name = ?;");
            ASSERT_TRUE(statement.text(1, name).next("no such table"));
            page = statement.row().integer(0);
        }
        QFile file(m_path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        file.seek((page - 1) * pageSize);
        file.write(QByteArray(pageSize, 'x'));
    }

    ClipStore::Means means()
    {
        return {
            .databasePath = m_path,
            .now = [this] { return double(m_now); },
            .executor = std::make_unique<ThreadExecutor>("store"),
            .makeReader = [] { return std::make_unique<ThreadExecutor>("reader"); },
            .setAside = [this] { return AppPaths::recoverDatabaseFiles(m_folder.path()); },
            .maximumHistory = maximum};
    }
    /// Opens it as far as to the check, which is held.
    void openHeld(ClipStore::Means means)
    {
        m_check.emplace();
        m_store = std::make_unique<ClipStore>(std::move(means));
        m_check->waitUntilBegun();
        ASSERT_TRUE(m_store->isOpening());
    }
    void openHeld() { openHeld(means()); }
    ClipStore::Opening letGo()
    {
        m_check->letGo();
        return await(m_store->opened());
    }
    QCoro::Task<ClipRescue> rescue(const ClipStore::Opening& opening)
    {
        return m_store->rescue(*opening.damagedFolder + u"/history.sqlite"_s, maximum);
    }
    /// As the next start finds it.
    std::vector<QByteArray> nextStart()
    {
        m_store.reset();
        m_check.reset();
        m_store = std::make_unique<ClipStore>(means());
        EXPECT_EQ(await(m_store->opened()), ClipStore::Opening());
        return listed();
    }

    QCoro::Task<Clip> save(const ClipPayload& payload)
    {
        ++m_now;
        return m_store->save(payload, u"Editor"_s, u"editor"_s, maximum);
    }
    QCoro::Task<Clip> save(const QByteArray& plainText) { return save(text(plainText)); }
    std::vector<Clip> list(const QString& query = {}, std::optional<ClipKind> kind = {})
    {
        return await(m_store->search(query, kind, -1));
    }
    std::vector<QByteArray> listed(const QString& query = {})
    {
        std::vector<QByteArray> texts;
        for (const Clip& clip : list(query)) {
            const ClipPayload* const payload = clip.payload.held();
            texts.push_back(payload ? payload->plainText().value_or("no text") : "not held");
        }
        return texts;
    }
    /// Notes the end of an operation under a name.
    template <typename Result>
    void note(QCoro::Task<Result> operation, const char* name)
    {
        m_notes.push_back(whenNoted(std::move(operation), name));
    }
    template <typename Result>
    QCoro::Task<> whenNoted(QCoro::Task<Result> operation, const char* name)
    {
        try {
            co_await operation;
            m_done.emplace_back(name);
        } catch (const std::exception& error) {
            m_done.push_back(std::string(name) + ": " + error.what());
        }
    }

    static ClipPayload text(const QByteArray& text) { return ClipPayload({.plainText = text}); }
    static ClipPayload megabytes(qsizetype count, char fill)
    {
        return ClipPayload({.imagePNG = QByteArray(count * 1'000'000, fill)});
    }
    static QStringList logged(const LogCapture& log)
    {
        QStringList lines;
        for (const LogCapture::Line& line : log.lines(u"com.brackmoor.tessly.ClipStore"_s)) {
            lines.append(line.text);
        }
        return lines;
    }

    static constexpr qint64 maximum = 500;
    static constexpr qsizetype pageSize = HistoryFile::pageSize;
    static inline const QString givenUp =
        u"A copy was not recorded: Too much was copied while the history was being checked."_s;

    MemoryFolder m_folder;
    QString m_path = m_folder.filePath(u"history.sqlite"_s);
    std::atomic<qint64> m_now = 1'000;
    std::optional<HeldCheck> m_check;
    std::unique_ptr<ClipStore> m_store;
    std::vector<std::string> m_done;
    std::vector<QCoro::Task<>> m_notes;
};

} // namespace

// Reading and recording

TEST_F(ClipStoreOpeningTest, ListsAndRecordsBeforeTheHistoryIsChecked)
{
    fill({"one", "two"});
    openHeld();
    EXPECT_THAT(listed(), ElementsAre("two", "one"));
    EXPECT_THAT(listed(u"on"_s), ElementsAre("one"));
    auto saving = save("three");
    EXPECT_THAT(listed(), ElementsAre("three", "two", "one"));
    EXPECT_EQ(await(m_store->statistics()).totalItems, 3);
    const Clip early = list().front();

    EXPECT_EQ(letGo(), ClipStore::Opening());
    EXPECT_FALSE(m_store->isOpening());
    EXPECT_EQ(await(std::move(saving)), early) << "it is what was listed";
    EXPECT_EQ(list().front(), early);
    EXPECT_THAT(listed(), ElementsAre("three", "two", "one"));
}

TEST_F(ClipStoreOpeningTest, PositionsCountTheCopiesThatWait)
{
    const std::vector<Clip> before = fill({"one", "two", "three"});
    executeSQL("UPDATE clips SET is_pinned = 1, pin_order = 1 WHERE plain_text = 'one'");
    openHeld();
    note(save("new"), "new");
    note(save("two"), "two");
    note(save("one"), "one");
    const std::vector<QByteArray> expected = {"one", "two", "new", "three"};
    EXPECT_EQ(listed(), expected);
    for (int position = 1; position <= 4; ++position) {
        const std::optional<Clip> clip = await(m_store->clip(position));
        ASSERT_TRUE(clip);
        EXPECT_EQ(clip->payload.held()->plainText(), expected[std::size_t(position) - 1]);
    }
    EXPECT_FALSE(await(m_store->clip(5)));
    const auto summaries = await(m_store->summaries({}, std::nullopt, -1));
    letGo();
    EXPECT_EQ(*summaries, *await(m_store->summaries({}, std::nullopt, -1)))
        << "as it is once they are saved";
    EXPECT_EQ(summaries->at(1).id, before[1].id);
    EXPECT_EQ(summaries->at(1).copyCount, 2);
}

TEST_F(ClipStoreOpeningTest, FindsTheCopiesThatWaitByTheirWordsAndKinds)
{
    fill({"a red rose"});
    openHeld();
    note(save("The Red Balloon"), "text");
    note(save(megabytes(1, 'i')), "image");
    EXPECT_THAT(listed(u"red"_s), ElementsAre("The Red Balloon", "a red rose"));
    EXPECT_THAT(listed(u"balloon  the"_s), ElementsAre("The Red Balloon"));
    EXPECT_THAT(list(u"absent"_s), IsEmpty());
    EXPECT_THAT(list({}, ClipKind::image), SizeIs(1));
    EXPECT_THAT(await(m_store->search({}, std::nullopt, 2)), SizeIs(2)) << "the limit holds";
}

TEST_F(ClipStoreOpeningTest, ContentThatWaitsOrIsStoredCanBePasted)
{
    const std::vector<Clip> before = fill({"stored"});
    openHeld();
    const ClipPayload large = megabytes(1, 'i');
    note(save(large), "image");
    EXPECT_EQ(await(m_store->payload(before[0].id)), text("stored"));
    const Clip listedImage = list().front();
    EXPECT_EQ(listedImage.payload.held(), nullptr) << "more than a list holds";
    EXPECT_EQ(await(m_store->payload(listedImage.id)), large);
}

TEST_F(ClipStoreOpeningTest, ContentThatIsNotWhatWasStoredIsReadOnlyAfterTheCheck)
{
    const std::vector<Clip> before = fill({"stored"});
    executeSQL("UPDATE clips SET plain_text = 'another''s'");
    openHeld();
    EXPECT_THAT(listed(), ElementsAre("not held"));
    auto reading = m_store->payload(before[0].id);
    // In its order behind that.
    EXPECT_EQ(await(m_store->statistics()).totalItems, 1);
    EXPECT_FALSE(reading.isReady());
    letGo();
    EXPECT_EQ(await(std::move(reading)), text("another's"));
}

TEST_F(ClipStoreOpeningTest, WhatCannotBeReadBeforeTheCheckIsReadAfterIt)
{
    // There is no file yet.
    openHeld();
    auto listing = m_store->search({}, std::nullopt, -1);
    note(save("one"), "one");
    letGo();
    await(std::move(listing));
    EXPECT_THAT(listed(), ElementsAre("one"));
}

TEST_F(ClipStoreOpeningTest, ASearchThatIsOvertakenEndsBeforeTheCheckDoes)
{
    fill({"one"});
    openHeld();
    std::stop_source overtaken;
    overtaken.request_stop();
    EXPECT_THROW(
        await(m_store->search({}, std::nullopt, 10, {}, overtaken.get_token())), ClipStoreError);
    EXPECT_TRUE(m_store->isOpening());
}

// What waits

TEST_F(ClipStoreOpeningTest, SavesTheCopiesInTheirOrderAndAsOfTheirTimes)
{
    openHeld();
    m_now = 2'000;
    note(save("a"), "a");
    m_now = 3'000;
    note(save("b"), "b");
    m_now = 4'000;
    note(save("a"), "a again");
    m_now = 9'000;
    letGo();
    const std::vector<Clip> clips = list();
    ASSERT_THAT(listed(), ElementsAre("a", "b"));
    EXPECT_EQ(clips[0].createdAt, 2'001);
    EXPECT_EQ(clips[0].lastUsedAt, 4'001);
    EXPECT_EQ(clips[0].copyCount, 2);
    EXPECT_EQ(clips[1].lastUsedAt, 3'001);
    EXPECT_EQ(clips[1].sourceAppName, u"Editor"_s);
    EXPECT_THAT(m_done, ElementsAre("a", "b", "a again"));
}

TEST_F(ClipStoreOpeningTest, TheOldestCopiesMakeRoomForTheLatest)
{
    fill({});
    openHeld();
    const LogCapture log;
    for (const char fill : {'1', '2', '3', '4', '5'}) {
        note(save(megabytes(10, fill)), "saved");
    }
    EXPECT_THAT(list(), SizeIs(5));
    EXPECT_THAT(logged(log), IsEmpty());
    note(save(megabytes(11, '6')), "saved");
    EXPECT_TRUE(waitUntil([this] { return m_done.size() == 2; })) << "let go of at once";
    EXPECT_EQ(m_done[0], "saved: Too much was copied while the history was being checked.");
    EXPECT_EQ(logged(log), QStringList({givenUp, givenUp}));
    EXPECT_THAT(list(), SizeIs(4));
    letGo();
    EXPECT_THAT(list(), SizeIs(4));
    EXPECT_TRUE(waitUntil([this] { return m_done.size() == 6; }));
    EXPECT_EQ(await(m_store->payload(list()[0].id)), megabytes(11, '6'));
    EXPECT_EQ(await(m_store->payload(list()[3].id)), megabytes(10, '3'));
}

TEST_F(ClipStoreOpeningTest, ACopyThatIsTooLargeToWaitCostsNoOther)
{
    openHeld();
    const LogCapture log;
    note(save("kept"), "kept");
    EXPECT_THROW(await(save(megabytes(51, 'x'))), CopyGivenUp);
    EXPECT_EQ(logged(log), QStringList({givenUp}));
    letGo();
    EXPECT_THAT(listed(), ElementsAre("kept"));
}

TEST_F(ClipStoreOpeningTest, WhatChangesEntriesWaitsInItsOrderAndIsNotReportedBefore)
{
    const std::vector<Clip> before = fill({"a", "b", "c", "d"});
    openHeld();
    note(m_store->setPinned(true, before[0].id), "pinned");
    note(m_store->remove(before[1].id), "deleted");
    note(save("cleared"), "saved");
    note(m_store->clear(false), "cleared");
    note(save("e"), "saved");
    note(m_store->markUsed(before[0].id, true), "used");
    note(m_store->trimHistory(10), "trimmed");
    EXPECT_EQ(await(m_store->scrub()), ClipStore::Upkeep::hindered) << "not now";
    EXPECT_THAT(listed(), SizeIs(6));
    EXPECT_THAT(m_done, IsEmpty());
    letGo();
    EXPECT_THAT(listed(), ElementsAre("a", "e"));
    EXPECT_THAT(
        m_done, ElementsAre("pinned", "deleted", "saved", "cleared", "saved", "used", "trimmed"));
    EXPECT_THAT(nextStart(), ElementsAre("a", "e"));
}

TEST_F(ClipStoreOpeningTest, AnEntryThatWaitsCanBeDeleted)
{
    fill({"a"});
    openHeld();
    note(save("b"), "saved");
    note(m_store->remove(list().front().id), "deleted");
    letGo();
    EXPECT_THAT(listed(), ElementsAre("a"));
    EXPECT_THAT(m_done, ElementsAre("saved", "deleted"));
}

// The end of the program

TEST_F(ClipStoreOpeningTest, TheEndCutsTheCheckShortAndSavesWhatWaits)
{
    fill({"one" + QByteArray(600, ' '), "two"});
    // A check that goes on would find it.
    damageTable("clips_kind_index");
    openHeld();
    note(save("three"), "saved");
    auto finishing = m_store->finish();
    EXPECT_EQ(letGo(), ClipStore::Opening());
    await(std::move(finishing));
    EXPECT_EQ(m_done.size(), 1U);

    m_store.reset();
    m_check.reset();
    m_store = std::make_unique<ClipStore>(means());
    EXPECT_TRUE(await(m_store->opened()).damagedFolder) << "the next start checks again";
}

TEST_F(ClipStoreOpeningTest, WhatACheckSaysThatIsInterruptedIsNotBelieved)
{
    fill({"one", "two"});
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    ClipStore::Means interrupted = means();
    interrupted.executor = std::move(executor);
    // When the check's first step begins, whose answer then is that pages are missing.
    const std::function<void()> finish = [this] {
        if (m_notes.empty()) {
            note(m_store->finish(), "finished");
        }
    };
    const SQLiteHook hook([&finish](sqlite3* connection) {
        const auto begun = [](unsigned, void* finish, void*, void* text) {
            if (std::strstr(static_cast<const char*>(text), "quick_check") != nullptr) {
                (*static_cast<const std::function<void()>*>(finish))();
            }
            return 0;
        };
        sqlite3_trace_v2(
            connection, SQLITE_TRACE_STMT, begun, const_cast<std::function<void()>*>(&finish));
    });
    m_store = std::make_unique<ClipStore>(std::move(interrupted));
    auto saving = save("three");
    while (jobs.runOne()) {
    }
    EXPECT_EQ(await(m_store->opened()), ClipStore::Opening());
    EXPECT_EQ(await(std::move(saving)).copyCount, 1);
    EXPECT_THAT(m_notes, SizeIs(1)) << "there was a check";
    m_store.reset();
    EXPECT_THAT(nextStart(), ElementsAre("three", "two", "one"));
}

TEST_F(ClipStoreOpeningTest, AStoreThatGoesSavesWhatWaits)
{
    fill({"one"});
    openHeld();
    note(save("two"), "saved");
    m_check->letGo();
    m_store.reset();
    EXPECT_THAT(nextStart(), ElementsAre("two", "one"));
}

// Damage

TEST_F(ClipStoreOpeningTest, CopiesThatWaitGoIntoTheFreshHistoryThatTakesADamagedOnesPlace)
{
    QFile file(m_path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    const QByteArray damaged(8192, 'x');
    file.write(damaged);
    file.close();
    openHeld();
    note(save("one"), "one");
    note(save("two"), "two");
    // Behind them, however soon it is known that the file cannot be read.
    auto listing = m_store->search({}, std::nullopt, -1);
    const LogCapture log;
    const ClipStore::Opening opening = letGo();
    ASSERT_TRUE(opening.damagedFolder);
    EXPECT_THAT(
        logged(log), Contains(u"The history is damaged: Clipboard database integrity check failed: "
                              "file is not a database"_s));
    EXPECT_THAT(await(std::move(listing)), SizeIs(2)) << "answered after the check";
    EXPECT_THAT(listed(), ElementsAre("two", "one"));
    EXPECT_THAT(m_done, ElementsAre("one", "two"));
    QFile original(*opening.damagedFolder + u"/history.sqlite"_s);
    ASSERT_TRUE(original.open(QFile::ReadOnly));
    EXPECT_EQ(original.readAll(), damaged);
}

TEST_F(ClipStoreOpeningTest, WhatTheUserDidToEntriesOfADamagedHistoryIsDone)
{
    QByteArrayList texts;
    for (int i = 0; i < 20; ++i) {
        texts.append("text " + QByteArray::number(i) + QByteArray(600, ' ') + '.');
    }
    const std::vector<Clip> before = fill(texts);
    damage("text 5 ");
    openHeld();
    EXPECT_EQ(await(m_store->statistics()).totalItems, 20);
    note(m_store->remove(before[18].id), "deleted");
    note(m_store->setPinned(true, before[17].id), "pinned");
    note(save("new"), "saved");
    const ClipStore::Opening opening = letGo();
    ASSERT_TRUE(opening.damagedFolder);
    EXPECT_GT(await(rescue(opening)).kept, 10);
    for (const QFileInfo& open : QDir(u"/proc/self/fd"_s).entryInfoList(QDir::Files)) {
        EXPECT_FALSE(open.symLinkTarget().startsWith(*opening.damagedFolder));
    }
    EXPECT_FALSE(AppPaths::unfinishedRecovery(m_folder.path()));
    const std::vector<QByteArray> after = listed();
    ASSERT_GT(after.size(), 3U);
    EXPECT_EQ(after[0], texts[17]);
    EXPECT_EQ(after[1], "new");
    EXPECT_EQ(after[2], texts[19]);
    EXPECT_EQ(after[3], texts[16]) << "18 does not come back";
    EXPECT_THAT(m_done, ElementsAre("deleted", "pinned", "saved"));
    EXPECT_EQ(nextStart(), after);
}

TEST_F(ClipStoreOpeningTest, ClearingADamagedHistoryKeepsWhatIsPinned)
{
    QByteArrayList texts;
    for (int i = 0; i < 20; ++i) {
        texts.append("text " + QByteArray::number(i) + QByteArray(600, ' ') + '.');
    }
    fill(texts);
    executeSQL("UPDATE clips SET is_pinned = 1, pin_order = 1 WHERE plain_text LIKE 'text 15 %'");
    damage("text 0 ");
    openHeld();
    note(save("before"), "saved");
    note(m_store->clear(false), "cleared");
    note(save("after"), "saved");
    const ClipStore::Opening opening = letGo();
    await(rescue(opening));
    EXPECT_THAT(listed(), ElementsAre(texts[15], "after"));
    EXPECT_THAT(nextStart(), ElementsAre(texts[15], "after"));
}

TEST_F(ClipStoreOpeningTest, ClearingAllOfADamagedHistoryBringsNothingOver)
{
    fill({"one", "two"});
    damageTable("clips_kind_index");
    openHeld();
    note(m_store->clear(true), "cleared");
    note(save("after"), "saved");
    const ClipStore::Opening opening = letGo();
    ASSERT_TRUE(opening.damagedFolder);
    EXPECT_EQ(await(rescue(opening)).kept, 0);
    EXPECT_THAT(listed(), ElementsAre("after"));
    EXPECT_THAT(nextStart(), ElementsAre("after"));
}

TEST_F(ClipStoreOpeningTest, AnEntryThatWasListedBeforeIsDeletedAlsoAmidTheRescue)
{
    const std::vector<Clip> before = fill({"one", "two", "three"});
    damageTable("clips_kind_index");
    openHeld();
    const ClipStore::Opening opening = letGo();
    // As from a list that is not yet that of the fresh history.
    await(m_store->remove(before[1].id));
    await(rescue(opening));
    EXPECT_THAT(listed(), ElementsAre("three", "one"));
    EXPECT_THAT(nextStart(), ElementsAre("three", "one"));
}

TEST_F(ClipStoreOpeningTest, ADeletionIsRefusedIfAFullDiskHindersTheRescue)
{
    const std::vector<Clip> before = fill({"one", "two", "three"});
    damageTable("clips_kind_index");
    {
        FaultVFS vfs;
        openHeld();
        const ClipStore::Opening opening = letGo();
        vfs.fail(FaultVFS::Call::write, FaultVFS::Fault::noSpace, 1, FaultVFS::Span::fromThenOn);
        EXPECT_THROW(await(m_store->remove(before[1].id)), ClipStoreError);
        EXPECT_TRUE(vfs.hasFailed());
        vfs.failNothing();
        await(rescue(opening));
        EXPECT_THAT(listed(), ElementsAre("three", "two", "one"));
        await(m_store->remove(before[1].id));
        m_store.reset();
    }
    EXPECT_THAT(nextStart(), ElementsAre("three", "one"));
}

TEST_F(ClipStoreOpeningTest, ADeletionIsRefusedIfTheProgramEndsBeforeTheEntryIsBroughtOver)
{
    const std::vector<Clip> before = fill({"one", "two"});
    damageTable("clips_kind_index");
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    ClipStore::Means stopped = means();
    stopped.executor = std::move(executor);
    stopped.makeReader = [] { return std::make_unique<InlineExecutor>(); };
    stopped.setAside = [this] {
        note(m_store->finish(), "finished");
        return AppPaths::recoverDatabaseFiles(m_folder.path());
    };
    m_store = std::make_unique<ClipStore>(std::move(stopped));
    note(m_store->remove(before[0].id), "deleted");
    note(save("three"), "saved");
    while (jobs.runOne()) {
    }
    EXPECT_TRUE(waitUntil([this] { return m_done.size() == 3; }));
    EXPECT_THAT(
        m_done, ElementsAre(
                    "deleted: Clipboard database operation failed: "
                    "The history was damaged, and is not yet brought over.",
                    "saved", "finished"));
    EXPECT_TRUE(AppPaths::unfinishedRecovery(m_folder.path())) << "for the next start";
}

TEST_F(ClipStoreOpeningTest, AnIndexThatAloneIsDamagedIsMadeAgain)
{
    const LogCapture log;
    fill({"one word", "another"});
    damageTable("clips_fts_data");
    openHeld();
    note(save("a third word"), "saved");
    EXPECT_THAT(listed(), ElementsAre("a third word", "another", "one word"));
    EXPECT_THAT(listed(u"word"_s), ElementsAre("a third word", "one word")) << "without it";
    EXPECT_EQ(letGo(), ClipStore::Opening()) << "nothing was set aside";
    EXPECT_TRUE(m_store->ftsAvailable());
    EXPECT_THAT(listed(u"word"_s), ElementsAre("a third word", "one word"));
    EXPECT_THAT(m_done, ElementsAre("saved"));
    EXPECT_TRUE(logged(log).join(u'\n').contains(u"The search index was made again"_s));
}

// What keeps it from being opened

TEST_F(ClipStoreOpeningTest, AHistoryThatCannotBeOpenedFailsAllThatWaits)
{
    executeSQL("CREATE TABLE clips (other)");
    openHeld();
    note(save("one"), "saved");
    note(m_store->clear(true), "cleared");
    m_check->letGo();
    try {
        await(m_store->opened());
        FAIL() << "it opened";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(error.errorCase(), ClipStoreError::Case::execute);
    }
    EXPECT_THROW(await(m_store->statistics()), ClipStoreError);
    const std::string reason = "Clipboard database operation failed: no such column: is_pinned";
    EXPECT_THAT(m_done, ElementsAre("saved: " + reason, "cleared: " + reason));
}

TEST_F(ClipStoreOpeningTest, ADiskThatDoesNotAnswerIsNoDamage)
{
    fill({"one"});
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    ClipStore::Means slow = means();
    slow.executor = std::move(executor);
    m_store = std::make_unique<ClipStore>(std::move(slow));
    {
        FaultVFS vfs;
        vfs.fail(FaultVFS::Call::read, FaultVFS::Fault::io, 1, FaultVFS::Span::fromThenOn);
        jobs.runOne();
    }
    try {
        await(m_store->opened());
        FAIL() << "it opened";
    } catch (const ClipStoreError& error) {
        EXPECT_NE(error.errorCase(), ClipStoreError::Case::corruptedDatabase) << error.what();
    }
    EXPECT_THAT(nextStart(), ElementsAre("one"));
}

TEST_F(ClipStoreOpeningTest, WhatIsNotAnOrdinaryFileIsRefusedAtOnce)
{
    ASSERT_TRUE(QDir().mkdir(m_path));
    EXPECT_THROW(m_store = std::make_unique<ClipStore>(means()), ClipStoreError);
}

} // namespace tessly::test
