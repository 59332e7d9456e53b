#include "QtPrinting.h"
#include "SQLiteBlob.h"
#include "SQLiteConnection.h"
#include "SQLiteError.h"
#include "SQLiteStatement.h"
#include "SQLiteTransaction.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class SQLiteTest : public testing::Test
{
protected:
    SQLiteTest() { connection.execute("CREATE TABLE t (a, b, c, d)"); }

    qint64 rows() const
    {
        SQLiteStatement count(connection, "SELECT count(*) FROM t");
        EXPECT_EQ(count.step(), SQLiteStatement::Step::row);
        return count.integer(0);
    }

    QTemporaryDir folder;
    SQLiteConnection connection{folder.filePath(u"test.sqlite"_s)};
};

QString messageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const SQLiteError& error) {
        EXPECT_EQ(QString::fromUtf8(error.what()), error.message());
        return error.message();
    }
    return u"no error"_s;
}

} // namespace

TEST_F(SQLiteTest, bringsBackWhatWasBound)
{
    SQLiteStatement insert(connection, "INSERT INTO t VALUES (?, ?, ?, ?)");
    const QByteArray withNul("a\0b", 3);
    EXPECT_TRUE(insert.bindText(1, withNul));
    EXPECT_TRUE(insert.bindData(2, withNul));
    EXPECT_TRUE(insert.bindInteger(3, std::numeric_limits<qint64>::min()));
    EXPECT_TRUE(insert.bindDouble(4, 0.1));
    EXPECT_EQ(insert.step(), SQLiteStatement::Step::done);

    SQLiteStatement select(connection, "SELECT a, b, c, d, typeof(a), typeof(b) FROM t");
    EXPECT_EQ(select.columnCount(), 6);
    ASSERT_EQ(select.step(), SQLiteStatement::Step::row);
    EXPECT_EQ(select.bytes(0), withNul);
    EXPECT_EQ(select.bytes(1), withNul);
    EXPECT_EQ(select.integer(2), std::numeric_limits<qint64>::min());
    EXPECT_EQ(select.real(3), 0.1);
    EXPECT_EQ(select.bytes(4), "text");
    EXPECT_EQ(select.bytes(5), "blob");
    EXPECT_EQ(select.step(), SQLiteStatement::Step::done);
}

TEST_F(SQLiteTest, tellsAbsentFromEmpty)
{
    SQLiteStatement insert(connection, "INSERT INTO t VALUES (?, ?, ?, ?)");
    EXPECT_TRUE(insert.bindText(1, std::nullopt));
    EXPECT_TRUE(insert.bindData(2, std::nullopt));
    EXPECT_TRUE(insert.bindText(3, QByteArray()));
    EXPECT_TRUE(insert.bindData(4, QByteArray()));
    EXPECT_EQ(insert.step(), SQLiteStatement::Step::done);
    SQLiteStatement select(connection, "SELECT *, typeof(c), typeof(d) FROM t");
    ASSERT_EQ(select.step(), SQLiteStatement::Step::row);
    EXPECT_TRUE(select.isNull(0));
    EXPECT_TRUE(select.isNull(1));
    EXPECT_FALSE(select.isNull(2));
    EXPECT_FALSE(select.isNull(3));
    EXPECT_EQ(select.bytes(4), "text");
    EXPECT_EQ(select.bytes(5), "blob");
    for (int column = 0; column < 4; ++column) {
        EXPECT_EQ(select.bytes(column), QByteArray());
        EXPECT_FALSE(select.bytes(column).isNull());
    }
}

