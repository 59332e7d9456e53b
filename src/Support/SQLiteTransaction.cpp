#include "SQLiteTransaction.h"

#include "SQLiteError.h"

namespace tessly {

SQLiteTransaction::SQLiteTransaction(SQLiteConnection& connection, Mode mode)
    : m_connection(connection)
{
    m_connection.execute(mode == Mode::immediate ? "BEGIN IMMEDIATE;" : "BEGIN;");
}

SQLiteTransaction::~SQLiteTransaction()
{
    // After a commit there is none left, nor after some errors (a full disk): SQLite has rolled
    // back itself then.
    if (!m_connection.isInTransaction()) {
        return;
    }
    try {
        m_connection.execute("ROLLBACK;");
    } catch (const SQLiteError&) {
        // What brought us here is the error to tell; the next BEGIN fails if this one stays open.
    }
}

void SQLiteTransaction::commit()
{
    m_connection.execute("COMMIT;");
}

} // namespace tessly
