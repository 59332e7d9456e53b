#pragma once

#include "Actor.h"
#include "Clip.h"
#include "ClipPreview.h"
#include "ClipRescue.h"
#include "ClipStoreError.h"
#include "ClipSummary.h"
#include "ImportOutcome.h"
#include "SQLiteInterrupt.h"
#include "UncheckedHistory.h"
#include "WaitingCopies.h"

#include <QCoroTask>
#include <QFuture>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <vector>

namespace tessly {

class ClipDatabase;

/// The history on disk: the one SQLite connection, on a worker of its own, one operation at a time.
///
/// Every operation is called on the main thread and awaited there; it throws ClipStoreError from
/// the await. Operations run in the order of their calls. Destroying the store waits for what was
/// called and closes the connection.
///
/// The worker begins with opening the file, for which it reads all of it: see `isOpening`. What
/// changes the history waits for that, as does what cannot be read before. What is read before,
/// where there is a reader for it, may not show the changes that wait, but for the copies: those it
/// lists where they will be.
class ClipStore
{
public:
    struct Statistics
    {
        qint64 totalItems = 0;
        qint64 pinnedItems = 0;
        /// The database file and its "-wal" and "-shm" companions, on disk.
        qint64 databaseBytes = 0;

        bool operator==(const Statistics&) const = default;
    };

    /// Bytes of content that the clips of one answer hold at the most, all together. Each has an
    /// equal share of it, that of `usualClips` where they are fewer; content that is larger is left
    /// out (ListedPayload), and fetched by `payload` when it is needed.
    static constexpr qint64 heldContent = qint64(32) * 1024 * 1024;
    static constexpr qint64 usualClips = 50;

    /// Seconds since 1970-01-01 00:00:00 UTC; called on the main thread and on the worker.
    using Now = std::function<double()>;

    struct Means
    {
        QString databasePath;
        Now now;
        /// The worker.
        std::unique_ptr<Executor> executor;
        /// Makes what reads until the file is open, when something is to be read by then. Without
        /// it, reading waits.
        std::function<std::unique_ptr<Executor>()> makeReader = {};
        /// Moves the files of a damaged history away, when nobody has them open, and returns where
        /// they are. Called on the worker; what it throws is what `opened` throws. Without it, a
        /// damaged history cannot be opened.
        std::function<std::optional<QString>()> setAside = {};
        /// Of a history that is set aside, as for `rescue`.
        qint64 maximumHistory = 0;
    };

    /// Begins to open or create the database. Throws ClipStoreError if what is in the place of its
    /// files cannot be the user's own.
    explicit ClipStore(Means means);
    ClipStore(const QString& databasePath, Now now, std::unique_ptr<Executor> executor);
    ~ClipStore();
    ClipStore(const ClipStore&) = delete;
    ClipStore& operator=(const ClipStore&) = delete;

    /// What became of the opening.
    struct Opening
    {
        /// Where a damaged history was put, in whose place there is a fresh one.
        std::optional<QString> damagedFolder;

        bool operator==(const Opening&) const = default;
    };
    /// Throws what stood in the way; all operations that were called throw that as well.
    [[nodiscard]] QCoro::Task<Opening> opened() const;
    [[nodiscard]] bool isOpening() const { return !m_isOpen; }

    /// Cuts the check of the file short, for the end of the program, and returns when all that was
    /// called is done.
    [[nodiscard]] QCoro::Task<void> finish();

    /// Whether the full-text index serves searches; no while the file is being opened.
    [[nodiscard]] bool ftsAvailable() const;

    /// The clips that match, in list order, `limit` at the most (negative: all).
    ///
    /// `held` are clips that the caller has from earlier answers: what they know of their content
    /// is taken over (shared, not copied) instead of being read again. A search whose `stop` is
    /// requested ends early, also in the middle of a scan, and then throws `execute` with SQLite's
    /// "interrupted".
    [[nodiscard]] QCoro::Task<std::vector<Clip>> search(
        QString query, std::optional<ClipKind> kind, qint64 limit, std::vector<Clip> held = {},
        std::stop_token stop = {});

