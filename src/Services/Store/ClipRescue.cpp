#include "ClipRescue.h"

#include "ClipDecoder.h"
#include "ClipInsertion.h"
#include "ClipSchema.h"
#include "ClipStatement.h"
#include "ClipStoreError.h"
#include "SQLiteError.h"
#include "SQLiteTransaction.h"
#include "SyncedCommits.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <vector>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

constexpr int primaryCode = 0xff;

const char* const readFailure = "Could not read a damaged history";
const char* const writeFailure = "Could not update clipboard history";

// Up to here every number is tried, since a table with a hole cannot tell which rows are behind it.
constexpr qint64 highestRowToTry = 1'000'000;

// Clips looked at and bytes copied in one transaction, for which a new copy may have to wait.
constexpr std::size_t clipsAtOnce = 100;
constexpr qint64 bytesAtOnce = 4 * 1024 * 1024;

/// Throws what says nothing of the damaged file itself: what cannot be read just now may be read
/// when the rescue goes on. Not so a full disk, which reading does not need: SQLite says that of
/// pages that no file can have; nor too little memory, since a damaged row may have any length.
void requireDamage(const ClipStoreError& error)
{
    const int code = error.sqliteCode() & primaryCode;
    if (isHindrance(code) && code != SQLITE_FULL && code != SQLITE_NOMEM) {
        throw error;
    }
}

/// Where the schema itself is damaged, has SQLite take what it can make sense of.
void takeWhatThereIs(SQLiteConnection& connection)
{
    try {
        connection.execute("SELECT 1 FROM sqlite_master LIMIT 1;");
    } catch (const SQLiteError& error) {
        if (isHindrance(error.code())) {
            throw;
        }
        connection.execute("PRAGMA writable_schema = ON;");
    }
}

SQLiteConnection openUntouched(const QString& path)
{
    const bool hasLog = QFileInfo(path + u"-wal"_s).size() > 0;
    if (!hasLog || QFileInfo::exists(path + u"-journal"_s)) {
        SQLiteConnection connection(path, SQLiteConnection::Access::readOnlyUnshared);
        connection.execute(schema::connectionSettings);
        takeWhatThereIs(connection);
        return connection;
    }
    // What is in the log can only be read with locks of one's own; by the exclusive mode without a
    // shared-memory file.
    SQLiteConnection connection(path);
    connection.setKeepsLog(true);
    connection.execute(schema::connectionSettings);
    connection.execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA query_only = ON;");
    takeWhatThereIs(connection);
    return connection;
}

/// Every row that some way through the table or an index leads to, for as far as it goes.
std::set<qint64> rowsOf(const SQLiteConnection& damaged)
{
    std::set<qint64> rows;
    for (const char* const way :
         {"NOT INDEXED ORDER BY rowid", "NOT INDEXED ORDER BY rowid DESC",
          "INDEXED BY clips_recency_index ORDER BY is_pinned DESC, last_used_at DESC",
          "INDEXED BY clips_recency_index ORDER BY is_pinned, last_used_at",
          "INDEXED BY clips_kind_index ORDER BY kind",
          "INDEXED BY clips_kind_index ORDER BY kind DESC",
          "INDEXED BY clips_source_index ORDER BY source_bundle_id",
          "INDEXED BY clips_source_index ORDER BY source_bundle_id DESC"}) {
        try {
            ClipStatement walk(damaged, QByteArrayLiteral("SELECT rowid FROM clips ") + way);
            while (walk.next(readFailure)) {
                rows.insert(walk.row().integer(0));
            }
        } catch (const ClipStoreError& error) {
            requireDamage(error);
            qCInfo(lcStore, "A damaged history: %s", error.what());
        }
    }
    if (!rows.empty() && *rows.rbegin() <= highestRowToTry) {
        for (qint64 row = 1; row < *rows.rbegin(); ++row) {
            rows.insert(row);
        }
    }
    return rows;
}

struct RescuedClip
{
    Clip clip;
    ClipPayload payload;
};

/// The clip of a row; none if it cannot be read or is no longer what was stored.
std::optional<RescuedClip> clipOf(const SQLiteConnection& damaged, qint64 row)
{
    try {
        ClipStatement bookkeeping(
            damaged,
            QByteArrayLiteral("SELECT") + bookkeepingColumns + " FROM clips WHERE rowid = ?;");
        ClipStatement content(
            damaged, QByteArrayLiteral("SELECT") + contentColumns + " FROM clips WHERE rowid = ?;");
        ClipStatement hash(damaged, "SELECT content_hash FROM clips WHERE rowid = ?;");
        if (!bookkeeping.integer(1, row).next(readFailure) ||
            !content.integer(1, row).next(readFailure) || !hash.integer(1, row).next(readFailure)) {
            return std::nullopt;
        }
        // A row with a bad identifier is refused before its content is copied.
        const Clip clip = decodeClip(bookkeeping.row(), {});
        const ClipPayload payload = decodePayload(content.row());
        const bool isWhole = payload.contentHash() == hash.row().bytes(0);
        return isWhole ? std::optional(RescuedClip{clip, payload}) : std::nullopt;
    } catch (const ClipStoreError& error) {
        requireDamage(error);
        return std::nullopt;
    }
}

} // namespace

