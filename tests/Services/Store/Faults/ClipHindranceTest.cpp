#include "ClipRetries.h"
#include "ClipSchema.h"
#include "FaultVFS.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "SQLiteHook.h"
#include "SQLiteStatement.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// What stands in the way for a while (a lock, a full disk, a search that was overtaken) is no
// damage, and is made up for.

namespace tessly::test {

namespace {

const QByteArray secret = "xsecretx";

class ClipHindrance : public testing::Test
{
protected:
    void fill(int clips)
    {
        for (int i = 0; i < clips; ++i) {
            history.saveText("word" + QByteArray::number(i));
        }
    }

    bool isSecretInFiles()
    {
        const QDir folder(history.folder());
        const QStringList names = folder.entryList(QDir::Files);
        return std::ranges::any_of(names, [&](const QString& name) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QFile::ReadOnly));
            return file.readAll().contains(secret);
        });
    }

    qsizetype warnings() const
    {
        const std::vector<LogCapture::Line> lines = log.lines(u"com.brackmoor.tessly.ClipStore"_s);
        return std::ranges::count(lines, QtWarningMsg, &LogCapture::Line::level);
    }

    const LogCapture log;
    HistoryFile history;
};

/// Takes a step that always fails the way a disk does; how often it is tried in `eachTakes` a try.
int triesOf(std::chrono::milliseconds eachTakes)
{
    std::chrono::steady_clock::time_point now;
    std::chrono::milliseconds slept{};
    int tries = 0;
    const ClipRetries retries(
        {.now = [&] { return now; }, .sleep = [&](auto time) { slept += time; }},
        [](const ClipStoreError& error) { return error.sqliteCode() == SQLITE_IOERR; });
    EXPECT_THROW(
        retries.take([&] {
            ++tries;
            now += eachTakes;
            throw ClipStoreError(ClipStoreError::Case::execute, {}, SQLITE_IOERR);
        }),
        ClipStoreError);
    return tries;
}

} // namespace

TEST(ClipRetries, lastsTwoSecondsWithTheTriesThemselves)
{
    EXPECT_EQ(triesOf(0ms), 21);
    EXPECT_EQ(triesOf(100ms), 11);
    EXPECT_EQ(triesOf(1900ms), 2);
    EXPECT_EQ(triesOf(1min), 1);
}

TEST(ClipRetries, isForErrorsThatMayPass)
{
    const ClipRetries retries(
        {.now = std::chrono::steady_clock::now, .sleep = [](auto) { FAIL(); }},
        [](const ClipStoreError&) { return false; });
    EXPECT_THROW(
        retries.take([]() -> int { throw ClipStoreError(ClipStoreError::Case::execute, {}); }),
        ClipStoreError);
    EXPECT_EQ(retries.take([] { return 7; }), 7);
}

TEST_F(ClipHindrance, ofTheLookAtTheIndexDoesNotKeepDroppedClipsInTheFiles)
{
    history.open();
    {
        // While it reads the log grows; what is in it stays, also where later versions of SQLite
        // leave nothing in the index.
        SQLiteConnection reader(history.path());
        reader.execute("BEGIN; SELECT count(*) FROM clips;");
        history.saveText(secret);
        fill(11);
        history.database().trimHistory(10);
        history.open();
    }
    ASSERT_TRUE(isSecretInFiles());
    EXPECT_EQ(history.database().scrub([] { return true; }), ClipStore::Upkeep::hindered);
    EXPECT_FALSE(isSecretInFiles());
}

TEST_F(ClipHindrance, ofASearchThatIsOvertakenDoesNotKeepTheIndexFromBeingMended)
{
    std::stop_source stop;
    const auto stopAtTheRebuilding = [](unsigned, void* context, void*, void* sql) {
        if (QByteArray(static_cast<const char*>(sql)).contains("'rebuild'")) {
            static_cast<std::stop_source*>(context)->request_stop();
        }
        return 0;
    };
    const SQLiteHook hook([&](sqlite3* connection) {
        sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, stopAtTheRebuilding, &stop);
    });
    history.open();
    stop = {};
    fill(2000);
    history.execute("DELETE FROM clips_fts_data WHERE id = 10");
    EXPECT_THROW(
        (void)history.database().search(u"word7"_s, std::nullopt, -1, {}, stop.get_token()),
        ClipStoreError);
    EXPECT_TRUE(stop.stop_requested());
    EXPECT_TRUE(history.database().ftsAvailable());
    EXPECT_EQ(warnings(), 1) << "it was made again, and that is all";
    EXPECT_EQ(history.database().search(u"word7"_s, std::nullopt, -1).size(), 111U);
}

TEST_F(ClipHindrance, ofALockAtTheOpeningCostsTheIndexForAWhile)
{
    FaultVFS withoutWaiting;
    history.open();
    fill(30);
    history.close();
    history.execute("DROP TRIGGER clips_after_update");
    {
        SQLiteConnection other(history.path());
        // When the history turns to its index.
        SQLiteConnection* locking = &other;
        const auto lock = [](unsigned, void* context, void*, void* sql) {
            SQLiteConnection*& next = *static_cast<SQLiteConnection**>(context);
            if (next && QByteArray(static_cast<const char*>(sql)).contains("pragma_module_list")) {
                std::exchange(next, nullptr)->execute("BEGIN IMMEDIATE");
            }
            return 0;
        };
        sqlite3* connection = nullptr;
        const SQLiteHook hook([&](sqlite3* opened) {
            connection = opened;
            sqlite3_trace_v2(opened, SQLITE_TRACE_STMT, lock, &locking);
        });
        EXPECT_FALSE(history.open().ftsAvailable());
        sqlite3_trace_v2(connection, 0, nullptr, nullptr);
        EXPECT_EQ(locking, nullptr);
        EXPECT_EQ(history.database().search(u"ord7"_s, std::nullopt, -1).size(), 1U);
    }
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_TRUE(history.database().ftsAvailable());
    history.saveText("after");
    EXPECT_EQ(history.database().search(u"aft"_s, std::nullopt, -1).size(), 1U);
    EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
    history.close();
}

TEST_F(ClipHindrance, whatIsDeletedIsOverwrittenFromTheFirstStatementOn)
{
    SQLiteConnection connection(history.path());
    connection.execute("PRAGMA secure_delete = OFF");
    connection.execute(schema::connectionSettings);
    SQLiteStatement setting(connection, "PRAGMA secure_delete");
    ASSERT_EQ(setting.step(), SQLiteStatement::Step::row);
    EXPECT_EQ(setting.integer(0), 1);
}

} // namespace tessly::test
