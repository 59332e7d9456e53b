#include "SQLiteResidue.h"

#include "MemoryFolder.h"
#include "QtPrinting.h"
#include "SQLiteError.h"
#include "SQLiteStatement.h"

#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class SQLiteResidueTest : public testing::Test
{
protected:
    void open(const QByteArray& settings)
    {
        connection.emplace(path);
        const QByteArray sql =
            settings + "PRAGMA secure_delete = ON; CREATE TABLE t (id INTEGER PRIMARY KEY, x);";
        connection->execute(sql.constData());
    }

    static QByteArray secret(int row) { return "secret" + QByteArray::number(row) + '.'; }

    /// Fills the table with rows of a few hundred bytes and a few larger ones, then deletes most of
    /// them one by one.
    QList<int> fillAndDelete(int rows)
    {
        QRandomGenerator random(7);
        QList<int> kept;
        connection->execute("BEGIN");
        for (int row = 0; row < rows; ++row) {
            SQLiteStatement insert(*connection, "INSERT INTO t VALUES (?, ?)");
            const int size = row % 50 == 0 ? 10'000 : random.bounded(20, 400);
            EXPECT_TRUE(insert.bindInteger(1, row));
            EXPECT_TRUE(insert.bindText(2, secret(row) + QByteArray(size, 'x')));
            EXPECT_EQ(insert.step(), SQLiteStatement::Step::done);
            kept.append(row);
        }
        connection->execute("COMMIT");
        while (kept.size() > rows / 10) {
            const int row = kept.takeAt(random.bounded(static_cast<int>(kept.size())));
            SQLiteStatement remove(*connection, "DELETE FROM t WHERE id = ?");
            EXPECT_TRUE(remove.bindInteger(1, row));
            EXPECT_EQ(remove.step(), SQLiteStatement::Step::done);
        }
        checkpoint();
        return kept;
    }

    void checkpoint() { connection->execute("PRAGMA wal_checkpoint(TRUNCATE)"); }

    QByteArray content()
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }

    /// The rows that have left bytes in the file and are none of those that are kept.
    QSet<int> leftovers(const QList<int>& kept)
    {
        const QByteArray bytes = content();
        const QByteArray mark = "secret";
        QSet<int> found;
        for (qsizetype at = bytes.indexOf(mark); at >= 0; at = bytes.indexOf(mark, at + 1)) {
            const QByteArray number = bytes.mid(at + mark.size(), 10);
            found.insert(number.first(std::max(number.indexOf('.'), qsizetype{0})).toInt());
        }
        return found.subtract(QSet<int>(kept.begin(), kept.end()));
    }

    void expectSound(const QList<int>& kept)
    {
        SQLiteStatement check(*connection, "PRAGMA integrity_check");
        ASSERT_EQ(check.step(), SQLiteStatement::Step::row);
        EXPECT_EQ(check.bytes(0), "ok");
        SQLiteStatement select(*connection, "SELECT id, x FROM t ORDER BY id");
        QList<int> rows;
        while (select.step() == SQLiteStatement::Step::row) {
            rows.append(static_cast<int>(select.integer(0)));
            EXPECT_TRUE(select.bytes(1).startsWith(secret(rows.last())));
        }
        EXPECT_EQ(rows, kept);
    }

    MemoryFolder folder;
    QString path = folder.filePath(u"test.sqlite"_s);
    std::optional<SQLiteConnection> connection;
};

const QByteArray log = "PRAGMA auto_vacuum = INCREMENTAL; PRAGMA journal_mode = WAL;";
constexpr int rows = 2000;

} // namespace

TEST_F(SQLiteResidueTest, isErasedFromTheFile)
{
    for (const QByteArray& pageSize :
         {QByteArray("512"), QByteArray("4096"), QByteArray("65536")}) {
        connection.reset();
        QFile::remove(path);
        open("PRAGMA page_size = " + pageSize + ';' + log);
        const QList<int> kept = fillAndDelete(rows);
        if (pageSize == "4096") {
            EXPECT_NE(leftovers(kept), QSet<int>()) << "or there would be nothing to do";
        }
        EXPECT_TRUE(eraseResidue(*connection));
        EXPECT_EQ(leftovers(kept), QSet<int>()) << pageSize.constData();
        expectSound(kept);
        connection.emplace(path);
        expectSound(kept);
    }
}

TEST_F(SQLiteResidueTest, doesNotComeBackWithTheNextChangeOfItsPage)
{
    open(log);
    const QList<int> kept = fillAndDelete(rows);
    EXPECT_TRUE(eraseResidue(*connection));
    connection->execute("UPDATE t SET x = x || 'y'");
    checkpoint();
    EXPECT_EQ(leftovers(kept), QSet<int>());
    expectSound(kept);
}

TEST_F(SQLiteResidueTest, staysWhileTheLogHoldsPages)
{
    open(log);
    connection->execute("INSERT INTO t (x) VALUES (1)");
    EXPECT_FALSE(eraseResidue(*connection));
    EXPECT_FALSE(connection->isInTransaction());
    checkpoint();
    EXPECT_TRUE(eraseResidue(*connection));
}

TEST_F(SQLiteResidueTest, staysWhileAnotherWrites)
{
    open(log);
    checkpoint();
    SQLiteConnection other(path);
    other.execute("BEGIN IMMEDIATE");
    EXPECT_THROW(eraseResidue(*connection), SQLiteError);
}

TEST_F(SQLiteResidueTest, isLeftAloneWithoutAMapOfThePages)
{
    open("PRAGMA auto_vacuum = NONE; PRAGMA journal_mode = WAL;");
    const QList<int> kept = fillAndDelete(rows);
    const QByteArray before = content();
    EXPECT_TRUE(eraseResidue(*connection));
    EXPECT_EQ(content(), before);
    expectSound(kept);
}

TEST_F(SQLiteResidueTest, ofAFileWithoutAPageSizeIsAnError)
{
    open(log);
    fillAndDelete(rows);
    for (const QByteArray& size : {QByteArray(2, '\0'), QByteArray("\x01\x77", 2)}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        file.seek(16);
        file.write(size);
        file.close();
        const QByteArray before = content();
        EXPECT_THROW(eraseResidue(*connection), SQLiteError);
        EXPECT_EQ(content(), before);
    }
}

TEST_F(SQLiteResidueTest, isErasedWithoutALogToo)
{
    open("PRAGMA auto_vacuum = FULL;");
    const QList<int> kept = fillAndDelete(rows);
    EXPECT_TRUE(eraseResidue(*connection));
    EXPECT_EQ(leftovers(kept), QSet<int>());
    expectSound(kept);
}

} // namespace tessly::test
