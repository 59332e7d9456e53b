#include "ClipStore.h"

#include "ManualExecutor.h"
#include "MemoryFolder.h"
#include "QtPrinting.h"
#include "SQLiteHook.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class ClipStoreTest : public testing::Test
{
protected:
    std::unique_ptr<ClipStore> open(std::unique_ptr<Executor> executor)
    {
        return std::make_unique<ClipStore>(
            m_folder.filePath(u"history.sqlite"_s), [this] { return ++m_now; },
            std::move(executor));
    }
    std::unique_ptr<ClipStore> open() { return open(std::make_unique<ThreadExecutor>("store")); }

    static ClipPayload text(const QByteArray& text) { return ClipPayload({.plainText = text}); }

    QString pathOf(const QString& name) const { return m_folder.filePath(name); }

private:
    MemoryFolder m_folder;
    double m_now = 0;
};

} // namespace

TEST_F(ClipStoreTest, bringsResultsBackToTheCaller)
{
    const auto store = open();
    await(store->opened());
    EXPECT_TRUE(store->ftsAvailable());
    const Clip a = await(store->save(text("a word"), u"App"_s, u"app"_s, 100));
    const Clip b = await(store->save(text("b:link"), std::nullopt, std::nullopt, 100));
    EXPECT_EQ(a.sourceAppName, u"App"_s);
    EXPECT_EQ(a.sourceBundleID, u"app"_s);
    EXPECT_EQ(await(store->search({}, std::nullopt, 10)), std::vector({b, a}));
    EXPECT_EQ(await(store->search(u"word"_s, ClipKind::text, 10, {a})), std::vector({a}));

    await(store->setPinned(true, a.id));
    await(store->markUsed(a.id, true));
    const Clip pinned = await(store->search({}, std::nullopt, 10)).front();
    EXPECT_EQ(pinned.id, a.id);
    EXPECT_EQ(pinned.pinOrder, 2);

    ClipStore::Statistics statistics = await(store->statistics());
    EXPECT_EQ(statistics.totalItems, 2);
    EXPECT_EQ(statistics.pinnedItems, 1);
    EXPECT_GT(statistics.databaseBytes, 0);

    for (int i = 0; i < 11; ++i) {
        await(store->save(text(QByteArray::number(i)), std::nullopt, std::nullopt, 100));
    }
    await(store->trimHistory(10));
    EXPECT_EQ(await(store->statistics()).totalItems, 11);
    await(store->clear(false));
    EXPECT_EQ(await(store->statistics()).totalItems, 1);
    await(store->remove(a.id));
    EXPECT_EQ(await(store->statistics()).totalItems, 0);
}

TEST_F(ClipStoreTest, throwsFromTheAwait)
{
    const auto store = open();
    auto saving = store->save(ClipPayload(), std::nullopt, std::nullopt, 100);
    EXPECT_THROW(await(std::move(saving)), ClipStoreError);
}

TEST_F(ClipStoreTest, runsOperationsInTheOrderOfTheirCalls)
{
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    const auto store = open(std::move(executor));
    jobs.runOne();
    auto saving = store->save(text("a"), std::nullopt, std::nullopt, 100);
    auto clearing = store->clear(true);
    auto counting = store->statistics();
    EXPECT_EQ(jobs.pending(), 3U);
    while (jobs.runOne()) {
    }
    await(std::move(saving));
    await(std::move(clearing));
    EXPECT_EQ(await(std::move(counting)).totalItems, 0);
}

TEST_F(ClipStoreTest, doesOtherThingsBetweenThePartsOfARescue)
{
    constexpr qint64 clips = 150;
    const QString damaged = pathOf(u"damaged"_s);
    {
        ClipStore other(damaged, [] { return 1; }, std::make_unique<ThreadExecutor>("other"));
        for (int i = 0; i < clips; ++i) {
            await(other.save(text(QByteArray::number(i)), std::nullopt, std::nullopt, clips));
        }
    }
    const auto store = open();
    auto rescuing = store->rescue(damaged, 1000);
    const qint64 between = await(store->statistics()).totalItems;
    EXPECT_GT(between, 0);
    EXPECT_LT(between, clips);
    EXPECT_EQ(await(std::move(rescuing)), ClipRescue({.found = clips, .kept = clips}));
}

TEST_F(ClipStoreTest, finishesWhatWasCalledBeforeItGoes)
{
    {
        const auto store = open();
        for (int i = 0; i < 20; ++i) {
            auto saving = store->save(text(QByteArray::number(i)), std::nullopt, std::nullopt, 100);
        }
    }
    EXPECT_EQ(await(open()->statistics()).totalItems, 20);
}

TEST_F(ClipStoreTest, aSearchThatIsToStopEndsAmidTheScan)
{
    std::stop_source overtaken;
    int comparisons = 0;
    // LIKE as SQLite asks for it; here the newer search comes while the older is under way.
    const auto compare = [&] {
        if (++comparisons == 100) {
            overtaken.request_stop();
        }
    };
    std::function<void()> function = compare;
    const SQLiteHook hook([&function](sqlite3* connection) {
        sqlite3_create_function(
            connection, "like", 3, SQLITE_UTF8, &function,
            [](sqlite3_context* context, int, sqlite3_value**) {
                (*static_cast<std::function<void()>*>(sqlite3_user_data(context)))();
                sqlite3_result_int(context, 0);
            },
            nullptr, nullptr);
    });
    const auto store = open();
    constexpr int clips = 1000;
    for (int i = 0; i < clips; ++i) {
        await(store->save(text(QByteArray::number(i)), std::nullopt, std::nullopt, clips));
    }
    try {
        await(store->search(u"absent"_s, std::nullopt, 10, {}, overtaken.get_token()));
        FAIL() << "the search went through";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(
            error.description(), u"Clipboard database operation failed: "
                                 "Could not read clipboard history: interrupted"_s);
    }
    EXPECT_GE(comparisons, 100);
    EXPECT_LT(comparisons, clips);

    // What comes next runs as ever, also a write, and also with a token that may stop.
    EXPECT_EQ(await(store->save(text("next"), std::nullopt, std::nullopt, clips + 1)).copyCount, 1);
    const std::stop_source other;
    EXPECT_EQ(await(store->search({}, std::nullopt, -1, {}, other.get_token())).size(), clips + 1U);
}

TEST_F(ClipStoreTest, aSearchThatIsToStopBeforeItBeginsDoesNotRun)
{
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    const auto store = open(std::move(executor));
    jobs.runOne();
    std::stop_source overtaken;
    auto searching = store->search({}, std::nullopt, 10, {}, overtaken.get_token());
    overtaken.request_stop();
    jobs.runOne();
    EXPECT_THROW(await(std::move(searching)), ClipStoreError);
}

} // namespace tessly::test
