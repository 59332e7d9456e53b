#pragma once

#include "SQLiteConnection.h"

namespace tessly {

/// A transaction that is rolled back unless it has been committed.
class SQLiteTransaction
{
public:
    enum class Mode {
        /// Takes each lock when it is first needed: one state of the database for several reads.
        deferred,
        /// Takes the write lock at once.
        immediate,
    };

    /// Throws SQLiteError.
    SQLiteTransaction(SQLiteConnection& connection, Mode mode);
    ~SQLiteTransaction();
    SQLiteTransaction(const SQLiteTransaction&) = delete;
    SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;

    /// Throws SQLiteError, and leaves the rest to the destructor.
    void commit();

private:
    SQLiteConnection& m_connection;
};

} // namespace tessly
