#include "ClosedHistory.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// Damages the index in many ways, from outside and behind the program's back. No clip may suffer.
class ClipIndexDamage : public testing::Test
{
protected:
    ClipIndexDamage()
    {
        history.open();
        for (int i = 0; i < 60; ++i) {
            m_last = history.saveText(
                "secret" + QByteArray::number(i) + " word" + QByteArray::number(i * 7) + ' ' +
                QByteArray(400, 'x'));
        }
        history.database().scrub();
    }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }
    std::size_t found(const QString& query)
    {
        return history.database().search(query, std::nullopt, -1).size();
    }

    QByteArray bytes()
    {
        QFile file(history.path());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }
    void setBytes(const QByteArray& bytes)
    {
        history.close();
        for (const QString& companion : {u"-wal"_s, u"-shm"_s}) {
            QFile::remove(history.path() + companion);
        }
        QFile file(history.path());
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }
    void overwritePage(qsizetype page)
    {
        QFile file(history.path());
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        file.seek(page * pageSize);
        file.write(QByteArray(pageSize, '\x55'));
    }
    /// The pages without which the clips are whole.
    std::vector<qsizetype> otherPages(const QByteArray& sound)
    {
        std::vector<qsizetype> pages;
        for (qsizetype page = 1; page < sound.size() / pageSize; ++page) {
            setBytes(sound);
            overwritePage(page);
            try {
                if (history.ask("PRAGMA quick_check(clips)") == QByteArrayList({"ok"})) {
                    pages.push_back(page);
                }
            } catch (const std::exception&) {
                // It cannot be done without this one.
            }
        }
        EXPECT_GE(pages.size(), 5U);
        return pages;
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    /// Everything a user does works, with the index.
    void expectInUse()
    {
        EXPECT_EQ(all().size(), 60U);
        const Clip added = history.saveText("added");
        history.database().setPinned(true, added.id);
        history.database().markUsed(m_last.id, true);
        history.database().remove(m_last.id);
        EXPECT_EQ(found(u"word413"_s), 0U);
        EXPECT_EQ(found(u"added"_s), 1U);
        EXPECT_EQ(all().size(), 60U);
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        EXPECT_EQ(found(u"word7"_s), 3U);
        history.database().clear(true);
        EXPECT_TRUE(history.database().ftsAvailable());
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        // What this connection has in memory may be better than what is in the file.
        history.open();
        EXPECT_TRUE(history.database().ftsAvailable());
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        expectSound();
        EXPECT_FALSE(bytes().contains("ecret")) << "what was cleared is gone";
    }

    std::vector<LogCapture::Line> warnings() const
    {
        std::vector<LogCapture::Line> lines = log.lines(u"com.brackmoor.tessly.ClipStore"_s);
        std::erase_if(
            lines, [](const LogCapture::Line& line) { return line.level != QtWarningMsg; });
        return lines;
    }

    static constexpr qsizetype pageSize = HistoryFile::pageSize;
    const LogCapture log;
    HistoryFile history;
    Clip m_last;
};

const QByteArrayList damages = {
    // The averages and the structure.
    "DELETE FROM clips_fts_data WHERE id = 1",
    "UPDATE clips_fts_data SET block = zeroblob(length(block)) WHERE id = 1",
    "DELETE FROM clips_fts_data WHERE id = 10",
    "UPDATE clips_fts_data SET block = zeroblob(length(block)) WHERE id = 10",
    // The words.
    "UPDATE clips_fts_data SET block = zeroblob(length(block)) WHERE id > 10",
    "DELETE FROM clips_fts_data WHERE id > 10",
    "DELETE FROM clips_fts_docsize",
    "DELETE FROM clips_fts_idx",
    "UPDATE clips_fts_config SET v = 3 WHERE k = 'version'",
    "DROP TABLE clips_fts_data",
    "DROP TABLE clips_fts_docsize",
    "DROP TABLE clips_fts",
    // What keeps it in step.
    "DROP TRIGGER clips_after_delete",
    "DROP TRIGGER clips_after_insert; CREATE TRIGGER clips_after_insert AFTER INSERT ON clips "
    "BEGIN "
    "INSERT INTO clips_fts (rowid, search_text) VALUES (new.rowid, coaleyce(new.search_text)); END",
    "DROP TRIGGER clips_after_delete; CREATE TRIGGER clips_after_delete AFTER DELETE ON clips "
    "BEGIN "
    "INSERT INTO clips_fts (clips_fts, rowid, search_text, source_app_name) "
    "VALUES ('delete', old.rowid, old.preview, ''); END",
};

} // namespace

