#include "ClipDatabase.h"

#include "ClipRetries.h"
#include "ClipSchema.h"
#include "FileError.h"
#include "PrivateFiles.h"
#include "SQLiteError.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <sqlite3.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

constexpr int primaryCode = 0xff;

/// SQLite deletes a log that has no file to it; but it may hold all that is left of a history.
void requireFileOfLog(const QString& path)
{
    if (QFileInfo(path).size() == 0 && QFileInfo(path + u"-wal"_s).size() > 0) {
        throw ClipStoreError(
            ClipStoreError::Case::corruptedDatabase, u"The log is there without its file."_s);
    }
}

SQLiteConnection open(const QString& path)
{
    try {
        SQLiteConnection::requireOwnFiles(path);
        requireFileOfLog(path);
        // Before SQLite, which would create the file for others to read. The companions get their
        // rights from the file.
        createPrivateFile(path);
        return SQLiteConnection(path);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
}

/// For the steps of an opening.
ClipRetries retries()
{
    return {
        {.now = std::chrono::steady_clock::now,
         .sleep = [](auto time) { sqlite3_sleep(static_cast<int>(time.count())); }},
        [](const ClipStoreError& error) {
            const bool isOfTheDisk = (error.sqliteCode() & primaryCode) == SQLITE_IOERR;
            if (isOfTheDisk) {
                qCInfo(lcStore, "Opening the history once more: %s", error.what());
            }
            return isOfTheDisk;
        }};
}

SQLiteConnection openToRead(const QString& path, SQLiteConnection::Access access)
{
    try {
        SQLiteConnection::requireOwnFiles(path);
        requireFileOfLog(path);
        return SQLiteConnection(path, access);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
}

} // namespace

ClipDatabase::ClipDatabase(QString path, SQLiteConnection::Access access)
    : m_path(std::move(path))
    , m_isReadOnly(true)
    , m_connection(openToRead(m_path, access))
    , m_index(m_connection)
{
    m_connection.setBusyTimeout(busyTimeout);
    // What is in the log is the writer's to bring in.
    m_connection.setKeepsLog(true);
    execute(schema::connectionSettings);
    if (hasHistory()) {
        m_index.attachToRead();
    }
}

ClipDatabase::ClipDatabase(QString path, ClipStore::Now now, SQLiteInterrupt* interrupt)
    : m_path(std::move(path))
    , m_now(std::move(now))
    , m_interrupt(interrupt)
    , m_connection(retries().take([this] { return open(m_path); }))
    , m_index(m_connection)
{
    retries().take([this, isFirst = true]() mutable {
        if (!std::exchange(isFirst, false)) {
            m_connection = open(m_path);
        }
        makeReady();
    });
}

bool ClipDatabase::followFile()
{
    if (!m_connection.hasMoved()) {
        return false;
    }
    qCWarning(lcStore, "The database file was moved or deleted: the history is opened anew");
    try {
        preparePrivateFolder(QFileInfo(m_path).absolutePath(), Parents::create);
    } catch (const FileError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.description());
    }
    m_connection.setKeepsLog(true);
    leaveCompanions();
    m_rescuer.reset();
    m_rescued.clear();
    SQLiteConnection former = std::exchange(m_connection, open(m_path));
    try {
        makeReady();
    } catch (...) {
        // The next save tries again.
        m_connection = std::move(former);
        throw;
    }
    m_hasResidue = true;
    m_isIndexChecked = false;
    return true;
}

/// Under the path the log of a file that has gone would be taken for that of the file which is
/// there now, and mixed into it.
void ClipDatabase::leaveCompanions()
{
    // It goes into the former file, wherever that is. What another file brought along is not
    // touched by that.
    if (!emptyLog()) {
        throw ClipStoreError(
            ClipStoreError::Case::openDatabase, u"The log of the former file is in use."_s);
    }
    const QString log = m_path + u"-wal"_s;
    if (QFileInfo(log).size() == 0) {
        QFile::remove(log);
    }
    // It is made anew from the log, and the former connection still has the old one mapped.
    QFile::remove(m_path + u"-shm"_s);
}

void ClipDatabase::makeReady()
{
    m_connection.setBusyTimeout(busyTimeout);
    execute(schema::connectionSettings);
    // A file that is not ours to protect is still ours to use.
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        makeFilePrivate(m_path + companion);
    }
    // Should it be damaged, it is set aside as it is.
    m_connection.setKeepsLog(true);
    try {
        validateIntegrity();
    } catch (const ClipStoreError& error) {
        if (!isInterrupted() || error.errorCase() == ClipStoreError::Case::corruptedDatabase) {
            throw;
        }
    }
    m_connection.setKeepsLog(false);
    prepareTables();
    attachIndex();
    if (isInterrupted()) {
        qCInfo(lcStore, "The history was not checked to its end");
        return;
    }
    try {
        execute("PRAGMA optimize;");
    } catch (const ClipStoreError&) {
        // It only serves speed.
    }
}