TEST_F(SQLiteTest, keepsBoundBytesUntilTheStatementGoes)
{
    SQLiteStatement insert(connection, "INSERT INTO t (a, b) VALUES (?, ?)");
    EXPECT_TRUE(insert.bindText(1, QByteArray(10'000, 'x')));
    EXPECT_TRUE(insert.bindData(2, QByteArray(10'000, 'y')));
    const QByteArray other(10'000, 'z');
    EXPECT_EQ(insert.step(), SQLiteStatement::Step::done);
    insert.reset();
    EXPECT_EQ(insert.step(), SQLiteStatement::Step::done);
    SQLiteStatement select(connection, "SELECT a, b FROM t");
    for (int row = 0; row < 2; ++row) {
        ASSERT_EQ(select.step(), SQLiteStatement::Step::row);
        EXPECT_EQ(select.bytes(0), QByteArray(10'000, 'x'));
        EXPECT_EQ(select.bytes(1), QByteArray(10'000, 'y'));
    }
}

TEST_F(SQLiteTest, readsAsMuchOfAFieldAsIsWanted)
{
    connection.execute("CREATE TABLE fields (text TEXT, data BLOB, other BLOB);"
                       "INSERT INTO fields VALUES ('t\xc3\xa4xt', x'00ff00', NULL);"
                       "INSERT INTO fields VALUES ('', x'', 17);");
    const SQLiteBlob text(connection, "fields", "text", 1);
    EXPECT_EQ(text.size(), 5);
    EXPECT_EQ(text.all(), "t\xc3\xa4xt");
    EXPECT_EQ(text.first(2), "t\xc3");
    EXPECT_EQ(text.first(100), text.all());
    EXPECT_EQ(SQLiteBlob(connection, "fields", "data", 1).all(), QByteArray("\0\xff\0", 3));
    const QByteArray empty = SQLiteBlob(connection, "fields", "data", 2).all();
    EXPECT_TRUE(empty.isEmpty() && !empty.isNull());
    EXPECT_THROW(SQLiteBlob(connection, "fields", "other", 1), SQLiteError);
    EXPECT_THROW(SQLiteBlob(connection, "fields", "other", 2), SQLiteError);
    EXPECT_THROW(SQLiteBlob(connection, "fields", "text", 3), SQLiteError);
    // What is no longer there is not made up.
    connection.execute("UPDATE fields SET text = 'other' WHERE rowid = 1");
    EXPECT_THROW((void)text.first(2), SQLiteError);
}

TEST_F(SQLiteTest, refusesParametersThatAreNone)
{
    SQLiteStatement insert(connection, "INSERT INTO t (a) VALUES (?)");
    EXPECT_FALSE(insert.bindText(2, QByteArray("x")));
    EXPECT_FALSE(insert.bindText(0, std::nullopt));
    EXPECT_FALSE(insert.bindData(2, QByteArray("x")));
    EXPECT_FALSE(insert.bindInteger(2, 1));
    EXPECT_FALSE(insert.bindDouble(2, 1));
}

TEST_F(SQLiteTest, saysWhatSQLiteSays)
{
    EXPECT_EQ(
        messageOf([this] { connection.execute("SELECT 1; nonsense"); }),
        u"near \"nonsense\": syntax error"_s);
    EXPECT_EQ(
        messageOf([this] { SQLiteStatement(connection, "SELECT é FROM t"); }),
        u"no such column: é"_s);
    EXPECT_EQ(
        messageOf([this] { SQLiteConnection(folder.filePath(u"none/test.sqlite"_s)); }),
        u"unable to open database file"_s);
}

TEST_F(SQLiteTest, rollsBackATransactionThatIsNotCommitted)
{
    {
        const SQLiteTransaction transaction(connection, SQLiteTransaction::Mode::immediate);
        EXPECT_TRUE(connection.isInTransaction());
        connection.execute("INSERT INTO t (a) VALUES (1)");
    }
    EXPECT_FALSE(connection.isInTransaction());
    EXPECT_EQ(rows(), 0);
    {
        SQLiteTransaction transaction(connection, SQLiteTransaction::Mode::deferred);
        connection.execute("INSERT INTO t (a) VALUES (1)");
        transaction.commit();
    }
    EXPECT_EQ(rows(), 1);
}

TEST_F(SQLiteTest, survivesATransactionThatSQLiteEndedItself)
{
    connection.execute("CREATE UNIQUE INDEX u ON t (a); INSERT INTO t (a) VALUES (1)");
    {
        const SQLiteTransaction transaction(connection, SQLiteTransaction::Mode::immediate);
        EXPECT_NE(
            messageOf([this] { connection.execute("INSERT OR ROLLBACK INTO t (a) VALUES (1)"); }),
            u"no error"_s);
        EXPECT_FALSE(connection.isInTransaction());
    }
    EXPECT_EQ(rows(), 1);
}

TEST_F(SQLiteTest, stopsAStatementThatWouldNeverEnd)
{
    SQLiteStatement endless(
        connection, "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
                    "SELECT count(*) FROM n");
    {
        int looks = 0;
        const SQLiteConnection::StopWatch watch(connection, [&looks] { return ++looks == 5; });
        EXPECT_EQ(endless.step(), SQLiteStatement::Step::failed);
        EXPECT_EQ(connection.errorMessage(), u"interrupted"_s);
        EXPECT_EQ(looks, 5);
    }
    SQLiteStatement limited(
        connection, "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 10000) "
                    "SELECT count(*) FROM n");
    EXPECT_EQ(limited.step(), SQLiteStatement::Step::row) << "nobody watches any more";
}

} // namespace tessly::test
