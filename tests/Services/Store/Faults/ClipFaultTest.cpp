#include "ClipFaultFixture.h"
#include "FaultVFS.h"
#include "LogCapture.h"
#include "OrdinaryUser.h"
#include "QtPrinting.h"
#include "SQLiteHook.h"

#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

using Case = ClipStoreError::Case;

} // namespace

TEST_F(ClipFaults, ofAFolderThatCannotBeWrittenFailTheOpening)
{
    const OrdinaryUser user(history.folder());
    ::chmod(QFile::encodeName(history.folder()).constData(), 0500);
    const ClipStoreError error = errorOf([this] { history.open(); });
    ::chmod(QFile::encodeName(history.folder()).constData(), 0700);
    EXPECT_EQ(error.errorCase(), Case::openDatabase);
    EXPECT_EQ(
        error.description(), u"Could not open clipboard database: unable to open database file"_s);
}

TEST_F(ClipFaults, ofAFileThatCannotBeWrittenFailTheOpening)
{
    const OrdinaryUser user(history.folder());
    history.open();
    fill(1);
    history.close();
    ::chmod(QFile::encodeName(history.folder()).constData(), 0500);
    // The file is there, but its log cannot be made.
    const ClipStoreError error = errorOf([this] { history.open(); });
    ::chmod(QFile::encodeName(history.folder()).constData(), 0700);
    EXPECT_EQ(
        error.description(),
        u"Could not open clipboard database: attempt to write a readonly database"_s)
        << "which is no damage";
    EXPECT_EQ(history.open().search({}, std::nullopt, -1).size(), 1U);
}

TEST_F(ClipFaults, ofADiskThatIsFullAtTheOpeningAreNoDamage)
{
    history.open();
    fill(3);
    history.close();
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit oldLimit{};
    ::getrlimit(RLIMIT_FSIZE, &oldLimit);
    const rlimit limit{0, oldLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const ClipStoreError error = errorOf([this] { history.open(); });
    ::setrlimit(RLIMIT_FSIZE, &oldLimit);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(error.errorCase(), Case::openDatabase) << error.what();
    history.open();
    EXPECT_EQ(all().size(), 3U);
}

TEST_F(ClipFaults, ofADiskThatCannotReadTheFileAreNoDamage)
{
    FaultVFS vfs;
    history.open();
    fill(60);
    history.close();
    const QByteArray before = bytes();
    // In the middle of the check, and from its beginning.
    for (const int call : {20, 1}) {
        const qint64 slept = vfs.slept();
        vfs.fail(FaultVFS::Call::read, FaultVFS::Fault::io, call, FaultVFS::Span::fromThenOn);
        EXPECT_EQ(errorOf([this] { history.open(); }).errorCase(), Case::openDatabase);
        EXPECT_GT(vfs.slept() - slept, 0) << "tried again";
        vfs.failNothing();
        EXPECT_EQ(bytes(), before);
    }
    history.open();
    EXPECT_EQ(all().size(), 60U);
    history.close();
}

TEST_F(ClipFaults, ofALockThatKeepsReadersOutAreNoDamage)
{
    history.open();
    fill(3);
    history.close();
    {
        SQLiteConnection other(history.path());
        other.execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN IMMEDIATE; "
                      "UPDATE clips SET copy_count = 1");
        EXPECT_EQ(
            errorOf([this] { history.open(); }).description(),
            u"Could not open clipboard database: database is locked"_s);
        other.execute("COMMIT");
    }
    history.open();
    EXPECT_EQ(all().size(), 3U);
}

