#include "SQLiteBlob.h"

#include "SQLiteError.h"

#include <sqlite3.h>

#include <algorithm>

namespace tessly {

void SQLiteBlob::Close::operator()(sqlite3_blob* blob) const
{
    // Reports only what writing has left to do.
    sqlite3_blob_close(blob);
}

SQLiteBlob::SQLiteBlob(
    const SQLiteConnection& connection, const char* table, const char* column, qint64 row)
    : m_connection(connection)
{
    constexpr int forReading = 0;
    sqlite3_blob* blob = nullptr;
    const int result =
        sqlite3_blob_open(connection.handle(), "main", table, column, row, forReading, &blob);
    m_blob.reset(blob);
    if (result != SQLITE_OK) {
        throw SQLiteError(connection.errorMessage(), connection.errorCode());
    }
}

qint64 SQLiteBlob::size() const
{
    return sqlite3_blob_bytes(m_blob.get());
}

QByteArray SQLiteBlob::first(qint64 count) const
{
    const auto bytes = static_cast<int>(std::clamp<qint64>(count, 0, size()));
    if (bytes == 0) {
        return QByteArrayLiteral("");
    }
    QByteArray content(bytes, Qt::Uninitialized);
    if (sqlite3_blob_read(m_blob.get(), content.data(), bytes, 0) != SQLITE_OK) {
        throw SQLiteError(m_connection.errorMessage(), m_connection.errorCode());
    }
    return content;
}

} // namespace tessly
