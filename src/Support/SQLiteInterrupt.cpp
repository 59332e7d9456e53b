#include "SQLiteInterrupt.h"

#include "SQLiteError.h"

#include <sqlite3.h>

namespace tessly {

void SQLiteInterrupt::request()
{
    const std::scoped_lock lock(m_mutex);
    m_isRequested = true;
    if (m_connection != nullptr) {
        sqlite3_interrupt(m_connection);
    }
}

bool SQLiteInterrupt::isRequested() const
{
    const std::scoped_lock lock(m_mutex);
    return m_isRequested;
}

// SQLite forgets an interrupt when a statement begins and no other runs. This one runs all the
// time: it has three rows at least. It does not look into the file, as later versions do for every
// query; what is wrong with the file is for the check to tell.
SQLiteInterrupt::Scope::Scope(SQLiteInterrupt& interrupt, const SQLiteConnection& connection)
    : m_interrupt(interrupt)
    , m_running(connection, "PRAGMA collation_list;")
{
    if (m_running.step() != SQLiteStatement::Step::row) {
        throw SQLiteError(connection.errorMessage(), connection.errorCode());
    }
    const std::scoped_lock lock(m_interrupt.m_mutex);
    m_interrupt.m_connection = connection.handle();
    if (m_interrupt.m_isRequested) {
        sqlite3_interrupt(connection.handle());
    }
}

SQLiteInterrupt::Scope::~Scope()
{
    const std::scoped_lock lock(m_interrupt.m_mutex);
    m_interrupt.m_connection = nullptr;
}

} // namespace tessly
