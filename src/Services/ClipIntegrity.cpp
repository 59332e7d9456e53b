#include "ClipIntegrity.h"

#include "ClipStoreError.h"
#include "SQLiteError.h"
#include "SQLiteStatement.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// What of a verdict, a line for each problem, stood in the way of a look at a page: of that SQLite
/// tells in words, too. 0 if nothing did.
int hindranceIn(const QString& verdict)
{
    static const QRegularExpression expression(u"error code[= ](\\d+)"_s);
    for (auto matches = expression.globalMatch(verdict); matches.hasNext();) {
        const int code = matches.next().captured(1).toInt();
        if (isHindrance(code)) {
            return code;
        }
    }
    return 0;
}

} // namespace

std::optional<QString> integrityProblem(const SQLiteConnection& connection, Extent extent)
{
    const auto problem = [](const QString& message, int code) {
        if (isHindrance(code)) {
            throw ClipStoreError(ClipStoreError::Case::openDatabase, message, code);
        }
        return message;
    };
    std::optional<SQLiteStatement> check;
    try {
        check.emplace(
            connection,
            extent == Extent::file ? "PRAGMA quick_check(1);" : "PRAGMA quick_check(clips);");
    } catch (const SQLiteError& error) {
        return problem(error.message(), error.code());
    }
    if (check->step() != SQLiteStatement::Step::row || check->isNull(0)) {
        return problem(connection.errorMessage(), connection.errorCode());
    }
    const QString verdict = QString::fromUtf8(check->bytes(0));
    if (verdict.compare(u"ok", Qt::CaseInsensitive) == 0) {
        return std::nullopt;
    }
    return problem(verdict, hindranceIn(verdict));
}

} // namespace tessly
