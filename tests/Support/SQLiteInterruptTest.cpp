#include "SQLiteInterrupt.h"
#include "SQLiteConnection.h"
#include "SQLiteError.h"
#include "SQLiteStatement.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class SQLiteInterruptTest : public testing::Test
{
protected:
    /// SQLite's code for a statement that reads the file.
    int look()
    {
        try {
            SQLiteStatement statement(m_connection, "SELECT count(*) FROM sqlite_master;");
            return statement.step() == SQLiteStatement::Step::row ? SQLITE_ROW
                                                                  : m_connection.errorCode();
        } catch (const SQLiteError& error) {
            return error.code();
        }
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"test.sqlite"_s);
    SQLiteConnection m_connection{m_path};
    SQLiteInterrupt m_interrupt;
};

} // namespace

TEST_F(SQLiteInterruptTest, endsWhatBeginsInAScopeFromThenOn)
{
    m_connection.execute("CREATE TABLE t (a);");
    {
        const SQLiteInterrupt::Scope scope(m_interrupt, m_connection);
        EXPECT_EQ(look(), SQLITE_ROW);
        m_interrupt.request();
        EXPECT_EQ(look(), SQLITE_INTERRUPT);
        EXPECT_EQ(look(), SQLITE_INTERRUPT);
    }
    EXPECT_EQ(look(), SQLITE_ROW) << "the scope is over";
    const SQLiteInterrupt::Scope scope(m_interrupt, m_connection);
    EXPECT_EQ(look(), SQLITE_INTERRUPT) << "once and for good";
}

TEST_F(SQLiteInterruptTest, leavesItToTheCheckToFindThatAFileIsNoDatabase)
{
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(QByteArray(8192, 'x'));
    }
    std::optional<SQLiteInterrupt::Scope> scope;
    ASSERT_NO_THROW(scope.emplace(m_interrupt, m_connection));
    EXPECT_EQ(look(), SQLITE_NOTADB);
    m_interrupt.request();
    EXPECT_EQ(look(), SQLITE_INTERRUPT);
}

} // namespace tessly::test