ClipRescuer::ClipRescuer(
    const QString& damagedPath, SQLiteConnection& history, qint64 maximumHistory)
    : m_history(history)
    , m_maximumHistory(maximumHistory)
{
    // A log without its file says nothing that SQLite could read, and SQLite would delete it.
    if (QFileInfo(damagedPath).size() == 0) {
        return;
    }
    m_damaged.emplace(openUntouched(damagedPath));
    m_rows = readableRows();
    SQLiteStatement progress(m_history, "PRAGMA user_version;");
    if (progress.step() != SQLiteStatement::Step::row) {
        throw SQLiteError(m_history.errorMessage(), m_history.errorCode());
    }
    m_next = static_cast<std::size_t>(std::max<qint64>(progress.integer(0), 0));
}

/// The rows whose beginnings can be read, in the order in which they are copied.
std::vector<ClipRescuer::Row> ClipRescuer::readableRows() const
{
    std::vector<Row> readable;
    for (const qint64 row : rowsOf(*m_damaged)) {
        try {
            ClipStatement statement(
                *m_damaged, "SELECT is_pinned, last_used_at FROM clips WHERE rowid = ?;");
            if (statement.integer(1, row).next(readFailure) &&
                std::isfinite(statement.row().real(1))) {
                readable.push_back({row, statement.row().integer(0) > 0, statement.row().real(1)});
            }
        } catch (const ClipStoreError& error) {
            // Its page is lost. How many those are, the numbers tell.
            requireDamage(error);
        }
    }
    std::ranges::stable_sort(readable, [](const Row& a, const Row& b) {
        return a.isPinned != b.isPinned ? a.isPinned : a.lastUsedAt > b.lastUsedAt;
    });
    return readable;
}

void ClipRescuer::copySome()
{
    // The mark of the rescue goes when the last part is there, and no start brings back what a
    // power failure takes then.
    const SyncedCommits synced(m_history);
    SQLiteTransaction transaction(m_history, SQLiteTransaction::Mode::immediate);
    qint64 unpinned = unpinnedInHistory();
    qint64 bytes = 0;
    std::size_t next = m_next;
    const std::size_t end = std::min(m_rows.size(), m_next + clipsAtOnce);
    for (; next < end && bytes < bytesAtOnce; ++next) {
        const Row& row = m_rows[next];
        if (!row.isPinned && unpinned >= m_maximumHistory) {
            continue;
        }
        const std::optional<RescuedClip> rescued = clipOf(*m_damaged, row.row);
        if (rescued && insertIfNew(rescued->clip, rescued->payload, m_history)) {
            bytes += rescued->payload.byteCount();
            unpinned += rescued->clip.isPinned ? 0 : 1;
        }
    }
    setProgress(next);
    transaction.commit();
    m_next = next;
}

void ClipRescuer::forgetProgress()
{
    setProgress(0);
}

void ClipRescuer::setProgress(std::size_t next)
{
    const QByteArray sql = "PRAGMA user_version = " + QByteArray::number(qint64(next));
    m_history.execute(sql.constData());
}

qint64 ClipRescuer::unpinnedInHistory() const
{
    ClipStatement count(m_history, "SELECT count(*) FROM clips WHERE is_pinned = 0;");
    return count.next(writeFailure) ? count.row().integer(0) : 0;
}

ClipRescue ClipRescuer::outcome() const
{
    ClipRescue outcome{.found = static_cast<qint64>(m_rows.size())};
    if (m_rows.empty()) {
        return outcome;
    }
    ClipStatement known(m_history, "SELECT 1 FROM clips WHERE id = ?;");
    for (const Row& row : m_rows) {
        try {
            ClipStatement id(*m_damaged, "SELECT id FROM clips WHERE rowid = ?;");
            if (!id.integer(1, row.row).next(readFailure)) {
                continue;
            }
            known.reset();
            known.text(1, id.row().bytes(0));
        } catch (const ClipStoreError& error) {
            requireDamage(error);
            continue;
        }
        outcome.kept += known.next(writeFailure) ? 1 : 0;
    }
    return outcome;
}

} // namespace tessly
