#pragma once

#include "SQLiteConnection.h"
#include "SQLiteStatement.h"

#include <mutex>

namespace tessly {

/// Ends, from another thread, what a connection spends long on: once, and for good. Any thread.
class SQLiteInterrupt
{
public:
    /// What a connection does within a Scope ends soon, as does what is begun within one from now
    /// on. What it has answered by then is not to be believed: of a check that was cut short,
    /// SQLite tells as of pages that are missing.
    void request();
    [[nodiscard]] bool isRequested() const;

    /// While it lives, the interrupt reaches the connection, which must outlive it. One at a time.
    /// Throws SQLiteError.
    class Scope
    {
    public:
        Scope(SQLiteInterrupt& interrupt, const SQLiteConnection& connection);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        SQLiteInterrupt& m_interrupt;
        SQLiteStatement m_running;
    };

private:
    mutable std::mutex m_mutex;
    bool m_isRequested = false;
    // The one of the scope.
    sqlite3* m_connection = nullptr;
};

} // namespace tessly
