#pragma once

#include "ClipIndex.h"
#include "ClipIntegrity.h"
#include "ClipOverlay.h"
#include "ClipPreview.h"
#include "ClipStatement.h"
#include "ClipStore.h"
#include "ImportOutcome.h"
#include "SQLiteConnection.h"
#include "SQLiteError.h"
#include "SQLiteInterrupt.h"
#include "SQLiteTransaction.h"
#include "WaitingCopies.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace tessly {

/// The history database: what ClipStore does, as plain calls that return when it is done and throw
/// ClipStoreError. One thread at a time.
class ClipDatabase
{
public:
    /// Opens or creates the database and checks that it is sound. When this throws, no connection
    /// is left, so that the files can be moved; `corruptedDatabase` is thrown for what is wrong
    /// with the file, not for what stands around it. A check that `interrupt` ends finds nothing
    /// wrong. It must outlive the database, which looks at it whenever it checks.
    ClipDatabase(QString path, ClipStore::Now now, SQLiteInterrupt* interrupt = nullptr);

    /// Opens an existing database for reading only, without a check: damage is an error only of
    /// what meets it, with SQLite's code. Content that is not what was stored is never read.
    ClipDatabase(QString path, SQLiteConnection::Access access);

    /// Whether the file holds a history at all; one that was just created does not yet.
    [[nodiscard]] bool hasHistory();

    /// For reading only: what is read from now on is as if these had been saved, in this order.
    /// Throws ClipStoreError.
    void setWaiting(const std::vector<WaitingCopy>& copies);

    /// Any thread.
    [[nodiscard]] bool ftsAvailable() const { return m_index.isAvailable(); }

    [[nodiscard]] std::vector<Clip> search(
        const QString& query, std::optional<ClipKind> kind, qint64 limit,
        const std::vector<Clip>& held = {}, const std::stop_token& stop = {});

    [[nodiscard]] bool has(QUuid id);
    [[nodiscard]] std::optional<Clip> clip(qint64 position);
    [[nodiscard]] std::optional<ClipPayload> payload(QUuid id);
    /// For reading only, the whole content is read all the same, since only of that it is known
    /// whether it is what was stored.
    [[nodiscard]] std::optional<ClipPreview> preview(QUuid id);
    /// Those of all clips as they are stored, in list order.
    [[nodiscard]] QByteArrayList storedIDs();
    /// The clip of an identifier from there, with its whole content; none if it has gone.
    [[nodiscard]] std::optional<Clip> wholeClip(const QByteArray& storedID);
    [[nodiscard]] std::vector<ClipSummary>
    summaries(const QString& query, std::optional<ClipKind> kind, qint64 limit);

    Clip save(
        const ClipPayload& payload, const std::optional<QString>& sourceAppName,
        const std::optional<QString>& sourceBundleID, qint64 maximumHistory);
    /// As of its time, and by its identifier if its content is new.
    Clip save(const WaitingCopy& copy, qint64 maximumHistory);
    /// As ClipStore::importLines.
    ImportOutcome importLines(QByteArrayView lines, qint64 maximumHistory);
    void setPinned(bool pinned, QUuid id);
    /// `time`: when that was, if not now.
    void markUsed(QUuid id, bool moveToTop, std::optional<double> time = {});
    void remove(QUuid id);
    void clear(bool includePinned);
    void trimHistory(qint64 maximum);
    [[nodiscard]] ClipStore::Statistics statistics();
    /// One part of a rescue; none while there is more to do.
    std::optional<ClipRescue> rescueSome(const QString& damagedPath, qint64 maximumHistory);
    /// All of it.
    ClipRescue rescue(const QString& damagedPath, qint64 maximumHistory);
    /// `isHurried` tells whether other operations wait, to which what can wait gives way.
    ClipStore::Upkeep scrub(const std::function<bool()>& isHurried = {});

private:
    using Upkeep = ClipStore::Upkeep;

    // Another process holds a lock for a moment only; nobody else writes as a rule.
    static constexpr std::chrono::milliseconds busyTimeout{3000};

