#include "ClipDatabase.h"

#include "ClipContents.h"
#include "ClipDecoder.h"
#include "ClipOrder.h"
#include "ClipSearchQuery.h"
#include "UnicodeText.h"

#include <QHash>

#include <sqlite3.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const char* const readFailure = "Could not read clipboard history";

[[noreturn]] void throwThatItIsNotAsStored()
{
    throw ClipStoreError(
        ClipStoreError::Case::decode, u"A clipboard item is not what was stored."_s);
}

} // namespace

std::vector<Clip> ClipDatabase::search(
    const QString& query, std::optional<ClipKind> kind, qint64 limit, const std::vector<Clip>& held,
    const std::stop_token& stop)
{
    if (stop.stop_requested()) {
        throw ClipStoreError(
            ClipStoreError::Case::execute, QLatin1StringView(readFailure) + u": interrupted"_s,
            SQLITE_INTERRUPT);
    }
    std::optional<SQLiteConnection::StopWatch> watch;
    if (stop.stop_possible()) {
        watch.emplace(m_connection, [&stop] { return stop.stop_requested(); });
    }
    const QString trimmedQuery = QString::fromUtf8(trimmed(query.toUtf8()));
    return withIndexMended([&] {
        return inTransaction(SQLiteTransaction::Mode::deferred, [&] {
            return read(find(trimmedQuery, kind, limit), held);
        });
    });
}

std::vector<qint64>
ClipDatabase::find(const QString& query, std::optional<ClipKind> kind, qint64 limit)
{
    const ClipOrder order(m_connection);
    ClipOrder::Rows rows;
    if (query.isEmpty()) {
        rows = order.all(kind, limit);
    } else {
        if (m_index.isAvailable()) {
            rows = order.matching(ftsQuery(query), kind, limit);
        }
        if (rows.empty()) {
            rows = order.like(likePattern(query), kind, limit);
        }
    }
    return m_overlay ? m_overlay->arranged(rows, query, kind, limit) : rows;
}

void ClipDatabase::setWaiting(const std::vector<WaitingCopy>& copies)
{
    m_overlay.reset();
    if (!copies.empty()) {
        m_overlay.emplace(m_connection, copies);
    }
}

std::vector<Clip> ClipDatabase::read(const std::vector<qint64>& rows, const std::vector<Clip>& held)
{
    // A clip's content never changes, so that what the caller has is as good as what is stored.
    QHash<QUuid, const ListedPayload*> payloads;
    for (const Clip& clip : held) {
        payloads.insert(clip.id, &clip.payload);
    }
    // An equal share for each, so that what is held does not depend on the others.
    const qint64 share =
        ClipStore::heldContent / std::max(static_cast<qint64>(rows.size()), ClipStore::usualClips);
    ClipContents contents(m_connection);
    ClipStatement bookkeeping =
        prepare(QByteArrayLiteral("SELECT") + bookkeepingColumns + " FROM clips WHERE rowid = ?;");

    std::vector<Clip> clips;
    clips.reserve(rows.size());
    for (const qint64 row : rows) {
        if (m_overlay && m_overlay->isWaiting(row)) {
            clips.push_back(m_overlay->clip(row, share));
            continue;
        }
        bookkeeping.reset();
        if (!bookkeeping.integer(1, row).next(readFailure)) {
            continue;
        }
        Clip& clip = clips.emplace_back(decodeClip(bookkeeping.row(), {}));
        const ListedPayload* const known = payloads.value(clip.id);
        const bool isKept =
            known != nullptr && (known->held() == nullptr || known->held()->byteCount() <= share);
        clip.payload = isKept ? *known : contents.listed(row, share);
        if (const ClipPayload* const payload = clip.payload.held();
            payload != nullptr && m_isReadOnly && !isKept && !isAsStored(*payload, row)) {
            // To be fetched, which will say so.
            clip.payload = contents.listed(row, -1);
        }
        if (m_overlay) {
            m_overlay->update(row, clip);
        }
    }
    return clips;
}

bool ClipDatabase::has(QUuid id)
{
    return rowOf(id).has_value();
}

std::optional<qint64> ClipDatabase::rowOf(QUuid id)
{
    ClipStatement statement = prepare("SELECT rowid FROM clips WHERE id = ?;");
    return statement.text(1, storedID(id)).next(readFailure)
               ? std::optional(statement.row().integer(0))
               : std::nullopt;
}

std::optional<Clip> ClipDatabase::clip(qint64 position)
{
    if (position < 1) {
        return std::nullopt;
    }
    return inTransaction(SQLiteTransaction::Mode::deferred, [&]() -> std::optional<Clip> {
        const ClipOrder::Rows rows = find({}, std::nullopt, position);
        if (std::cmp_less(rows.size(), position)) {
            return std::nullopt;
        }
        std::vector<Clip> clips = read({rows.back()}, {});
        return clips.empty() ? std::nullopt : std::optional(std::move(clips.front()));
    });
}

