#include "SQLiteError.h"

#include <utility>

namespace tessly {

SQLiteError::SQLiteError(QString message, int code)
    : m_message(std::move(message))
    , m_what(m_message.toUtf8())
    , m_code(code)
{
}

} // namespace tessly
