#include "HistoryFile.h"
#include "QtPrinting.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

mode_t permissions(const QString& path)
{
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
    return status.st_mode & 07777;
}

/// The error of an opening that must fail.
ClipStoreError openingError(HistoryFile& history)
{
    try {
        history.open();
    } catch (const ClipStoreError& error) {
        return error;
    }
    throw std::runtime_error("the history opened");
}

const QByteArray schemaObjects = "SELECT type, name FROM sqlite_master "
                                 "WHERE sql IS NOT NULL AND name NOT LIKE 'clips_fts_%' "
                                 // Which SQLite makes or not, as it thinks best.
                                 "AND name NOT LIKE 'sqlite_stat%' "
                                 "ORDER BY type, name";

} // namespace

TEST(ClipDatabaseOpening, createsTheTableItsIndexesTheFullTextIndexAndItsTriggers)
{
    HistoryFile history;
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(
        history.ask(schemaObjects), QByteArrayList({
                                        "index|clips_kind_index",
                                        "index|clips_recency_index",
                                        "index|clips_source_index",
                                        "table|clips",
                                        "table|clips_fts",
                                        "trigger|clips_after_delete",
                                        "trigger|clips_after_insert",
                                        "trigger|clips_after_update",
                                    }));
    EXPECT_EQ(
        history.ask("SELECT name, type, \"notnull\", dflt_value FROM pragma_table_info('clips')"),
        QByteArrayList({
            "id|TEXT|1|NULL",
            "created_at|REAL|1|NULL",
            "last_used_at|REAL|1|NULL",
            "kind|TEXT|1|NULL",
            "preview|TEXT|1|NULL",
            "search_text|TEXT|1|NULL",
            "plain_text|TEXT|0|NULL",
            "rtf|BLOB|0|NULL",
            "html|BLOB|0|NULL",
            "image_png|BLOB|0|NULL",
            "file_urls|BLOB|0|NULL",
            "source_app_name|TEXT|0|NULL",
            "source_bundle_id|TEXT|0|NULL",
            "content_hash|TEXT|1|NULL",
            "is_pinned|INTEGER|1|0",
            "pin_order|REAL|0|NULL",
            "copy_count|INTEGER|1|1",
        }));
    EXPECT_EQ(
        history.ask("SELECT name, \"desc\" FROM pragma_index_xinfo('clips_recency_index')"),
        QByteArrayList({"is_pinned|1", "last_used_at|1", "NULL|0"}));
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM pragma_index_list('clips') WHERE \"unique\""),
        QByteArrayList({"2"}));
}

TEST(ClipDatabaseOpening, setsTheFileUpForTheLogAndForGivingPagesBack)
{
    HistoryFile history;
    history.open();
    EXPECT_EQ(history.ask("PRAGMA journal_mode"), QByteArrayList({"wal"}));
    EXPECT_EQ(history.ask("PRAGMA auto_vacuum"), QByteArrayList({"2"}));
}

TEST(ClipDatabaseOpening, keepsTheFileAndItsCompanionsFromOthers)
{
    const mode_t before = ::umask(0);
    HistoryFile history;
    history.open();
    history.saveText("secret");
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        EXPECT_EQ(permissions(history.path() + companion), 0600U) << companion.toStdString();
    }
    ::umask(before);
}

TEST(ClipDatabaseOpening, takesRightsFromOthersThatAnEarlierFileGave)
{
    HistoryFile history;
    history.open();
    history.saveText("secret");
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        ::chmod(QFile::encodeName(history.path() + companion).constData(), 0644);
    }
    const ClipDatabase second(history.path(), [] { return 0; });
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        EXPECT_EQ(permissions(history.path() + companion), 0600U) << companion.toStdString();
    }
}

TEST(ClipDatabaseOpening, changesNothingTheSecondTime)
{
    HistoryFile history;
    history.open();
    history.saveText("kept");
    const QByteArrayList schema = history.ask("SELECT * FROM sqlite_master");
    // An index that does not know of the clip shows that nobody fills it again.
    history.execute("INSERT INTO clips_fts (clips_fts) VALUES ('delete-all')");
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(history.ask("SELECT * FROM sqlite_master"), schema);
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM clips_fts WHERE clips_fts MATCH 'kept'"),
        QByteArrayList({"0"}));
}