TEST_F(ClipFaults, ofAFullDiskLeaveTheHistoryAsItWas)
{
    sqlite3* connection = nullptr;
    const SQLiteHook hook(
        [&](sqlite3* opened) { connection = connection == nullptr ? opened : connection; });
    history.open();
    fill(20);
    const std::vector<Clip> before = all();
    const auto setMaximum = [&](const QByteArray& pages) {
        const QByteArray sql = "PRAGMA max_page_count = " + pages;
        ASSERT_EQ(sqlite3_exec(connection, sql.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
    };
    setMaximum(history.ask("PRAGMA page_count").first());
    const ClipStoreError error = errorOf([this] { history.saveText(QByteArray(1'000'000, 'y')); });
    EXPECT_EQ(
        error.description(), u"Clipboard database operation failed: "
                             "Could not update clipboard history: database or disk is full"_s);
    EXPECT_EQ(all(), before);
    EXPECT_EQ(history.database().statistics().totalItems, 20);
    // There is room to make room, but none to wipe the index.
    {
        const LogCapture log;
        history.database().remove(before.front().id);
        EXPECT_EQ(
            log.lines(u"com.brackmoor.tessly.ClipStore"_s),
            std::vector<LogCapture::Line>(
                {{QtWarningMsg, u"com.brackmoor.tessly.ClipStore"_s,
                  u"Deleted clips are not wiped yet: Clipboard database operation failed: "
                  "database or disk is full"_s}}));
    }
    EXPECT_EQ(all().size(), 19U) << "what was committed succeeded";

    setMaximum("1000000");
    history.saveText(QByteArray(1'000'000, 'y'));
    EXPECT_EQ(all().size(), 20U);
    history.database().scrub();
    EXPECT_FALSE(bytes().contains(*before.front().payload.held()->plainText()));
    expectSound();
}

TEST_F(ClipFaults, ofADiskThatRefusesAmidAWriteLeaveTheHistoryAsItWas)
{
    history.open();
    fill(20);
    const std::vector<Clip> before = all();
    // Every byte of a file beyond 200 kB is refused.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit oldLimit{};
    ::getrlimit(RLIMIT_FSIZE, &oldLimit);
    const rlimit limit{200'000, oldLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const ClipStoreError error = errorOf([this] { history.saveText(QByteArray(5'000'000, 'y')); });
    ::setrlimit(RLIMIT_FSIZE, &oldLimit);
    std::signal(SIGXFSZ, oldHandler);

    EXPECT_EQ(error.errorCase(), Case::execute);
    EXPECT_EQ(all(), before);
    history.saveText("after");
    EXPECT_EQ(all().size(), 21U);
    expectSound();
    history.open();
    EXPECT_EQ(all().size(), 21U);
}

TEST_F(ClipFaults, ofALockHeldElsewhereEndTheWaitWithAnError)
{
    sqlite3* connection = nullptr;
    const SQLiteHook hook(
        [&](sqlite3* opened) { connection = connection == nullptr ? opened : connection; });
    history.open();
    fill(3);
    // The time that is waited, without the waiting.
    sqlite3_stmt* timeout = nullptr;
    sqlite3_prepare_v2(connection, "PRAGMA busy_timeout", -1, &timeout, nullptr);
    ASSERT_EQ(sqlite3_step(timeout), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(timeout, 0), 3000);
    sqlite3_finalize(timeout);
    sqlite3_busy_timeout(connection, 0);

    const std::vector<Clip> before = all();
    {
        SQLiteConnection other(history.path());
        other.execute("BEGIN IMMEDIATE; UPDATE clips SET copy_count = 9");
        EXPECT_EQ(
            errorOf([this] { history.saveText("x"); }).description(),
            u"Clipboard database operation failed: database is locked"_s);
        EXPECT_EQ(
            errorOf([&] { history.database().remove(before.front().id); }).description(),
            u"Clipboard database operation failed: "
            "Could not update clipboard history: database is locked"_s);
        EXPECT_EQ(all(), before) << "readers do not wait";
        other.execute("ROLLBACK");
    }
    history.saveText("x");
    EXPECT_EQ(all().size(), 4U);
}

TEST_F(ClipFaults, ofAFullDiskDoNotKeepItFromBeingCleared)
{
    history.open();
    for (int i = 0; i < 40; ++i) {
        history.saveText(QByteArray::number(i) + QByteArray(300'000, 'x'));
    }
    history.database().setPinned(true, all().front().id);
    history.database().scrub();
    // No file can become larger than the history is.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit oldLimit{};
    ::getrlimit(RLIMIT_FSIZE, &oldLimit);
    const qsizetype before = bytes().size();
    const rlimit limit{static_cast<rlim_t>(before), oldLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_NO_THROW(history.database().clear(false));
    ::setrlimit(RLIMIT_FSIZE, &oldLimit);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(all().size(), 1U);
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_LT(bytes().size(), before / 10) << "and the disk has its room back";
    expectSound();
}

TEST_F(ClipFaults, ofTimeLetTheFileShrinkLater)
{
    history.open();
    fill(3000);
    history.database().scrub();
    const qsizetype before = bytes().size();
    history.database().clear(true);
    int looks = 0;
    EXPECT_EQ(history.database().scrub([&] { return ++looks > 3; }), ClipStore::Upkeep::hindered);
    EXPECT_GT(bytes().size(), before / 2);
    EXPECT_EQ(history.database().scrub([] { return false; }), ClipStore::Upkeep::done);
    EXPECT_LT(bytes().size(), before / 10);
    expectSound();
}

TEST_F(ClipFaults, ofADamagedPageAreFoundAtTheOpening)
{
    history.open();
    fill(200);
    history.close();
    const QByteArray sound = bytes();
    constexpr qsizetype pageSize = HistoryFile::pageSize;
    QRandomGenerator random(5);
    int found = 0;
    for (int i = 0; i < 30; ++i) {
        QByteArray damaged = sound;
        const qsizetype page = random.bounded(static_cast<int>(sound.size() / pageSize));
        for (qsizetype byte = 0; byte < pageSize; ++byte) {
            damaged[page * pageSize + byte] = static_cast<char>(random.bounded(256));
        }
        setBytes(damaged);
        try {
            history.open();
            // It was free, or not of the clips and is made again.
            EXPECT_EQ(all().size(), 200U);
            EXPECT_EQ(history.ask("PRAGMA quick_check"), QByteArrayList({"ok"})) << page;
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(error.errorCase(), Case::corruptedDatabase) << error.what();
            EXPECT_TRUE(
                error.description().startsWith(u"Clipboard database integrity check failed: "_s));
            ++found;
        }
        history.close();
        for (const QString& companion : {u"-wal"_s, u"-shm"_s}) {
            QFile::remove(history.path() + companion);
        }
    }
    EXPECT_GE(found, 10);
    setBytes(sound);
    EXPECT_EQ(history.open().statistics().totalItems, 200);
}

TEST_F(ClipFaults, ofADamagedPageAreToldWhenItIsReadLater)
{
    history.open();
    fill(200);
    history.database().scrub();
    QByteArray damaged = bytes();
    // All pages but the first, which the open connection knows: the header stays.
    damaged.replace(4096, damaged.size() - 4096, QByteArray(damaged.size() - 4096, '\x55'));
    setBytes(damaged);
    const ClipStoreError error = errorOf([this] { (void)all(); });
    EXPECT_EQ(
        error.description(),
        u"Clipboard database operation failed: "
        "Could not read clipboard history: database disk image is malformed"_s);
    EXPECT_EQ(errorOf([this] { history.saveText("x"); }).errorCase(), Case::execute);
}

TEST_F(ClipFaults, ofRandomBytesAreADamagedDatabase)
{
    QRandomGenerator random(6);
    for (const int size : {50, 99, 512, 4096, 100'000}) {
        QByteArray noise(size, Qt::Uninitialized);
        for (char& byte : noise) {
            byte = static_cast<char>(random.bounded(256));
        }
        setBytes(noise);
        const ClipStoreError error = errorOf([this] { history.open(); });
        EXPECT_EQ(error.errorCase(), Case::corruptedDatabase) << size;
        EXPECT_TRUE(
            error.description().startsWith(u"Clipboard database integrity check failed: "_s));
        EXPECT_EQ(bytes(), noise) << "left for the rescue as it is";
    }
}

TEST_F(ClipFaults, ofATruncatedFileAreADamagedDatabase)
{
    history.open();
    fill(200);
    history.close();
    const QByteArray sound = bytes();
    for (const qsizetype size :
         {sound.size() - 4096, sound.size() / 2, qsizetype{10'000}, qsizetype{4096},
          qsizetype{1000}, qsizetype{50}}) {
        setBytes(sound.first(size));
        EXPECT_EQ(errorOf([this] { history.open(); }).errorCase(), Case::corruptedDatabase) << size;
    }
}

TEST_F(ClipFaults, ofAnSQLiteWithoutFullTextSearchCostOnlyTheIndex)
{
    {
        const SQLiteHook hook(
            [](sqlite3* connection) { sqlite3_drop_modules(connection, nullptr); });
        EXPECT_FALSE(history.open().ftsAvailable());
        const Clip clip = history.saveText("Report");
        EXPECT_EQ(history.database().search(u"epor"_s, std::nullopt, 10), std::vector({clip}));
        history.database().remove(history.saveText("secret").id);
        EXPECT_FALSE(history.open().ftsAvailable());
        EXPECT_EQ(all(), std::vector({clip}));
    }
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(history.database().search(u"rep"_s, std::nullopt, 10).size(), 1U);
    expectSound();
}

TEST_F(ClipFaults, ofAnSQLiteThatCannotKeepTheIndexOfAFileLeaveTheHistoryInUse)
{
    history.open();
    const Clip first = history.saveText("first report");
    history.close();
    {
        const SQLiteHook hook(
            [](sqlite3* connection) { sqlite3_drop_modules(connection, nullptr); });
        EXPECT_FALSE(history.open().ftsAvailable());
        history.saveText("second report");
        history.database().remove(first.id);
        EXPECT_EQ(history.database().search(u"report"_s, std::nullopt, 10).size(), 1U);
    }
    // Back with one that can: the index has missed what happened and is made anew.
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(
        HistoryFile::previews(history.database().search(u"rep"_s, std::nullopt, 10)),
        QStringList({u"second report"_s}));
    expectSound();
}

TEST_F(ClipFaults, ofAStatementThatSQLiteRefusesNameTheStatement)
{
    history.open();
    history.execute("DROP TABLE clips");
    // The first call learns that the tables are others now.
    EXPECT_EQ(
        errorOf([this] { (void)history.database().statistics(); }).description(),
        u"Clipboard database operation failed: "
        "Could not read database statistics: no such table: clips"_s);
    EXPECT_EQ(
        errorOf([this] { (void)history.database().statistics(); }).description(),
        u"Clipboard database operation failed: SQL: "
        "SELECT count(*), coalesce(sum(is_pinned), 0)\nFROM clips;: no such table: clips"_s);
}

} // namespace tessly::test