    // Opening.
    void makeReady();
    /// Opens the history anew if its file is gone or another one is in its place; whether it was.
    bool followFile();
    void leaveCompanions();
    void validateIntegrity();
    [[nodiscard]] bool isInterrupted() const;
    [[nodiscard]] std::optional<QString> problem(const SQLiteConnection& connection, Extent extent);
    void prepareTables();
    void attachIndex();
    [[nodiscard]] bool isNew();

    // Reading.
    [[nodiscard]] std::vector<qint64>
    find(const QString& query, std::optional<ClipKind> kind, qint64 limit);
    [[nodiscard]] std::vector<Clip>
    read(const std::vector<qint64>& rows, const std::vector<Clip>& held);
    [[nodiscard]] std::optional<qint64> rowOf(QUuid id);
    [[nodiscard]] std::optional<Clip> clipWithHash(const QByteArray& hash);
    [[nodiscard]] bool isAsStored(const ClipPayload& payload, qint64 row);

    // Writing.
    Clip saveInCurrentTransaction(const WaitingCopy& copy, qint64 maximumHistory);
    [[nodiscard]] ImportOutcome
    importInCurrentTransaction(QByteArrayView lines, qint64 maximumHistory);

    /// Deletes some clips, no more than the log should have to hold; whether others are left.
    [[nodiscard]] bool clearSome(bool includePinned);
    void trim(qint64 maximum);
    /// Throws if the file is gone or another one is in its place.
    void requireFile() const;
    [[noreturn]] static void throwThatFileHasMoved();

    // Upkeep.
    [[nodiscard]] ClipRescue endRescue();
    void abandonRescue();
    void tidyUp();
    [[nodiscard]] bool isWipingDue();
    [[nodiscard]] qint64 number(const char* pragma);
    /// Gives room that many deletions have left back to the disk. False if it has to go on another
    /// time.
    [[nodiscard]] bool shrink(const std::function<bool()>& isHurried);
    [[nodiscard]] Upkeep wipe();
    /// False if it has to be done another time.
    [[nodiscard]] bool checkIndex(const std::function<bool()>& isHurried);
    [[nodiscard]] bool emptyLog();

    void execute(const char* sql);
    [[nodiscard]] ClipStatement prepare(const QByteArray& sql) { return {m_connection, sql}; }

    /// Makes the index again if it is to blame for `error`. True if what failed can be repeated.
    [[nodiscard]] bool mendIndex(const ClipStoreError& error);

    /// Runs an operation, and once more if the index failed it and could be made again.
    template <typename Operation>
    auto withIndexMended(Operation operation)
    {
        try {
            return operation();
        } catch (const ClipStoreError& error) {
            if (!mendIndex(error)) {
                throw;
            }
        }
        return operation();
    }

    /// Runs `body` in a transaction, which is rolled back if anything is thrown.
    template <typename Body>
    auto inTransaction(SQLiteTransaction::Mode mode, Body body)
    {
        try {
            SQLiteTransaction transaction(m_connection, mode);
            auto result = body();
            transaction.commit();
            return result;
        } catch (const SQLiteError& error) {
            throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
        }
    }

    QString m_path;
    ClipStore::Now m_now;
    SQLiteInterrupt* m_interrupt = nullptr;
    bool m_isReadOnly = false;
    SQLiteConnection m_connection;
    ClipIndex m_index;
    std::optional<ClipOverlay> m_overlay;
    // The rescue that has begun, and what it brings over; the rescuer goes when it is done.
    QString m_rescued;
    std::unique_ptr<ClipRescuer> m_rescuer;
    // Whether the files may hold bytes of content that the user has deleted. At first, since nobody
    // knows how the last process ended.
    bool m_hasResidue = true;
    // How many clips saves have dropped since the files were wiped.
    qint64 m_trimmed = 0;
    // It is read as a whole for that: after the opening, when nothing else is to be done.
    bool m_isIndexChecked = false;
};

} // namespace tessly
