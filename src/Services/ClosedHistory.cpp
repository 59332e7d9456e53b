#include "ClosedHistory.h"

#include "ClipDatabase.h"

#include <QDateTime>
#include <QFileInfo>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace tessly::ClosedHistory {

namespace {

bool isDamage(int sqliteCode)
{
    constexpr int primaryCode = 0xff;
    return (sqliteCode & primaryCode) == SQLITE_CORRUPT ||
           (sqliteCode & primaryCode) == SQLITE_NOTADB;
}

/// What shows that a file was written to.
struct Stamp
{
    qint64 size = 0;
    QDateTime modified;
    bool hasLog = false;

    bool operator==(const Stamp&) const = default;
};

Stamp stampOf(const QString& path)
{
    const QFileInfo file(path);
    return {
        file.size(), file.lastModified(),
        QFileInfo::exists(path + u"-wal"_s) || QFileInfo::exists(path + u"-journal"_s)};
}

template <typename Read>
auto read(const QString& path, Read read) -> std::invoke_result_t<Read, ClipDatabase&>
{
    try {
        // A link that leads nowhere is no history that is not there.
        SQLiteConnection::requireOwnFiles(path);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
    if (!QFileInfo::exists(path) && !QFileInfo::exists(path + u"-wal"_s)) {
        return {};
    }
    const auto readWith =
        [&](SQLiteConnection::Access access) -> std::invoke_result_t<Read, ClipDatabase&> {
        try {
            ClipDatabase database(path, access);
            return database.hasHistory() ? read(database)
                                         : std::invoke_result_t<Read, ClipDatabase&>();
        } catch (const ClipStoreError& error) {
            throw isDamage(error.sqliteCode())
                ? ClipStoreError(
                      ClipStoreError::Case::corruptedDatabase, error.message(), error.sqliteCode())
                : error;
        }
    };
    // SQLite makes the companions of a file that it may have to share. Nobody shares this one,
    // unless the program starts just now: then what was read may be half old and half new.
    const Stamp before = stampOf(path);
    if (!before.hasLog) {
        try {
            auto result = readWith(SQLiteConnection::Access::readOnlyUnshared);
            if (stampOf(path) == before) {
                return result;
            }
        } catch (const ClipStoreError&) {
            if (stampOf(path) == before) {
                throw;
            }
        }
    }
    return readWith(SQLiteConnection::Access::readOnly);
}

} // namespace

std::vector<ClipSummary> summaries(
    const QString& databasePath, const QString& query, std::optional<ClipKind> kind, qint64 limit)
{
    return read(databasePath, [&](ClipDatabase& database) {
        return database.summaries(query, kind, limit);
    });
}

ClipStore::Statistics statistics(const QString& databasePath)
{
    return read(databasePath, [](ClipDatabase& database) { return database.statistics(); });
}

} // namespace tessly::ClosedHistory
