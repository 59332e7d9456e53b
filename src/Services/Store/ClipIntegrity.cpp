#include "ClipIntegrity.h"

#include "ClipSchema.h"
#include "ClipStoreError.h"
#include "SQLiteError.h"
#include "SQLiteStatement.h"

#include <QLoggingCategory>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

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

const char* checkOf(Extent extent)
{
    switch (extent) {
    case Extent::file:
        return "PRAGMA quick_check(1);";
    case Extent::clips:
        return "PRAGMA quick_check(clips);";
    case Extent::clipsAndTheirIndexes:
        return "PRAGMA integrity_check(clips);";
    }
    Q_UNREACHABLE();
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
        check.emplace(connection, checkOf(extent));
    } catch (const SQLiteError& error) {
        return problem(error.message(), error.code());
    }
    if (check->step() != SQLiteStatement::Step::row || check->isNull(0)) {
        return problem(connection.errorMessage(), connection.errorCode());
    }
    const QString verdict = QString::fromUtf8(check->bytes(0));
    if (verdict.compare(u"ok", Qt::CaseInsensitive) != 0) {
        return problem(verdict, hindranceIn(verdict));
    }
    check.reset();
    try {
        // SQLite takes any name for a column's.
        if (const std::optional<QByteArray> missing = schema::missingColumn(connection)) {
            return u"The table has no column “%1”."_s.arg(QLatin1StringView(*missing));
        }
    } catch (const SQLiteError& error) {
        return problem(error.message(), error.code());
    }
    return std::nullopt;
}

bool remakeDamagedIndexes(SQLiteConnection& connection)
{
    try {
        const std::optional<QString> problem =
            integrityProblem(connection, Extent::clipsAndTheirIndexes);
        if (!problem || integrityProblem(connection, Extent::clips)) {
            return false;
        }
        connection.execute("REINDEX clips;");
        qCWarning(
            lcStore, "The indexes of the table were made again: %s", qUtf8Printable(*problem));
        return true;
    } catch (const SQLiteError& error) {
        qCInfo(lcStore, "The indexes of the table could not be made again: %s", error.what());
    } catch (const ClipStoreError& error) {
        qCInfo(lcStore, "The indexes of the table could not be checked: %s", error.what());
    }
    return false;
}

} // namespace tessly