void ClipDatabase::attachIndex()
{
    try {
        m_index.attach();
    } catch (const ClipStoreError& error) {
        if ((error.sqliteCode() & primaryCode) == SQLITE_IOERR) {
            throw;
        }
        // The history can be used without it until `scrub` attaches it.
        qCInfo(lcStore, "Searching without the index for now: %s", error.what());
    }
}

bool ClipDatabase::isInterrupted() const
{
    return m_interrupt != nullptr && m_interrupt->isRequested();
}

/// As `integrityProblem`; none if it was interrupted.
std::optional<QString> ClipDatabase::problem(const SQLiteConnection& connection, Extent extent)
{
    if (m_interrupt == nullptr) {
        return integrityProblem(connection, extent);
    }
    try {
        const SQLiteInterrupt::Scope scope(*m_interrupt, connection);
        const std::optional<QString> found = integrityProblem(connection, extent);
        return isInterrupted() ? std::nullopt : found;
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    } catch (const ClipStoreError&) {
        if (!isInterrupted()) {
            throw;
        }
        return std::nullopt;
    }
}

void ClipDatabase::validateIntegrity()
{
    const std::optional<QString> found = problem(m_connection, Extent::file);
    if (!found) {
        return;
    }
    // A page that could not be read looks like one that is damaged.
    SQLiteConnection other = open(m_path);
    other.setBusyTimeout(busyTimeout);
    other.setKeepsLog(true);
    const auto requireThatTheOtherAgrees = [&](Extent extent) {
        if (!m_connection.isReadable([this] { return isInterrupted(); }) ||
            !problem(other, extent)) {
            throw ClipStoreError(ClipStoreError::Case::openDatabase, *found, SQLITE_IOERR);
        }
    };
    requireThatTheOtherAgrees(Extent::file);
    // What is wrong with the index alone is no reason to set the clips aside.
    if (problem(m_connection, Extent::clips)) {
        requireThatTheOtherAgrees(Extent::clips);
    } else if (isInterrupted()) {
        return;
    } else if (hasHistory()) {
        try {
            m_index.mend(*found, ClipIndex::Dropping::compacts);
        } catch (const SQLiteError& error) {
            if (isHindrance(error.code())) {
                throw ClipStoreError(
                    ClipStoreError::Case::openDatabase, error.message(), error.code());
            }
            qCInfo(lcStore, "The search index could not be made again: %s", error.what());
        }
        if (!problem(m_connection, Extent::file)) {
            return;
        }
        requireThatTheOtherAgrees(Extent::file);
    }
    throw ClipStoreError(ClipStoreError::Case::corruptedDatabase, *found, SQLITE_CORRUPT);
}

bool ClipDatabase::hasHistory()
{
    try {
        if (!schema::exists(m_connection, "table", "clips")) {
            return false;
        }
        // What can be counted by an index alone would hide that nothing can be read.
        m_connection.execute("SELECT 1 FROM clips NOT INDEXED LIMIT 1;");
        return true;
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

void ClipDatabase::prepareTables()
{
    if (isNew()) {
        execute(schema::newFile);
    }
    execute(schema::settingsAndTables);
}

bool ClipDatabase::isNew()
{
    ClipStatement pages = prepare("PRAGMA page_count;");
    return pages.next("Could not read database size") && pages.row().integer(0) == 0;
}

bool ClipDatabase::mendIndex(const ClipStoreError& error)
{
    if (m_isReadOnly) {
        // To ask whether it is to blame would be a check.
        const bool mayBeToBlame = m_index.isAvailable() && !isHindrance(error.sqliteCode());
        if (mayBeToBlame) {
            m_index.giveUp();
        }
        return mayBeToBlame;
    }
    // Half-way mended is worse than a search that ends late.
    const SQLiteConnection::Unstopped unstopped(m_connection);
    const bool isOfTheFile = (error.sqliteCode() & primaryCode) == SQLITE_CORRUPT &&
                             error.sqliteCode() != SQLITE_CORRUPT_VTAB;
    if (isOfTheFile && remakeDamagedIndexes(m_connection)) {
        return true;
    }
    if (!m_index.isToBlame(error)) {
        return false;
    }
    // What is dropped of it leaves its bytes in the log.
    m_hasResidue = true;
    // What else the file has that is no clip may be damaged as well.
    const bool canBeRepeated = m_index.remake(
        error.message(), error.sqliteCode() == SQLITE_CORRUPT
                             ? ClipIndex::Dropping::compacts
                             : ClipIndex::Dropping::compactsIfNeeded);
    // Where there is none now, `scrub` tries once more.
    m_isIndexChecked = m_index.isAvailable();
    return canBeRepeated;
}

void ClipDatabase::requireFile() const
{
    // SQLite would go on writing to a file that nobody can open any more.
    if (m_connection.hasMoved()) {
        throwThatFileHasMoved();
    }
}

void ClipDatabase::throwThatFileHasMoved()
{
    throw ClipStoreError(
        ClipStoreError::Case::execute, u"The database file was moved or deleted."_s);
}

void ClipDatabase::execute(const char* sql)
{
    try {
        m_connection.execute(sql);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

} // namespace tessly
