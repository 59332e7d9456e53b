#include "ClipStore.h"

#include "ClipDatabase.h"
#include "SQLiteError.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPromise>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

} // namespace

ClipStore::ClipStore(Means means)
    : m_path(means.databasePath)
    , m_now(std::move(means.now))
    , m_makeReader(std::move(means.makeReader))
    , m_setAside(std::move(means.setAside))
    , m_maximumHistory(means.maximumHistory)
    , m_unchecked(means.databasePath)
    , m_actor(std::move(means.executor))
{
    try {
        SQLiteConnection::requireOwnFiles(m_path);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
    begin();
}

ClipStore::ClipStore(const QString& databasePath, Now now, std::unique_ptr<Executor> executor)
    : ClipStore(Means{
          .databasePath = databasePath, .now = std::move(now), .executor = std::move(executor)})
{
}

ClipStore::~ClipStore()
{
    m_interrupt.request();
}

void ClipStore::begin()
{
    const auto promise = std::make_shared<QPromise<Opening>>();
    m_opening = promise->future();
    promise->start();
    const auto opening = m_actor.run([this, promise] {
        try {
            promise->addResult(open());
        } catch (...) {
            m_failure = std::current_exception();
            m_isOpen = true;
            promise->setException(m_failure);
        }
        promise->finish();
    });
}

ClipStore::Opening ClipStore::open()
{
    Opening opening;
    try {
        openDatabase();
    } catch (const ClipStoreError& error) {
        if (error.errorCase() != ClipStoreError::Case::corruptedDatabase || !m_setAside) {
            throw;
        }
        qCWarning(lcStore, "The history is damaged: %s", error.what());
        m_unchecked.end();
        opening.damagedFolder = m_setAside();
        openDatabase();
        if (opening.damagedFolder) {
            m_damagedPath = QDir(*opening.damagedFolder).filePath(QFileInfo(m_path).fileName());
        }
    }
    m_isOpen = true;
    return opening;
}

void ClipStore::openDatabase()
{
    m_database = std::make_unique<ClipDatabase>(m_path, m_now, &m_interrupt);
}

/// Else what the user does to an entry would find none, and the entry would come back later.
void ClipStore::requireEntries()
{
    if (!m_damagedPath || m_rescue) {
        return;
    }
    const ClipStoreError lack(
        ClipStoreError::Case::execute, u"The history was damaged, and is not yet brought over."_s);
    try {
        while (!m_rescue) {
            if (m_interrupt.isRequested()) {
                throw lack;
            }
            m_rescue = m_database->rescueSome(*m_damagedPath, m_maximumHistory);
        }
    } catch (const ClipStoreError& error) {
        if (m_interrupt.isRequested()) {
            throw;
        }
        qCWarning(lcStore, "The damaged history was not brought over: %s", error.what());
        // Here or at a later start.
        throw lack;
    }
}

void ClipStore::requireEntry(QUuid id)
{
    if (m_damagedPath && !m_database->has(id)) {
        requireEntries();
    }
}

ClipDatabase& ClipStore::database()
{
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    return *m_database;
}

QCoro::Task<ClipStore::Opening> ClipStore::opened() const
{
    QFuture<Opening> opening = m_opening;
    co_return co_await opening;
}

QCoro::Task<void> ClipStore::finish()
{
    m_interrupt.request();
    return run([](ClipDatabase&) {});
}

bool ClipStore::ftsAvailable() const
{
    return m_isOpen && m_database && m_database->ftsAvailable();
}

QCoro::Task<> ClipStore::endReader(ClipStore& store)
{
    const Life life = store.m_life;
    try {
        co_await store.opened();
    } catch (const std::exception&) {
        // Of which those hear who have asked.
    }
    if (life.expired()) {
        co_return;
    }
    // After what it was asked for by then, which is not to be waited for here.
    co_await store.m_reader->run([&store] { store.m_unchecked.end(); });
    if (!life.expired()) {
        store.m_reader.reset();
    }
}

void ClipStore::throwThatItIsClosed()
{
    throw ClipStoreError(ClipStoreError::Case::execute, u"The database is closed."_s);
}

QCoro::Task<std::vector<Clip>> ClipStore::search(
    QString query, std::optional<ClipKind> kind, qint64 limit, std::vector<Clip> held,
    std::stop_token stop)
{
    return read([query = std::move(query), kind, limit, held = std::move(held),
                 stop = std::move(stop)](ClipDatabase& database) {
        return database.search(query, kind, limit, held, stop);
    });
}

QCoro::Task<std::optional<Clip>> ClipStore::clip(qint64 position)
{
    return read([position](ClipDatabase& database) { return database.clip(position); });
}

QCoro::Task<std::optional<ClipPayload>> ClipStore::payload(QUuid id)
{
    return read([id](ClipDatabase& database) { return database.payload(id); });
}

QCoro::Task<std::optional<ClipPreview>> ClipStore::preview(QUuid id)
{
    return read([id](ClipDatabase& database) { return database.preview(id); });
}

QCoro::Task<std::shared_ptr<const std::vector<ClipSummary>>>
ClipStore::summaries(QString query, std::optional<ClipKind> kind, qint64 limit)
{
    return read([query = std::move(query), kind, limit](ClipDatabase& database) {
        return std::make_shared<const std::vector<ClipSummary>>(
            database.summaries(query, kind, limit));
    });
}

QCoro::Task<Clip> ClipStore::save(
    const ClipPayload& payload, std::optional<QString> sourceAppName,
    std::optional<QString> sourceBundleID, qint64 maximumHistory)
{
    WaitingCopy copy{
        .id = QUuid::createUuid(),
        .time = std::nullopt,
        .payload = payload,
        .sourceAppName = std::move(sourceAppName),
        .sourceBundleID = std::move(sourceBundleID)};
    if (isOpening()) {
        copy.time = m_now();
        return saveLater(std::move(copy), maximumHistory);
    }
    return run([copy = std::move(copy), maximumHistory](ClipDatabase& database) {
        return database.save(copy, maximumHistory);
    });
}

QCoro::Task<Clip> ClipStore::saveLater(WaitingCopy copy, qint64 maximumHistory)
{
    const QUuid id = copy.id;
    QFuture<Clip> saved = m_copies.add(std::move(copy));
    // It keeps the place in the order, and ends with nothing to do if the copy is given up.
    const auto saving = m_actor.run([this, id, maximumHistory] {
        std::optional<WaitingCopies::Waiting> waiting = m_copies.take(id);
        if (!waiting) {
            return;
        }
        const auto save = [&](ClipDatabase& database) {
            return database.save(waiting->copy, maximumHistory);
        };
        try {
            waiting->saved.addResult(withinMemory(save, database()));
        } catch (...) {
            waiting->saved.setException(std::current_exception());
        }
        waiting->saved.finish();
    });
    co_return co_await saved;
}

QCoro::Task<ImportOutcome>
ClipStore::importLines(std::function<QByteArrayView()> lines, qint64 maximumHistory)
{
    return run([lines = std::move(lines), maximumHistory](ClipDatabase& database) {
        return database.importLines(lines(), maximumHistory);
    });
}

QCoro::Task<void> ClipStore::setPinned(bool pinned, QUuid id)
{
    return run([this, pinned, id](ClipDatabase& database) {
        requireEntry(id);
        database.setPinned(pinned, id);
    });
}

QCoro::Task<void> ClipStore::markUsed(QUuid id, bool moveToTop)
{
    const std::optional<double> time = isOpening() ? std::optional(m_now()) : std::nullopt;
    return run(
        [id, moveToTop, time](ClipDatabase& database) { database.markUsed(id, moveToTop, time); });
}

QCoro::Task<void> ClipStore::remove(QUuid id)
{
    return run([this, id](ClipDatabase& database) {
        requireEntry(id);
        database.remove(id);
    });
}

QCoro::Task<void> ClipStore::clear(bool includePinned)
{
    return run([this, includePinned](ClipDatabase& database) {
        if (!includePinned) {
            // What is pinned there is to stay.
            requireEntries();
        }
        database.clear(includePinned);
        if (m_damagedPath) {
            m_rescue = m_rescue.value_or(ClipRescue());
        }
    });
}

QCoro::Task<void> ClipStore::trimHistory(qint64 maximum)
{
    return run([maximum](ClipDatabase& database) { database.trimHistory(maximum); });
}

QCoro::Task<ClipStore::Upkeep> ClipStore::scrub()
{
    if (isOpening()) {
        co_return Upkeep::hindered;
    }
    co_return co_await run([this](ClipDatabase& database) {
        return database.scrub([this] { return m_waiting > 0; });
    });
}

QCoro::Task<ClipStore::Statistics> ClipStore::statistics()
{
    return read([](ClipDatabase& database) { return database.statistics(); });
}

QCoro::Task<std::optional<ClipRescue>>
ClipStore::rescueSome(const QString& damagedPath, qint64 maximumHistory)
{
    return run(
        [this, damagedPath, maximumHistory](ClipDatabase& database) -> std::optional<ClipRescue> {
            if (damagedPath != m_damagedPath) {
                return database.rescueSome(damagedPath, maximumHistory);
            }
            if (!m_rescue) {
                m_rescue = database.rescueSome(damagedPath, maximumHistory);
            }
            return m_rescue;
        });
}

QCoro::Task<ClipRescue> ClipStore::rescue(QString damagedPath, qint64 maximumHistory)
{
    const Life life = m_life;
    while (!life.expired()) {
        const std::optional<ClipRescue> rescue = co_await rescueSome(damagedPath, maximumHistory);
        if (rescue) {
            co_return *rescue;
        }
    }
    // The next start goes on.
    co_return {};
}

} // namespace tessly
