#include "ClipStoreOpeningTest.h"

namespace tessly::test {

using ClipStoreDamageTest = ClipStoreOpeningTest;

// Damage

TEST_F(ClipStoreDamageTest, CopiesThatWaitGoIntoTheFreshHistoryThatTakesADamagedOnesPlace)
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

TEST_F(ClipStoreDamageTest, WhatTheUserDidToEntriesOfADamagedHistoryIsDone)
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

TEST_F(ClipStoreDamageTest, ClearingADamagedHistoryKeepsWhatIsPinned)
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

TEST_F(ClipStoreDamageTest, ClearingAllOfADamagedHistoryBringsNothingOver)
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

TEST_F(ClipStoreDamageTest, AnEntryThatWasListedBeforeIsDeletedAlsoAmidTheRescue)
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

TEST_F(ClipStoreDamageTest, ADeletionIsRefusedIfAFullDiskHindersTheRescue)
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

TEST_F(ClipStoreDamageTest, ADeletionIsRefusedIfTheProgramEndsBeforeTheEntryIsBroughtOver)
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

TEST_F(ClipStoreDamageTest, AnIndexThatAloneIsDamagedIsMadeAgain)
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

TEST_F(ClipStoreDamageTest, AHistoryThatCannotBeOpenedFailsAllThatWaits)
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

TEST_F(ClipStoreDamageTest, ADiskThatDoesNotAnswerIsNoDamage)
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

TEST_F(ClipStoreDamageTest, WhatIsNotAnOrdinaryFileIsRefusedAtOnce)
{
    ASSERT_TRUE(QDir().mkdir(m_path));
    EXPECT_THROW(m_store = std::make_unique<ClipStore>(means()), ClipStoreError);
}

} // namespace tessly::test
