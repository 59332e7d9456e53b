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

// What is read before it is handed over, but for the last entry, which may be of any size.
constexpr qint64 bytesAtOnce = qint64(4) * 1024 * 1024;
constexpr std::size_t clipsAtOnce = 500;

/// Some of the entries of a history.
struct Part
{
    std::vector<Clip> clips;
    /// The positions of what cannot be handed over, and why not.
    std::vector<std::pair<qint64, QString>> damaged;
    /// The place of the first that follows.
    qsizetype next = 0;
};

Part partFrom(qsizetype first, const QByteArrayList& ids, ClipDatabase& database)
{
    Part part{.clips = {}, .damaged = {}, .next = first};
    qint64 bytes = 0;
    while (part.next < ids.size() && part.clips.size() < clipsAtOnce && bytes < bytesAtOnce) {
        const QByteArray& id = ids[part.next++];
        try {
            if (std::optional<Clip> clip = database.wholeClip(id)) {
                bytes += clip->payload.held()->byteCount();
                part.clips.push_back(std::move(*clip));
            }
        } catch (const ClipStoreError& error) {
            if (error.errorCase() != ClipStoreError::Case::decode) {
                throw;
            }
            part.damaged.emplace_back(part.next, error.message());
        }
    }
    return part;
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

void forEach(
    const QString& databasePath, const std::function<void(const Clip&)>& visit,
    const std::function<void(qint64 position, const QString& reason)>& damaged)
{
    const QByteArrayList ids =
        read(databasePath, [](ClipDatabase& database) { return database.storedIDs(); });
    for (qsizetype next = 0; next < ids.size();) {
        const Part part = read(
            databasePath, [&](ClipDatabase& database) { return partFrom(next, ids, database); });
        if (part.next == next) {
            throw ClipStoreError(
                ClipStoreError::Case::openDatabase, u"The history is no longer there."_s);
        }
        for (const Clip& clip : part.clips) {
            visit(clip);
        }
        for (const auto& [position, reason] : part.damaged) {
            damaged(position, reason);
        }
        next = part.next;
    }
}

} // namespace tessly::ClosedHistory