    /// The clip at a position, counted from 1, of the whole history in list order; none if the
    /// history is shorter.
    [[nodiscard]] QCoro::Task<std::optional<Clip>> clip(qint64 position);

    /// The whole content of a clip; none if the history does not have the clip any more.
    [[nodiscard]] QCoro::Task<std::optional<ClipPayload>> payload(QUuid id);

    /// What a preview shows of a clip, for which no more is read than that; none if the history
    /// does not have the clip any more.
    [[nodiscard]] QCoro::Task<std::optional<ClipPreview>> preview(QUuid id);

    /// As `search`, without the contents, of which a long history has more than fits in memory.
    /// Shared, so that whoever hands them on need not touch ten thousand of them. Never null.
    [[nodiscard]] QCoro::Task<std::shared_ptr<const std::vector<ClipSummary>>>
    summaries(QString query, std::optional<ClipKind> kind, qint64 limit);

    /// Stores a capture: a new entry, or one more use of the entry with the same content; then
    /// trims. Known content is not read for that: the clip that is returned holds its content only
    /// where a list would. As all that changes entries, it makes the database's file anew first if
    /// that is gone, and takes the one that is there if another one is in its place.
    ///
    /// A copy that is made while the file is being opened waits in memory, and is saved as of its
    /// time. If it has to make room for later ones there, CopyGivenUp is thrown.
    [[nodiscard]] QCoro::Task<Clip> save(
        const ClipPayload& payload, std::optional<QString> sourceAppName,
        std::optional<QString> sourceBundleID, qint64 maximumHistory);
    /// Adds the entries of these lines (ExportFormat) with their times and pins; an entry of which
    /// the history has the content stays as it is. Nothing goes for it: once there are
    /// `maximumHistory` entries that are not pinned, more of those are refused, as is every line
    /// that is no entry. One whose identifier is taken gets another. What is added is added at
    /// once, and on the disk when this returns.
    ///
    /// `lines` is called on the worker; what it returns lives as long as it does.
    [[nodiscard]] QCoro::Task<ImportOutcome>
    importLines(std::function<QByteArrayView()> lines, qint64 maximumHistory);
    [[nodiscard]] QCoro::Task<void> setPinned(bool pinned, QUuid id);
    [[nodiscard]] QCoro::Task<void> markUsed(QUuid id, bool moveToTop);
    /// When it returns, no byte of the content is left in the database's files; where wiping them
    /// failed, or another process reads just then, the log says so, and `scrub` is to do it.
    [[nodiscard]] QCoro::Task<void> remove(QUuid id);
    /// As `remove`, in parts: when it throws, the latest entries may be gone and others not. If
    /// another file is in the place of the database's, it takes that, throws and clears nothing.
    [[nodiscard]] QCoro::Task<void> clear(bool includePinned);
    [[nodiscard]] QCoro::Task<void> trimHistory(qint64 maximum);

    /// Where the upkeep of the files stands.
    enum class Upkeep {
        /// Nothing is left to do.
        done,
        /// Another process was reading the files, or other operations were waiting, which is over
        /// as a rule when it is asked for again.
        hindered,
    };
    /// Wipes from the database's files what `trimHistory` has dropped from the history, what
    /// `remove` and `clear` could not, and, once it is a tenth of the history, what saves have
    /// dropped: that rewrites the full-text index. Then checks, once after the opening, whether the
    /// index agrees with the clips, and makes it again if not; and gives room that many deletions
    /// have left back to the disk. The last two give way to other operations. Call it a few seconds
    /// after the last write, and a while after the start. What failed is tried again by the next
    /// call.
    [[nodiscard]] QCoro::Task<Upkeep> scrub();
    [[nodiscard]] QCoro::Task<Statistics> statistics();

    /// Brings over what can still be read of a damaged history that was set aside: see
    /// ClipRescuer. `damagedPath` is its database file, which is not changed. Other operations come
    /// in between; one on an entry that is not there yet brings over all of it first. What fails or
    /// ends the process leaves what was brought over by then, and the folder marked as unfinished
    /// (AppPaths); calling it again goes on from there. Clearing the history ends it for good.
    [[nodiscard]] QCoro::Task<ClipRescue> rescue(QString damagedPath, qint64 maximumHistory);

private:
    using Life = std::weak_ptr<const char>;

