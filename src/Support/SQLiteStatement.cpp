#include "SQLiteStatement.h"

#include "SQLiteError.h"

#include <sqlite3.h>

namespace tessly {

void SQLiteStatement::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

SQLiteStatement::SQLiteStatement(const SQLiteConnection& connection, const QByteArray& sql)
{
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(
        connection.handle(), sql.constData(), static_cast<int>(sql.size()), &statement, nullptr);
    m_statement.reset(statement);
    if (result != SQLITE_OK) {
        throw SQLiteError(connection.errorMessage(), result);
    }
}

bool SQLiteStatement::bindText(int parameter, const std::optional<QByteArray>& utf8)
{
    if (!utf8) {
        return sqlite3_bind_null(m_statement.get(), parameter) == SQLITE_OK;
    }
    m_bound.append(*utf8);
    return sqlite3_bind_text64(
               m_statement.get(), parameter, utf8->constData(),
               static_cast<sqlite3_uint64>(utf8->size()), SQLITE_STATIC, SQLITE_UTF8) == SQLITE_OK;
}

bool SQLiteStatement::bindData(int parameter, const std::optional<QByteArray>& bytes)
{
    if (!bytes) {
        return sqlite3_bind_null(m_statement.get(), parameter) == SQLITE_OK;
    }
    m_bound.append(*bytes);
    // constData is never null, so that an empty buffer is a blob of no bytes and not NULL.
    return sqlite3_bind_blob64(
               m_statement.get(), parameter, bytes->constData(),
               static_cast<sqlite3_uint64>(bytes->size()), SQLITE_STATIC) == SQLITE_OK;
}

bool SQLiteStatement::bindInteger(int parameter, qint64 value)
{
    return sqlite3_bind_int64(m_statement.get(), parameter, value) == SQLITE_OK;
}

bool SQLiteStatement::bindDouble(int parameter, double value)
{
    return sqlite3_bind_double(m_statement.get(), parameter, value) == SQLITE_OK;
}

SQLiteStatement::Step SQLiteStatement::step()
{
    switch (sqlite3_step(m_statement.get())) {
    case SQLITE_ROW:
        return Step::row;
    case SQLITE_DONE:
        return Step::done;
    default:
        return Step::failed;
    }
}

void SQLiteStatement::reset()
{
    // The result repeats what the last step said.
    sqlite3_reset(m_statement.get());
}

int SQLiteStatement::columnCount() const
{
    return sqlite3_column_count(m_statement.get());
}

bool SQLiteStatement::isNull(int column) const
{
    return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL;
}

qint64 SQLiteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

double SQLiteStatement::real(int column) const
{
    return sqlite3_column_double(m_statement.get(), column);
}

QByteArray SQLiteStatement::bytes(int column) const
{
    // Asking for a blob gives text as it stands, too.
    const void* data = sqlite3_column_blob(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return size > 0 ? QByteArray(static_cast<const char*>(data), size) : QByteArray("");
}

} // namespace tessly
