#include "ClipDatabase.h"

#include "ClipDates.h"
#include "ClipDecoder.h"
#include "ClipInsertion.h"
#include "ExportFormat.h"
#include "SyncedCommits.h"
#include "UnicodeText.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <variant>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

const char* const writeFailure = "Could not update clipboard history";

// Fewer would not fill the panel.
constexpr qint64 smallestHistory = 10;

// What clearing deletes in one transaction.
constexpr qint64 clipsClearedAtOnce = 1000;
constexpr qint64 bytesClearedAtOnce = 8 * 1024 * 1024;

qint64 sum(qint64 a, qint64 b)
{
    qint64 result = 0;
    if (__builtin_add_overflow(a, b, &result)) {
        qFatal("A size does not fit 64 bits");
    }
    return result;
}

} // namespace

Clip ClipDatabase::save(
    const ClipPayload& payload, const std::optional<QString>& sourceAppName,
    const std::optional<QString>& sourceBundleID, qint64 maximumHistory)
{
    return save(
        {.id = QUuid::createUuid(),
         .time = std::nullopt,
         .payload = payload,
         .sourceAppName = sourceAppName,
         .sourceBundleID = sourceBundleID},
        maximumHistory);
}

Clip ClipDatabase::save(const WaitingCopy& copy, qint64 maximumHistory)
{
    if (copy.payload.isEmpty()) {
        throw ClipStoreError(ClipStoreError::Case::decode, u"The clipboard item was empty."_s);
    }
    followFile();
    try {
        return withIndexMended([&] {
            return inTransaction(SQLiteTransaction::Mode::immediate, [&] {
                return saveInCurrentTransaction(copy, maximumHistory);
            });
        });
    } catch (const ClipStoreError&) {
        // A large clip reaches the log before it is committed.
        m_hasResidue = true;
        throw;
    }
}

Clip ClipDatabase::saveInCurrentTransaction(const WaitingCopy& copy, qint64 maximumHistory)
{
    const auto& [id, time, payload, sourceAppName, sourceBundleID] = copy;
    const double now = time ? *time : m_now();
    const QByteArray hash = payload.contentHash();
    // Before the trimming, which would take the new clip for the oldest.
    dateClipsBefore(now, m_connection);

    if (std::optional<Clip> known = clipWithHash(hash)) {
        prepare(R"sql(UPDATE clips
SET last_used_at = ?,
    source_app_name = ?,
    source_bundle_id = ?,
    copy_count = copy_count + 1
WHERE content_hash = ?;)sql")
            .real(1, now)
            .text(2, sourceAppName)
            .text(3, sourceBundleID)
            .text(4, hash)
            .run(writeFailure);
        trim(maximumHistory);
        known->lastUsedAt = now;
        known->sourceAppName = sourceAppName;
        known->sourceBundleID = sourceBundleID;
        known->copyCount = sum(known->copyCount, 1);
        return *known;
    }

    const Clip clip{
        .id = id,
        .createdAt = now,
        .lastUsedAt = now,
        .payload = payload,
        .sourceAppName = sourceAppName,
        .sourceBundleID = sourceBundleID,
        .isPinned = false,
        .pinOrder = std::nullopt,
        .copyCount = 1,
    };
    insert(clip, payload, m_connection);
    trim(maximumHistory);
    return clip;
}

ImportOutcome ClipDatabase::importLines(QByteArrayView lines, qint64 maximumHistory)
{
    followFile();
    try {
        // Whoever has been told that it is here may delete what it came from.
        const SyncedCommits synced(m_connection);
        return withIndexMended([&] {
            return inTransaction(SQLiteTransaction::Mode::immediate, [&] {
                return importInCurrentTransaction(lines, maximumHistory);
            });
        });
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    } catch (const ClipStoreError&) {
        m_hasResidue = true;
        throw;
    }
}

ImportOutcome ClipDatabase::importInCurrentTransaction(QByteArrayView lines, qint64 maximumHistory)
{
    const qint64 limit = std::max(maximumHistory, smallestHistory);
    const double now = m_now();
    ClipStatement count = prepare("SELECT count(*) FROM clips WHERE is_pinned = 0;");
    qint64 unpinned = count.next(writeFailure) ? count.row().integer(0) : 0;
    ClipStatement known = prepare("SELECT 1 FROM clips WHERE content_hash = ?;");
    ImportOutcome outcome;
    for (qint64 number = 0; !lines.isEmpty(); ++number) {
        if (number >= ExportFormat::gatheredLines) {
            throw ClipStoreError(
                ClipStoreError::Case::execute, u"Too many lines to be imported at once."_s);
        }
        const qsizetype end = lines.indexOf('\n');
        const QByteArrayView line = lines.first(end < 0 ? lines.size() : end);
        lines = lines.sliced(end < 0 ? lines.size() : end + 1);
        if (trimmed(line).isEmpty()) {
            continue;
        }
        std::variant<Clip, QString> read = ExportFormat::parse(line, now);
        if (const QString* const objection = std::get_if<QString>(&read)) {
            outcome.refused.push_back({number, *objection});
            continue;
        }
        Clip& clip = std::get<Clip>(read);
        const ClipPayload& payload = *clip.payload.held();
        known.reset();
        if (known.text(1, payload.contentHash()).next(writeFailure)) {
            ++outcome.present;
            continue;
        }
        // It would have to go again with the next copy, or have others go.
        if (!clip.isPinned && unpinned >= limit) {
            outcome.refused.push_back(
                {number, u"the history has the %1 entries that it keeps"_s.arg(limit)});
            continue;
        }
        if (has(clip.id)) {
            clip.id = QUuid::createUuid();
        }
        insert(clip, payload, m_connection);
        ++outcome.added;
        unpinned += clip.isPinned ? 0 : 1;
    }
    return outcome;
}

