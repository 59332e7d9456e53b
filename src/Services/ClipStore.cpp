#include "ClipStore.h"

#include "ClipDatabase.h"

#include <utility>

namespace tessly {

ClipStore::ClipStore(const QString& databasePath, Now now, std::unique_ptr<Executor> executor)
    : m_database(std::make_unique<ClipDatabase>(databasePath, std::move(now)))
    , m_actor(std::move(executor))
{
}

ClipStore::~ClipStore() = default;

bool ClipStore::ftsAvailable() const
{
    return m_database->ftsAvailable();
}

QCoro::Task<std::vector<Clip>> ClipStore::search(
    QString query, std::optional<ClipKind> kind, qint64 limit, std::vector<Clip> held,
    std::stop_token stop)
{
    return run(
        [&database = *m_database, query = std::move(query), kind, limit, held = std::move(held),
         stop = std::move(stop)] { return database.search(query, kind, limit, held, stop); });
}

QCoro::Task<std::optional<Clip>> ClipStore::clip(qint64 position)
{
    return run([&database = *m_database, position] { return database.clip(position); });
}

QCoro::Task<std::optional<ClipPayload>> ClipStore::payload(QUuid id)
{
    return run([&database = *m_database, id] { return database.payload(id); });
}

QCoro::Task<std::shared_ptr<const std::vector<ClipSummary>>>
ClipStore::summaries(QString query, std::optional<ClipKind> kind, qint64 limit)
{
    return run([&database = *m_database, query = std::move(query), kind, limit] {
        return std::make_shared<const std::vector<ClipSummary>>(
            database.summaries(query, kind, limit));
    });
}

QCoro::Task<Clip> ClipStore::save(
    const ClipPayload& payload, std::optional<QString> sourceAppName,
    std::optional<QString> sourceBundleID, qint64 maximumHistory)
{
    return run([&database = *m_database, payload, sourceAppName = std::move(sourceAppName),
                sourceBundleID = std::move(sourceBundleID), maximumHistory] {
        return database.save(payload, sourceAppName, sourceBundleID, maximumHistory);
    });
}

QCoro::Task<void> ClipStore::setPinned(bool pinned, QUuid id)
{
    return run([&database = *m_database, pinned, id] { database.setPinned(pinned, id); });
}

QCoro::Task<void> ClipStore::markUsed(QUuid id, bool moveToTop)
{
    return run([&database = *m_database, id, moveToTop] { database.markUsed(id, moveToTop); });
}

QCoro::Task<void> ClipStore::remove(QUuid id)
{
    return run([&database = *m_database, id] { database.remove(id); });
}

QCoro::Task<void> ClipStore::clear(bool includePinned)
{
    return run([&database = *m_database, includePinned] { database.clear(includePinned); });
}

QCoro::Task<void> ClipStore::trimHistory(qint64 maximum)
{
    return run([&database = *m_database, maximum] { database.trimHistory(maximum); });
}

QCoro::Task<ClipStore::Upkeep> ClipStore::scrub()
{
    return run([this] { return m_database->scrub([this] { return m_waiting > 0; }); });
}

QCoro::Task<ClipStore::Statistics> ClipStore::statistics()
{
    return run([&database = *m_database] { return database.statistics(); });
}

QCoro::Task<std::optional<ClipRescue>>
ClipStore::rescueSome(const QString& damagedPath, qint64 maximumHistory)
{
    return run([&database = *m_database, damagedPath, maximumHistory] {
        return database.rescueSome(damagedPath, maximumHistory);
    });
}

QCoro::Task<ClipRescue> ClipStore::rescue(QString damagedPath, qint64 maximumHistory)
{
    const std::weak_ptr<const char> life = m_life;
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
