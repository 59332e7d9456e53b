#include "FaultVFS.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "OrdinaryUser.h"
#include "SQLiteHook.h"
#include "UI/QtPrinting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

class ClipFaults : public testing::Test
{
protected:
    /// The error that `action` must throw.
    static ClipStoreError errorOf(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const ClipStoreError& error) {
            return error;
        }
        throw std::runtime_error("nothing was thrown");
    }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }

    void fill(int clips)
    {
        for (int i = 0; i < clips; ++i) {
            history.saveText("text " + QByteArray::number(i) + QByteArray(500, 'x'));
        }
    }

    QByteArray bytes()
    {
        QFile file(history.path());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }
    void setBytes(const QByteArray& bytes)
    {
        QFile file(history.path());
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    HistoryFile history;
};

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

TEST_F(ClipFaults, ofAFileThatIsDeletedEndWithTheNextSave)
{
    history.open();
    fill(3);
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        ASSERT_TRUE(QFile::remove(history.path() + companion));
    }
    ClipDatabase& database = history.database();
    EXPECT_EQ(all().size(), 3U) << "what is there can still be pasted";

    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    EXPECT_TRUE(database.ftsAvailable());
    history.saveText("that goes on");
    history.open();
    EXPECT_EQ(all().size(), 2U);
    expectSound();
}

TEST_F(ClipFaults, ofAFileThatIsReplacedEndWithWhateverIsDoneToAnEntry)
{
    history.open();
    fill(12);
    const std::vector<Clip> clips = all();
    history.close();
    const QString backup = QDir(history.folder()).filePath(u"backup"_s);
    ASSERT_TRUE(QFile::copy(history.path(), backup));
    const auto restore = [&] {
        history.saveText("since the backup");
        const QString copy = QDir(history.folder()).filePath(u"copy"_s);
        ASSERT_TRUE(QFile::copy(backup, copy));
        ASSERT_EQ(
            std::rename(
                QFile::encodeName(copy).constData(), QFile::encodeName(history.path()).constData()),
            0);
    };
    ClipDatabase& database = history.open();

    restore();
    database.setPinned(true, clips.back().id);
    EXPECT_EQ(all().size(), 12U);
    EXPECT_EQ(all().front().id, clips.back().id) << "pinned in the file that is there now";
    restore();
    database.markUsed(clips.back().id, true);
    EXPECT_EQ(all().front().id, clips.back().id);
    restore();
    database.remove(clips.front().id);
    EXPECT_EQ(all().size(), 11U);
    restore();
    database.trimHistory(10);
    EXPECT_EQ(all().size(), 10U);
    history.open();
    EXPECT_EQ(all().size(), 10U);
    expectSound();
}

TEST_F(ClipFaults, ofAFileThatIsReplacedDoNotClearTheOtherBeforeItIsShown)
{
    history.open();
    fill(1);
    HistoryFile other;
    other.open();
    other.saveText("restored");
    other.close();
    const QString copy = QDir(history.folder()).filePath(u"copy"_s);
    ASSERT_TRUE(QFile::copy(other.path(), copy));
    ASSERT_EQ(
        std::rename(
            QFile::encodeName(copy).constData(), QFile::encodeName(history.path()).constData()),
        0);
    EXPECT_EQ(
        errorOf([&] { history.database().clear(true); }).description(),
        u"Clipboard database operation failed: The database file was moved or deleted."_s);
    EXPECT_EQ(HistoryFile::previews(all()), QStringList{u"restored"_s});
    history.database().clear(true);
    EXPECT_EQ(all().size(), 0U);
}

TEST_F(ClipFaults, ofAFolderThatIsClosedMeanwhileLoseNothing)
{
    const OrdinaryUser user(history.folder());
    history.open();
    fill(1);
    ::chmod(QFile::encodeName(history.folder()).constData(), 0500);
    history.saveText("into the files that are open");
    history.database().remove(all().back().id);
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_EQ(HistoryFile::previews(all()), QStringList{u"into the files that are open"_s});
    expectSound();
}

