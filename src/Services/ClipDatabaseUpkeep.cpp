#include "ClipDatabase.h"

#include "SQLiteResidue.h"

#include <QLoggingCategory>
#include <QScopeGuard>

#include <chrono>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

// Another process that lists the history is done sooner.
constexpr std::chrono::milliseconds readerTimeout(200);

} // namespace

void ClipDatabase::tidyUp()
{
    // The clips are gone from the history; what fails from here on does not bring them back, and
    // must not be taken for a deletion that failed.
    try {
        execute("PRAGMA incremental_vacuum(32);");
        if (wipe() == Upkeep::done) {
            return;
        }
        qCInfo(lcStore, "Another process reads the history: deleted clips will be wiped later");
    } catch (const ClipStoreError& error) {
        qCWarning(lcStore, "Deleted clips are not wiped yet: %s", error.what());
    }
}

ClipStore::Upkeep ClipDatabase::scrub()
{
    return m_hasResidue ? wipe() : Upkeep::done;
}

ClipStore::Upkeep ClipDatabase::wipe()
{
    // A word of a deleted clip stays in the index until its part of the index is merged with the
    // note that it is deleted.
    if (m_ftsAvailable) {
        execute("INSERT INTO clips_fts(clips_fts) VALUES ('optimize');");
    }
    // A deleted row's pages stay in the log as they were written once, and in the file until the
    // log is copied back.
    if (!emptyLog()) {
        return Upkeep::hindered;
    }
    try {
        m_hasResidue = !eraseResidue(m_connection);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message());
    }
    return m_hasResidue ? Upkeep::hindered : Upkeep::done;
}

bool ClipDatabase::emptyLog()
{
    // Who reads for long is not waited for: the log can be emptied another time.
    m_connection.setBusyTimeout(readerTimeout);
    const auto restore = qScopeGuard([this] { m_connection.setBusyTimeout(busyTimeout); });
    ClipStatement checkpoint = prepare("PRAGMA wal_checkpoint(TRUNCATE);");
    return checkpoint.next("Could not update clipboard history") &&
           checkpoint.row().integer(0) == 0;
}

} // namespace tessly
