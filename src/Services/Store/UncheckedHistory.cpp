#include "UncheckedHistory.h"

#include "ClipDatabase.h"

#include <sqlite3.h>

#include <new>
#include <utility>

namespace tessly {

UncheckedHistory::UncheckedHistory(QString path)
    : m_path(std::move(path))
{
}

UncheckedHistory::~UncheckedHistory() = default;

void UncheckedHistory::withDatabase(
    const std::vector<WaitingCopy>& waiting, const std::function<void(ClipDatabase&)>& read)
{
    const std::scoped_lock lock(m_mutex);
    if (m_isOver) {
        return;
    }
    try {
        if (!m_database) {
            auto database =
                std::make_unique<ClipDatabase>(m_path, SQLiteConnection::Access::readOnly);
            if (!database->hasHistory()) {
                return;
            }
            m_database = std::move(database);
        }
        m_database->setWaiting(waiting);
        read(*m_database);
    } catch (const ClipStoreError& error) {
        if (error.sqliteCode() == SQLITE_INTERRUPT) {
            throw;
        }
        m_database.reset();
    } catch (const std::bad_alloc&) {
        m_database.reset();
    }
}

void UncheckedHistory::end()
{
    const std::scoped_lock lock(m_mutex);
    m_isOver = true;
    m_database.reset();
}

} // namespace tessly