TEST_F(ClipIndexDamage, beforeTheOpeningCostsNothing)
{
    history.close();
    const QByteArray sound = bytes();
    for (const QByteArray& damage : damages) {
        SCOPED_TRACE(damage.constData());
        setBytes(sound);
        history.execute(damage);
        history.open();
        expectInUse();
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(ClipIndexDamage, whileTheHistoryIsOpenCostsNothing)
{
    history.close();
    const QByteArray sound = bytes();
    for (const QByteArray& damage : damages) {
        SCOPED_TRACE(damage.constData());
        setBytes(sound);
        history.open();
        history.database().remove(history.saveText("before").id);
        history.execute(damage);
        expectInUse();
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(ClipIndexDamage, ofAnyPageCostsNothing)
{
    history.close();
    const QByteArray sound = bytes();
    for (const qsizetype page : otherPages(sound)) {
        SCOPED_TRACE(page);
        setBytes(sound);
        overwritePage(page);
        history.open();
        expectInUse();
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(ClipIndexDamage, ofTheTablesOwnIndexesCostsNothing)
{
    history.close();
    // The records on the only page of the index, whose cells are listed behind its header: the
    // second byte of each says how long the record's own header is.
    const qsizetype page =
        (history.ask("SELECT rootpage FROM sqlite_master WHERE name = 'clips_recency_index'")
             .first()
             .toLongLong() -
         1) *
        pageSize;
    QByteArray damaged = bytes();
    ASSERT_EQ(damaged[page], 10) << "a leaf";
    for (qsizetype cell = 0; cell < 60; ++cell) {
        const auto at = qFromBigEndian<quint16>(damaged.constData() + page + 8 + 2 * cell);
        damaged[page + at + 1] = '\x7f';
    }
    setBytes(damaged);
    history.open();
    EXPECT_EQ(all().size(), 60U);
    EXPECT_EQ(warnings().size(), 1U);
    expectInUse();
}

TEST_F(ClipIndexDamage, besideDamageInTheStatisticsOfSQLiteCostsNothing)
{
    history.close();
    // Later versions make them by themselves.
    history.execute("ANALYZE");
    overwritePage(
        history.ask("SELECT rootpage FROM sqlite_master WHERE name = 'sqlite_stat1'")
            .first()
            .toLongLong() -
        1);
    history.open();
    EXPECT_EQ(warnings().size(), 1U);
    expectInUse();
}

TEST_F(ClipIndexDamage, besideDamageInTheHeaderOfAFileOfLargePagesCostsNothing)
{
    history.close();
    // As earlier versions made them.
    history.execute("PRAGMA journal_mode = DELETE; PRAGMA page_size = 4096; VACUUM;");
    history.open();
    history.database().scrub();
    history.close();
    const QByteArray sound = bytes();
    // Where the list of free pages begins, how long it is, and the largest root page.
    for (const qsizetype offset : {32, 36, 52}) {
        for (const char* const page : {"7fffffff", "ffffffff", "00000fff"}) {
            SCOPED_TRACE(std::to_string(offset) + ' ' + page);
            setBytes(QByteArray(sound).replace(offset, 4, QByteArray::fromHex(page)));
            history.open();
            expectInUse();
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(ClipIndexDamage, ofAnyPageWhileTheHistoryIsOpenCostsNothing)
{
    history.close();
    const QByteArray sound = bytes();
    for (const qsizetype page : otherPages(sound)) {
        SCOPED_TRACE(page);
        setBytes(sound);
        history.open();
        overwritePage(page);
        expectInUse();
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(ClipIndexDamage, isToldInOneLine)
{
    history.execute("DELETE FROM clips_fts_data WHERE id = 1");
    history.saveText("x");
    ASSERT_EQ(warnings().size(), 1U);
    const QString line = warnings().front().text;
    const QString reason =
        u"The search index was made again: Could not update clipboard history: "_s;
    EXPECT_TRUE(line.startsWith(reason)) << line.toStdString();
    EXPECT_GT(line.size(), reason.size()) << "in SQLite's words";
    EXPECT_FALSE(line.contains(u'\n')) << line.toStdString();
    EXPECT_FALSE(line.contains(u"secret"_s)) << line.toStdString();
}

TEST_F(ClipIndexDamage, thatNoOperationWouldNoticeIsFoundAfterTheOpening)
{
    // The index has lost the words of a clip, and is sound in itself.
    history.execute("INSERT INTO clips_fts (clips_fts, rowid, search_text, source_app_name) "
                    "SELECT 'delete', rowid, search_text, '' FROM clips "
                    "WHERE search_text LIKE '%word7 %'");
    history.open();
    EXPECT_EQ(found(u"word7"_s), 2U);
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_EQ(found(u"word7"_s), 3U);
    EXPECT_EQ(warnings().size(), 1U);
    expectSound();
}

TEST_F(ClipIndexDamage, isLookedForWhenNothingElseIsToBeDone)
{
    history.open();
    history.execute("DELETE FROM clips_fts_docsize WHERE id = 3");
    EXPECT_EQ(history.database().scrub([] { return true; }), ClipStore::Upkeep::hindered);
    EXPECT_TRUE(warnings().empty());
    EXPECT_EQ(history.database().scrub([] { return false; }), ClipStore::Upkeep::done);
    EXPECT_EQ(warnings().size(), 1U);
}

TEST_F(ClipIndexDamage, isNoReasonNotToListAClosedHistory)
{
    const auto listed = [this] {
        return ClosedHistory::summaries(history.path(), u"word7 "_s, std::nullopt, -1).size();
    };
    history.close();
    const QByteArray sound = bytes();
    for (const qsizetype page : otherPages(sound)) {
        setBytes(sound);
        overwritePage(page);
        const QByteArray damaged = bytes();
        EXPECT_GE(listed(), 1U) << page;
        EXPECT_EQ(bytes(), damaged) << "which mends nothing";
    }
    for (const QByteArray& damage : damages) {
        setBytes(sound);
        history.execute(damage);
        EXPECT_GE(listed(), 1U) << damage.constData();
    }
}

TEST_F(ClipIndexDamage, thatIsNoneLeavesTheIndexAsItIs)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(
        (void)history.database().search(u"x"_s, std::nullopt, 0, {}, stop.get_token()),
        ClipStoreError);
    history.execute("ALTER TABLE clips RENAME TO other");
    EXPECT_THROW((void)all(), ClipStoreError);
    EXPECT_THROW(history.saveText("x"), ClipStoreError);
    EXPECT_TRUE(warnings().empty());
}

} // namespace tessly::test
