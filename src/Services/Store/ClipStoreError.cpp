#include "ClipStoreError.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QString prefix(ClipStoreError::Case errorCase)
{
    switch (errorCase) {
    case ClipStoreError::Case::openDatabase:
        return u"Could not open clipboard database: "_s;
    case ClipStoreError::Case::corruptedDatabase:
        return u"Clipboard database integrity check failed: "_s;
    case ClipStoreError::Case::prepare:
        return u"Could not prepare database query: "_s;
    case ClipStoreError::Case::execute:
        return u"Clipboard database operation failed: "_s;
    case ClipStoreError::Case::bind:
        return u"Could not bind clipboard data: "_s;
    case ClipStoreError::Case::decode:
        return u"Could not decode clipboard data: "_s;
    }
    Q_UNREACHABLE();
}

} // namespace

ClipStoreError::ClipStoreError(Case errorCase, QString message, int sqliteCode)
    : m_case(errorCase)
    , m_message(std::move(message))
    , m_description(prefix(m_case) + m_message)
    , m_what(m_description.toUtf8())
    , m_sqliteCode(sqliteCode)
{
}

} // namespace tessly