/// Pages that were mixed up may lead into the content of another clip.
bool ClipDatabase::isAsStored(const ClipPayload& payload, qint64 row)
{
    ClipStatement hash = prepare("SELECT content_hash FROM clips WHERE rowid = ?;");
    return hash.integer(1, row).next(readFailure) && hash.row().bytes(0) == payload.contentHash();
}

std::optional<ClipPayload> ClipDatabase::payload(QUuid id)
{
    if (m_overlay) {
        if (const ClipPayload* const payload = m_overlay->payload(id)) {
            return *payload;
        }
    }
    return inTransaction(SQLiteTransaction::Mode::deferred, [&]() -> std::optional<ClipPayload> {
        const auto row = rowOf(id);
        if (!row) {
            return std::nullopt;
        }
        ClipPayload payload = ClipContents(m_connection).payload(*row);
        if (m_isReadOnly && !isAsStored(payload, *row)) {
            throwThatItIsNotAsStored();
        }
        return payload;
    });
}

std::optional<ClipPreview> ClipDatabase::preview(QUuid id)
{
    if (m_isReadOnly) {
        const auto whole = payload(id);
        return whole ? std::optional(ClipPreview::of(*whole)) : std::nullopt;
    }
    return inTransaction(SQLiteTransaction::Mode::deferred, [&] {
        const auto row = rowOf(id);
        return row ? std::optional(ClipContents(m_connection).preview(*row)) : std::nullopt;
    });
}

QByteArrayList ClipDatabase::storedIDs()
{
    return inTransaction(SQLiteTransaction::Mode::deferred, [&] {
        QByteArrayList ids;
        ClipStatement id = prepare("SELECT id FROM clips WHERE rowid = ?;");
        for (const qint64 row : find({}, std::nullopt, -1)) {
            id.reset();
            if (id.integer(1, row).next(readFailure)) {
                ids.append(id.row().bytes(0));
            }
        }
        return ids;
    });
}

std::optional<Clip> ClipDatabase::wholeClip(const QByteArray& storedID)
{
    return inTransaction(SQLiteTransaction::Mode::deferred, [&]() -> std::optional<Clip> {
        ClipStatement statement = prepare(
            QByteArrayLiteral("SELECT") + bookkeepingColumns +
            ", clips.rowid FROM clips WHERE id = ?;");
        if (!statement.text(1, storedID).next(readFailure)) {
            return std::nullopt;
        }
        constexpr int rowidColumn = 8;
        const qint64 row = statement.row().integer(rowidColumn);
        const ClipPayload payload = ClipContents(m_connection).payload(row);
        if (!isAsStored(payload, row)) {
            throwThatItIsNotAsStored();
        }
        return decodeClip(statement.row(), payload);
    });
}

std::vector<ClipSummary>
ClipDatabase::summaries(const QString& query, std::optional<ClipKind> kind, qint64 limit)
{
    const QString trimmedQuery = QString::fromUtf8(trimmed(query.toUtf8()));
    const auto read = [&] {
        const ClipOrder::Rows rows = find(trimmedQuery, kind, limit);
        QHash<qint64, qint64> positions;
        for (const qint64 row : find({}, std::nullopt, -1)) {
            positions.insert(row, positions.size() + 1);
        }
        ClipStatement statement =
            prepare(QByteArrayLiteral("SELECT") + summaryColumns + " FROM clips WHERE rowid = ?;");
        std::vector<ClipSummary> found;
        found.reserve(rows.size());
        for (const qint64 row : rows) {
            if (m_overlay && m_overlay->isWaiting(row)) {
                found.push_back(m_overlay->summary(row, positions.value(row)));
                continue;
            }
            statement.reset();
            if (statement.integer(1, row).next(readFailure)) {
                ClipSummary& summary =
                    found.emplace_back(decodeSummary(statement.row(), positions.value(row)));
                if (m_overlay) {
                    m_overlay->update(row, summary);
                }
            }
        }
        return found;
    };
    return withIndexMended([&] { return inTransaction(SQLiteTransaction::Mode::deferred, read); });
}

std::optional<Clip> ClipDatabase::clipWithHash(const QByteArray& hash)
{
    ClipStatement statement = prepare("SELECT rowid FROM clips WHERE content_hash = ? LIMIT 1;");
    if (!statement.text(1, hash).next(readFailure)) {
        return std::nullopt;
    }
    std::vector<Clip> clips = read({statement.row().integer(0)}, {});
    return clips.empty() ? std::nullopt : std::optional(std::move(clips.front()));
}

} // namespace tessly