    [[nodiscard]] QCoro::Task<std::optional<ClipRescue>>
    rescueSome(const QString& damagedPath, qint64 maximumHistory);
    [[nodiscard]] QCoro::Task<Clip> saveLater(WaitingCopy copy, qint64 maximumHistory);

    // Opening, on the worker.
    void begin();
    [[nodiscard]] Opening open();
    void openDatabase();
    /// Brings all of a history over that was set aside at this start, if that is still to be done.
    void requireEntries();
    /// The same for what is done to an entry, which may be one that was listed before.
    void requireEntry(QUuid id);

    /// The open database, on the worker. Throws what kept it from being opened.
    [[nodiscard]] ClipDatabase& database();

    template <typename Operation>
    static auto withinMemory(Operation& operation, ClipDatabase& database)
    {
        try {
            return operation(database);
        } catch (const std::bad_alloc&) {
            // In the words in which SQLite says it.
            throw ClipStoreError(ClipStoreError::Case::execute, QStringLiteral("out of memory"));
        }
    }

    /// Runs an operation on the worker, and counts it until it begins.
    template <typename Operation>
    auto run(Operation operation)
    {
        ++m_waiting;
        return m_actor.run([this, operation = std::move(operation)]() mutable {
            --m_waiting;
            return withinMemory(operation, database());
        });
    }

    /// Runs what changes nothing: where it can, without waiting for the file to be open.
    template <typename Read>
    QCoro::Task<std::invoke_result_t<Read&, ClipDatabase&>> read(Read operation)
    {
        // Before it is asked whether these still wait: one of them is in the file only after that.
        std::vector<WaitingCopy> waiting =
            m_makeReader ? m_copies.all() : std::vector<WaitingCopy>();
        if (isOpening() && m_makeReader) {
            const Life life = m_life;
            auto found = co_await readUnchecked(std::move(waiting), operation);
            if (found) {
                co_return std::move(*found);
            }
            if (life.expired()) {
                throwThatItIsClosed();
            }
        }
        co_return co_await run(std::move(operation));
    }
    template <typename Read>
    auto readUnchecked(std::vector<WaitingCopy> waiting, Read operation)
    {
        const bool isFirst = !m_reader;
        if (isFirst) {
            m_reader = std::make_unique<Actor>(m_makeReader());
        }
        auto found = m_reader->run([this, waiting = std::move(waiting), operation]() mutable {
            return m_unchecked.read(waiting, operation);
        });
        // Not before: where the file is open by now, the reader may be gone when this returns.
        if (isFirst) {
            endReader(*this);
        }
        return found;
    }
    /// Lets the reader go once the file is open.
    static QCoro::Task<> endReader(ClipStore& store);
    [[noreturn]] static void throwThatItIsClosed();

    // Lives as long as the store, for what has to know on the main thread whether it still does.
    std::shared_ptr<const char> m_life = std::make_shared<const char>();
    QString m_path;
    Now m_now;
    std::function<std::unique_ptr<Executor>()> m_makeReader;
    std::function<std::optional<QString>()> m_setAside;
    qint64 m_maximumHistory;
    SQLiteInterrupt m_interrupt;
    WaitingCopies m_copies;
    UncheckedHistory m_unchecked;
    QFuture<Opening> m_opening;
    std::atomic_bool m_isOpen = false;

    // The worker's.
    std::unique_ptr<ClipDatabase> m_database;
    std::exception_ptr m_failure;
    /// The file of a history that was set aside at this start.
    std::optional<QString> m_damagedPath;
    /// What was brought over from there, when that is done.
    std::optional<ClipRescue> m_rescue;

    std::atomic_int m_waiting = 0;
    // Present while there is something to read before the file is open.
    std::unique_ptr<Actor> m_reader;
    // Goes first, so that what was called has run before the database closes.
    Actor m_actor;
};

} // namespace tessly