void ClipDatabase::trimHistory(qint64 maximum)
{
    followFile();
    // The user wants to have less.
    m_hasResidue = true;
    withIndexMended([&] { trim(maximum); });
}

void ClipDatabase::trim(qint64 maximum)
{
    prepare(R"sql(DELETE FROM clips
WHERE rowid IN (
    SELECT rowid
    FROM clips
    WHERE is_pinned = 0
    ORDER BY last_used_at DESC
    LIMIT -1 OFFSET ?
);)sql")
        .integer(1, std::max(maximum, smallestHistory))
        .run(writeFailure);
    m_trimmed += m_connection.changes();
}

void ClipDatabase::setPinned(bool pinned, QUuid id)
{
    followFile();
    withIndexMended([&] {
        prepare(R"sql(UPDATE clips
SET is_pinned = ?,
    pin_order = CASE
        WHEN ? = 1 THEN (
            SELECT coalesce(max(pin_order), 0) + 1
            FROM clips
            WHERE is_pinned = 1
        )
        ELSE NULL
    END
WHERE id = ?;)sql")
            .integer(1, pinned ? 1 : 0)
            .integer(2, pinned ? 1 : 0)
            .text(3, storedID(id))
            .run(writeFailure);
    });
}

void ClipDatabase::markUsed(QUuid id, bool moveToTop, std::optional<double> time)
{
    if (!moveToTop) {
        return;
    }
    followFile();
    const auto use = [&] {
        const double now = time ? *time : m_now();
        dateClipsBefore(now, m_connection);
        prepare(R"sql(UPDATE clips
SET last_used_at = ?,
    pin_order = CASE
        WHEN is_pinned = 1 THEN (
            SELECT coalesce(max(pin_order), 0) + 1
            FROM clips
            WHERE is_pinned = 1
        )
        ELSE pin_order
    END
WHERE id = ?;)sql")
            .real(1, now)
            .text(2, storedID(id))
            .run(writeFailure);
        return true;
    };
    withIndexMended([&] { return inTransaction(SQLiteTransaction::Mode::immediate, use); });
}

void ClipDatabase::remove(QUuid id)
{
    followFile();
    m_hasResidue = true;
    withIndexMended([&] {
        prepare("DELETE FROM clips WHERE id = ?;").text(1, storedID(id)).run(writeFailure);
    });
    tidyUp();
}

void ClipDatabase::clear(bool includePinned)
{
    if (followFile()) {
        // What the user saw and wanted to be gone is not what is there now, a backup perhaps.
        throwThatFileHasMoved();
    }
    abandonRescue();
    m_hasResidue = true;
    // Overwriting what is deleted sends all of it through the log: in parts, so that a disk that is
    // nearly full has the room.
    while (clearSome(includePinned)) {
    }
    try {
        withIndexMended([this] {
            if (m_index.isAvailable()) {
                m_index.giveBack();
            }
        });
    } catch (const ClipStoreError& error) {
        qCInfo(lcStore, "The search index keeps empty pages: %s", error.what());
    }
    tidyUp();
}

bool ClipDatabase::clearSome(bool includePinned)
{
    QByteArrayList rows;
    // Known before anything is deleted: behind the last deletion nothing may fail.
    bool isMoreLeft = false;
    {
        ClipStatement clips(
            m_connection,
            QByteArrayLiteral("SELECT rowid, coalesce(length(image_png), 0) + "
                              "coalesce(length(rtf), 0) + coalesce(length(html), 0) + "
                              "3 * coalesce(length(CAST(plain_text AS BLOB)), 0) FROM clips") +
                (includePinned ? "" : " WHERE is_pinned = 0") +
                // As an index has them: what need not be known is not read.
                " ORDER BY is_pinned DESC, last_used_at DESC;");
        qint64 bytes = 0;
        while ((isMoreLeft = clips.next(writeFailure)) && rows.size() < clipsClearedAtOnce &&
               bytes < bytesClearedAtOnce) {
            rows.append(QByteArray::number(clips.row().integer(0)));
            bytes += clips.row().integer(1);
        }
    }
    const QByteArray sql = "DELETE FROM clips WHERE rowid IN (" + rows.join(',') + ");";
    withIndexMended([&] { execute(sql.constData()); });
    return isMoreLeft;
}

ClipStore::Statistics ClipDatabase::statistics()
{
    const char* const failure = "Could not read database statistics";
    ClipStatement counts = prepare(R"sql(SELECT count(*), coalesce(sum(is_pinned), 0)
FROM clips;)sql");
    if (!counts.next(failure)) {
        throw ClipStoreError(ClipStoreError::Case::execute, QString::fromLatin1(failure));
    }
    ClipStore::Statistics statistics{
        .totalItems = counts.row().integer(0) + (m_overlay ? m_overlay->newClips() : 0),
        .pinnedItems = counts.row().integer(1)};
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        // A file that cannot be looked at has the size 0.
        statistics.databaseBytes =
            sum(statistics.databaseBytes, QFileInfo(m_path + companion).size());
    }
    return statistics;
}

} // namespace tessly
