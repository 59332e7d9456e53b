#pragma once

#include "SQLiteConnection.h"

#include <QByteArray>

#include <memory>

struct sqlite3_blob;

namespace tessly {

/// The text or blob in one field of a table, read without a copy of SQLite's own, and only as far
/// as it is wanted. Use it within a transaction.
class SQLiteBlob
{
public:
    /// Throws SQLiteError, also for a row that is not there and a value that is neither text nor
    /// blob. Reads nothing of the content. The connection must outlive it.
    SQLiteBlob(
        const SQLiteConnection& connection, const char* table, const char* column, qint64 row);

    /// In bytes.
    [[nodiscard]] qint64 size() const;

    /// The first bytes, as many as there are up to `count`: never null. Throws SQLiteError.
    [[nodiscard]] QByteArray first(qint64 count) const;
    [[nodiscard]] QByteArray all() const { return first(size()); }

private:
    struct Close
    {
        void operator()(sqlite3_blob* blob) const;
    };
    const SQLiteConnection& m_connection;
    std::unique_ptr<sqlite3_blob, Close> m_blob;
};

} // namespace tessly
