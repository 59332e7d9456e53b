#include "SQLiteError.h"

#include <utility>

namespace tessly {

SQLiteError::SQLiteError(QString message)
    : m_message(std::move(message))
    , m_what(m_message.toUtf8())
{
}

} // namespace tessly
