#include "ClipStatement.h"

#include "ClipStoreError.h"
#include "SQLiteError.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

SQLiteStatement prepare(const SQLiteConnection& connection, const QByteArray& sql)
{
    try {
        return {connection, sql};
    } catch (const SQLiteError& error) {
        throw ClipStoreError(
            ClipStoreError::Case::execute,
            u"SQL: "_s + QString::fromUtf8(sql) + u": "_s + error.message(), error.code());
    }
}

void requireBound(bool isBound, const char* what, int parameter)
{
    if (!isBound) {
        throw ClipStoreError(
            ClipStoreError::Case::bind,
            QLatin1StringView(what) + u" parameter "_s + QString::number(parameter));
    }
}

void requireBindable(const std::optional<QByteArray>& bytes)
{
    if (bytes && bytes->size() > std::numeric_limits<qint32>::max()) {
        qFatal("A value of more than 2 GB cannot be stored");
    }
}

} // namespace

ClipStatement::ClipStatement(const SQLiteConnection& connection, const QByteArray& sql)
    : m_connection(connection)
    , m_statement(prepare(connection, sql))
{
}

ClipStatement& ClipStatement::text(int parameter, const std::optional<QByteArray>& utf8)
{
    requireBindable(utf8);
    requireBound(m_statement.bindText(parameter, utf8), "Text", parameter);
    return *this;
}

ClipStatement& ClipStatement::text(int parameter, const std::optional<QString>& string)
{
    return text(parameter, string ? std::optional(string->toUtf8()) : std::nullopt);
}

ClipStatement& ClipStatement::data(int parameter, const std::optional<QByteArray>& bytes)
{
    requireBindable(bytes);
    requireBound(m_statement.bindData(parameter, bytes), "Data", parameter);
    return *this;
}

ClipStatement& ClipStatement::integer(int parameter, qint64 value)
{
    requireBound(m_statement.bindInteger(parameter, value), "Integer", parameter);
    return *this;
}

ClipStatement& ClipStatement::real(int parameter, double value)
{
    requireBound(m_statement.bindDouble(parameter, value), "Double", parameter);
    return *this;
}

void ClipStatement::run(const char* failure)
{
    if (m_statement.step() != SQLiteStatement::Step::done) {
        fail(failure);
    }
}

bool ClipStatement::next(const char* failure)
{
    switch (m_statement.step()) {
    case SQLiteStatement::Step::row:
        return true;
    case SQLiteStatement::Step::done:
        return false;
    case SQLiteStatement::Step::failed:
        break;
    }
    fail(failure);
}

void ClipStatement::fail(const char* failure) const
{
    throw ClipStoreError(
        ClipStoreError::Case::execute,
        QLatin1StringView(failure) + u": "_s + m_connection.errorMessage(),
        m_connection.errorCode());
}

} // namespace tessly