TEST(ClipDatabaseOpening, fillsAFullTextIndexThatWasDropped)
{
    HistoryFile history;
    history.open();
    history.saveText("Report of May");
    history.close();
    history.execute("DROP TRIGGER clips_after_insert; DROP TRIGGER clips_after_delete;"
                    "DROP TRIGGER clips_after_update; DROP TABLE clips_fts");
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM clips_fts WHERE clips_fts MATCH 'report'"),
        QByteArrayList({"1"}));
    history.saveText("Report of June");
    EXPECT_EQ(history.database().search(u"repo"_s, std::nullopt, 10).size(), 2U);
}

TEST(ClipDatabaseOpening, doesWithoutAFullTextIndexThatCannotBeMade)
{
    HistoryFile history;
    // What has the name already is no table, so that none can be created: as with an SQLite that
    // lacks the module, the statements of this step fail.
    history.execute("CREATE TABLE other (x); CREATE INDEX clips_fts ON other (x)");
    EXPECT_FALSE(history.open().ftsAvailable());
    const Clip clip = history.saveText("Report");
    EXPECT_EQ(history.database().search(u"epo"_s, std::nullopt, 10), std::vector({clip}));
    history.database().remove(clip.id);
    EXPECT_TRUE(history.database().search(u""_s, std::nullopt, 10).empty());
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM sqlite_master WHERE type = 'trigger'"),
        QByteArrayList({"0"}))
        << "a trigger without its table would fail every save";
}

TEST(ClipDatabaseOpening, leavesNoHalfOfAFullTextIndexThatCannotBeFilled)
{
    HistoryFile history;
    history.execute("CREATE VIEW clips_fts AS SELECT 1");
    EXPECT_FALSE(history.open().ftsAvailable());
    history.saveText("Report");
    history.execute("DROP VIEW clips_fts");
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM clips_fts WHERE clips_fts MATCH 'report'"),
        QByteArrayList({"1"}));
}

TEST(ClipDatabaseOpening, refusesAFileThatIsNoDatabase)
{
    HistoryFile history;
    QFile file(history.path());
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(QByteArray("no database at all ").repeated(1000));
    file.close();
    const ClipStoreError error = openingError(history);
    EXPECT_EQ(error.errorCase(), ClipStoreError::Case::corruptedDatabase);
    EXPECT_EQ(
        error.description(),
        u"Clipboard database integrity check failed: file is not a database"_s);
    EXPECT_EQ(QDir(history.folder()).entryList(QDir::Files), QStringList({u"history.sqlite"_s}))
        << "the connection is closed";
}

TEST(ClipDatabaseOpening, fillsAnEmptyFile)
{
    HistoryFile history;
    QFile file(history.path());
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.close();
    EXPECT_TRUE(history.open().ftsAvailable());
    EXPECT_EQ(history.ask("PRAGMA auto_vacuum"), QByteArrayList({"2"}));
}

TEST(ClipDatabaseOpening, saysWhatSQLiteSaysOfAFileThatCannotBeOpened)
{
    HistoryFile history;
    const QString impossible = history.folder() + u"/missing/history.sqlite"_s;
    try {
        const ClipDatabase database(impossible, [] { return 0; });
        FAIL() << "the history opened";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(error.errorCase(), ClipStoreError::Case::openDatabase);
        EXPECT_EQ(error.message(), u"unable to open database file"_s);
    }
}

TEST(ClipDatabaseOpening, refusesAFolderInPlaceOfTheFile)
{
    HistoryFile history;
    ASSERT_TRUE(QDir().mkdir(history.path()));
    EXPECT_EQ(openingError(history).errorCase(), ClipStoreError::Case::openDatabase);
}

TEST(ClipDatabaseOpening, saysWhichStatementASchemaOfAnotherProgramRefuses)
{
    HistoryFile history;
    history.execute("CREATE TABLE clips (other)");
    const ClipStoreError error = openingError(history);
    EXPECT_EQ(error.errorCase(), ClipStoreError::Case::execute);
    EXPECT_EQ(error.message(), u"no such column: is_pinned"_s);
}

TEST(ClipDatabaseOpening, refusesATableWhoseColumnsADamageHasRenamed)
{
    HistoryFile history;
    history.open();
    history.saveText("text");
    history.close();
    history.execute("PRAGMA writable_schema = ON;"
                    "UPDATE sqlite_master SET sql = replace(sql, 'preview', 'prefiew')"
                    " WHERE name = 'clips';");
    const ClipStoreError error = openingError(history);
    EXPECT_EQ(error.errorCase(), ClipStoreError::Case::corruptedDatabase);
    EXPECT_EQ(error.message(), u"The table has no column “preview”."_s);
}

} // namespace tessly::test