TEST_F(ClipFaults, ofAFolderThatIsNoLongerTheUsersLastAsLongAsThat)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give a folder away";
    }
    const OrdinaryUser user(history.folder());
    history.open();
    fill(2);
    const auto give = [this](uid_t owner) {
        const QByteArray folder = QFile::encodeName(history.folder());
        const uid_t ordinary = ::geteuid();
        EXPECT_EQ(::seteuid(0), 0);
        EXPECT_EQ(::chown(folder.constData(), owner == 0 ? 0 : ordinary, 0), 0);
        EXPECT_EQ(::chmod(folder.constData(), 0755), 0);
        EXPECT_EQ(::seteuid(ordinary), 0);
    };
    ASSERT_TRUE(QFile::remove(history.path()));
    give(0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const ClipStoreError error = errorOf([this] { history.saveText("nowhere to go"); });
        EXPECT_EQ(error.errorCase(), Case::openDatabase);
        EXPECT_TRUE(error.message().contains(u"Operation not permitted"_s));
        EXPECT_EQ(all().size(), 2U) << "what is there can still be pasted";
    }
    give(1);
    history.saveText("a new beginning");
    history.open();
    EXPECT_EQ(all().size(), 1U);
    expectSound();
}

TEST_F(ClipFaults, ofAFolderThatIsRemovedEndWithTheNextSave)
{
    history.open();
    fill(3);
    ASSERT_TRUE(QDir(history.folder()).removeRecursively());
    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    struct stat status{};
    ASSERT_EQ(::stat(QFile::encodeName(history.folder()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    ASSERT_EQ(::stat(QFile::encodeName(history.path()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ClipFaults, ofAFileWhoseLogIsLeftBehindEndWithTheNextSave)
{
    history.open();
    fill(3);
    ASSERT_TRUE(QFile::remove(history.path()));
    ASSERT_GT(QFileInfo(history.path() + u"-wal"_s).size(), 0);
    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    history.saveText("that goes on");
    history.open();
    EXPECT_EQ(all().size(), 2U);
    expectSound();
}

TEST_F(ClipFaults, ofAFileThatIsMovedAwayLeaveNothingOfItBehind)
{
    history.open();
    fill(3);
    const QString away = QDir(history.folder()).filePath(u"away"_s);
    ASSERT_TRUE(QFile::rename(history.path(), away));
    history.saveText("a new beginning");
    history.close();
    EXPECT_EQ(
        ClipDatabase(away, SQLiteConnection::Access::readOnly).search({}, std::nullopt, -1).size(),
        3U)
        << "its log went with it";
}

TEST_F(ClipFaults, ofAFileThatIsReplacedKeepTheLogOutOfTheOther)
{
    HistoryFile other;
    other.open();
    for (int i = 0; i < 300; ++i) {
        other.saveText("other " + QByteArray::number(i));
    }
    other.close();
    history.open();
    for (int i = 0; i < 20; ++i) {
        history.saveText("own " + QByteArray::number(i));
    }
    // As one that puts a backup in its place does.
    const QString copy = QDir(history.folder()).filePath(u"copy"_s);
    ASSERT_TRUE(QFile::copy(other.path(), copy));
    ASSERT_EQ(
        std::rename(
            QFile::encodeName(copy).constData(), QFile::encodeName(history.path()).constData()),
        0);
    ASSERT_GT(QFileInfo(history.path() + u"-wal"_s).size(), 0);
    history.saveText("one more");
    EXPECT_EQ(all().size(), 301U);
    EXPECT_TRUE(std::ranges::none_of(HistoryFile::previews(all()), [](const QString& text) {
        return text.startsWith(u"own"_s);
    }));
    history.open();
    EXPECT_EQ(all().size(), 301U);
    expectSound();
}

TEST_F(ClipFaults, ofAFileThatIsReplacedLeaveTheOtherAsItIs)
{
    history.open();
    fill(3);
    HistoryFile other;
    other.open();
    for (int i = 0; i < 7; ++i) {
        other.saveText("other " + QByteArray::number(i));
    }
    // With a log that is not copied back, as a restored backup may have.
    for (const QString& companion : {u""_s, u"-wal"_s}) {
        QFile::remove(history.path() + companion);
        ASSERT_TRUE(QFile::copy(other.path() + companion, history.path() + companion));
    }
    QFile::remove(history.path() + u"-shm"_s);
    history.saveText("one more");
    EXPECT_EQ(all().size(), 8U);
    history.open();
    EXPECT_EQ(all().size(), 8U);
    expectSound();
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
            // A page of the index or a free one may go unnoticed; then what is read is still sound
            // or refused.
            history.open();
            EXPECT_LE(all().size(), 200U);
        } catch (const ClipStoreError& error) {
            if (error.errorCase() == Case::corruptedDatabase) {
                EXPECT_TRUE(error.description().startsWith(
                    u"Clipboard database integrity check failed: "_s));
                ++found;
            }
        }
        history.close();
        for (const QString& companion : {u"-wal"_s, u"-shm"_s}) {
            QFile::remove(history.path() + companion);
        }
    }
    EXPECT_GE(found, 20);
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
