#include "SyncedCommits.h"

#include "SQLiteError.h"

#include <QLoggingCategory>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

} // namespace

SyncedCommits::SyncedCommits(SQLiteConnection& connection)
    : m_connection(connection)
{
    m_connection.execute("PRAGMA synchronous = FULL;");
}

SyncedCommits::~SyncedCommits()
{
    try {
        m_connection.execute("PRAGMA synchronous = NORMAL;");
    } catch (const SQLiteError& error) {
        qCInfo(lcStore, "Every change is synced from now on: %s", error.what());
    }
}

} // namespace tessly
