#include "FileError.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

FileError::FileError(const QString& action, QString path, std::errc code)
    : m_path(std::move(path))
    , m_code(code)
    , m_description(u"Could not %1 “%2”: %3"_s.arg(
          action, m_path, QString::fromStdString(std::make_error_code(code).message())))
    , m_what(m_description.toUtf8())
{
}

FileError::FileError(const QString& action, QString path, const QString& reason)
    : m_path(std::move(path))
    , m_code(std::errc::operation_not_permitted)
    , m_description(u"Could not %1 “%2”: it %3"_s.arg(action, m_path, reason))
    , m_what(m_description.toUtf8())
{
}

} // namespace tessly
