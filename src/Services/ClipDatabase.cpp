#include "ClipDatabase.h"

#include "ClipSchema.h"
#include "PrivateFiles.h"
#include "SQLiteError.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <sqlite3.h>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

constexpr int primaryCode = 0xff;

// How long an opening that the disk fails is tried again.
constexpr auto patience = 2000ms;
constexpr auto timeBetweenTries = 100ms;

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
    requireFileOfLog(path);
    // Before SQLite, which would create the file for others to read. The companions get their
    // rights from the file.
    createPrivateFile(path);
    try {
        return SQLiteConnection(path);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
}

/// Takes a step of the opening, and takes it again while the disk fails it, for a moment: what a
/// disk says of a file while it does not answer is not to be believed.
template <typename Step>
auto patiently(Step step)
{
    for (auto waited = 0ms;; waited += timeBetweenTries) {
        try {
            return step();
        } catch (const ClipStoreError& error) {
            if ((error.sqliteCode() & primaryCode) != SQLITE_IOERR || waited >= patience) {
                throw;
            }
            qCInfo(lcStore, "Opening the history once more: %s", error.what());
        }
        sqlite3_sleep(static_cast<int>(timeBetweenTries.count()));
    }
}

SQLiteConnection openToRead(const QString& path, SQLiteConnection::Access access)
{
    requireFileOfLog(path);
    try {
        return SQLiteConnection(path, access);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message(), error.code());
    }
}

/// What is wrong inside the file; none if it is sound. Throws `openDatabase` if that cannot be
/// found out.
std::optional<QString> integrityProblem(const SQLiteConnection& connection)
{
    // A damaged history is set aside. One that another process has locked, or that cannot be read
    // just now, is not damaged: it stays where it is.
    const auto problem = [&connection](const QString& message) {
        if (connection.isHindered()) {
            throw ClipStoreError(
                ClipStoreError::Case::openDatabase, message, connection.errorCode());
        }
        return message;
    };
    std::optional<SQLiteStatement> check;
    try {
        check.emplace(connection, "PRAGMA quick_check(1);");
    } catch (const SQLiteError& error) {
        return problem(error.message());
    }
    if (check->step() != SQLiteStatement::Step::row || check->isNull(0)) {
        return problem(connection.errorMessage());
    }
    const QString verdict = QString::fromUtf8(check->bytes(0));
    return verdict.compare(u"ok", Qt::CaseInsensitive) == 0 ? std::nullopt : std::optional(verdict);
}

} // namespace

ClipDatabase::ClipDatabase(QString path, SQLiteConnection::Access access)
    : m_path(std::move(path))
    , m_isReadOnly(true)
    , m_connection(openToRead(m_path, access))
    , m_index(m_connection)
{
    m_connection.setBusyTimeout(busyTimeout);
    execute(schema::connectionSettings);
    const std::optional<QString> problem = integrityProblem(m_connection);
    if (problem && !m_index.areClipsSound()) {
        throw ClipStoreError(ClipStoreError::Case::corruptedDatabase, *problem);
    }
    if (!problem) {
        m_index.attachToRead();
    }
}

ClipDatabase::ClipDatabase(QString path, ClipStore::Now now)
    : m_path(std::move(path))
    , m_now(std::move(now))
    , m_connection(patiently([this] { return open(m_path); }))
    , m_index(m_connection)
{
    patiently([this, isFirst = true]() mutable {
        if (!std::exchange(isFirst, false)) {
            m_connection = open(m_path);
        }
        makeReady();
    });
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
    validateIntegrity();
    m_connection.setKeepsLog(false);
    prepareTables();
    m_index.attach();
    try {
        execute("PRAGMA optimize;");
    } catch (const ClipStoreError&) {
        // It only serves speed.
    }
}

void ClipDatabase::validateIntegrity()
{
    const std::optional<QString> problem = integrityProblem(m_connection);
    if (!problem) {
        return;
    }
    // A page that could not be read looks like one that is damaged.
    SQLiteConnection other = open(m_path);
    other.setBusyTimeout(busyTimeout);
    other.setKeepsLog(true);
    if (!m_connection.isReadable() || !integrityProblem(other)) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, *problem, SQLITE_IOERR);
    }
    // What is wrong with the index alone is no reason to set the clips aside.
    if (m_index.areClipsSound() && hasHistory()) {
        m_index.remake(*problem, ClipIndex::Dropping::compacts);
        if (!integrityProblem(m_connection)) {
            return;
        }
    }
    throw ClipStoreError(ClipStoreError::Case::corruptedDatabase, *problem, SQLITE_CORRUPT);
}

bool ClipDatabase::hasHistory()
{
    try {
        return schema::exists(m_connection, "table", "clips");
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
    if (!m_index.isToBlame(error)) {
        return false;
    }
    if (m_isReadOnly) {
        m_index.giveUp();
        return true;
    }
    // What else the file has that is no clip may be damaged as well.
    return m_index.remake(
        error.message(), error.sqliteCode() == SQLITE_CORRUPT
                             ? ClipIndex::Dropping::compacts
                             : ClipIndex::Dropping::compactsIfNeeded);
}

void ClipDatabase::requireFile() const
{
    // SQLite would go on writing to a file that nobody can open any more.
    if (m_connection.hasMoved()) {
        throw ClipStoreError(
            ClipStoreError::Case::execute, u"The database file was moved or deleted."_s);
    }
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
