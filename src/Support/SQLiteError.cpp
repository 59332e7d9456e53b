#include "SQLiteError.h"

#include <sqlite3.h>

#include <utility>

namespace tessly {

SQLiteError::SQLiteError(QString message, int code)
    : m_message(std::move(message))
    , m_what(m_message.toUtf8())
    , m_code(code)
{
}

bool isHindrance(int code)
{
    constexpr int primaryCode = 0xff;
    switch (code & primaryCode) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
    case SQLITE_INTERRUPT:
    case SQLITE_NOMEM:
    case SQLITE_FULL:
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return true;
    default:
        return false;
    }
}

} // namespace tessly
