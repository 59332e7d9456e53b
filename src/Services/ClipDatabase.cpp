#include "ClipDatabase.h"

#include "ClipSchema.h"
#include "PrivateFiles.h"
#include "SQLiteError.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

SQLiteConnection open(const QString& path)
{
    // Before SQLite, which would create the file for others to read. The companions get their
    // rights from the file.
    createPrivateFile(path);
    try {
        return SQLiteConnection(path);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message());
    }
}

SQLiteConnection openToRead(const QString& path, SQLiteConnection::Access access)
{
    try {
        return SQLiteConnection(path, access);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::openDatabase, error.message());
    }
}

} // namespace

ClipDatabase::ClipDatabase(QString path, SQLiteConnection::Access access)
    : m_path(std::move(path))
    , m_connection(openToRead(m_path, access))
{
    m_connection.setBusyTimeout(busyTimeout);
    execute(schema::connectionSettings);
    validateIntegrity();
    m_ftsAvailable = hasUsableFullText();
}

ClipDatabase::ClipDatabase(QString path, ClipStore::Now now)
    : m_path(std::move(path))
    , m_now(std::move(now))
    , m_connection(open(m_path))
{
    m_connection.setBusyTimeout(busyTimeout);
    execute(schema::connectionSettings);
    // A file that is not ours to protect is still ours to use.
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        makeFilePrivate(m_path + companion);
    }
    validateIntegrity();
    prepareTables();
    m_ftsAvailable = prepareFullText();
    try {
        execute("PRAGMA optimize;");
    } catch (const ClipStoreError&) {
        // It only serves speed.
    }
}

void ClipDatabase::validateIntegrity()
{
    // A damaged history is set aside. One that another process has locked, or that cannot be read
    // for want of room or rights, is not damaged: it stays where it is.
    const auto failure = [this](const QString& message) {
        return ClipStoreError(
            m_connection.isHindered() ? ClipStoreError::Case::openDatabase
                                      : ClipStoreError::Case::corruptedDatabase,
            message);
    };
    std::optional<SQLiteStatement> check;
    try {
        check.emplace(m_connection, "PRAGMA quick_check(1);");
    } catch (const SQLiteError& error) {
        throw failure(error.message());
    }
    if (check->step() != SQLiteStatement::Step::row || check->isNull(0)) {
        throw failure(m_connection.errorMessage());
    }
    const QString verdict = QString::fromUtf8(check->bytes(0));
    if (verdict.compare(u"ok", Qt::CaseInsensitive) != 0) {
        throw ClipStoreError(ClipStoreError::Case::corruptedDatabase, verdict);
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

bool ClipDatabase::prepareFullText()
{
    try {
        // In one transaction: an index that was created and not filled would pass for a full one at
        // the next opening.
        return inTransaction(SQLiteTransaction::Mode::immediate, [this] {
            const bool isInStep = isFullTextInStep();
            execute(schema::fullText);
            execute(schema::tryFullText);
            if (!isInStep) {
                execute(schema::rebuildFullText);
            }
            return true;
        });
    } catch (const ClipStoreError&) {
        // Searches do without the index.
    }
    try {
        execute(schema::detachFullText);
    } catch (const ClipStoreError&) {
        // The saves will say what is wrong.
    }
    return false;
}

bool ClipDatabase::isFullTextInStep()
{
    // An index without its triggers was left by an SQLite that cannot keep it.
    return exists("table", "clips_fts") &&
           std::ranges::all_of(schema::fullTextTriggers, [this](const char* trigger) {
               return exists("trigger", trigger);
           });
}

bool ClipDatabase::hasUsableFullText()
{
    if (!isFullTextInStep()) {
        return false;
    }
    try {
        execute(schema::tryFullText);
        return true;
    } catch (const ClipStoreError&) {
        // Searches do without the index.
        return false;
    }
}

bool ClipDatabase::exists(const QByteArray& type, const QByteArray& name)
{
    std::optional<SQLiteStatement> query;
    try {
        query.emplace(
            m_connection, "SELECT 1 FROM sqlite_master WHERE type = ? AND name = ? LIMIT 1;");
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::prepare, error.message());
    }
    if (!query->bindText(1, type) || !query->bindText(2, name)) {
        throw ClipStoreError(ClipStoreError::Case::bind, u"Table name"_s);
    }
    switch (query->step()) {
    case SQLiteStatement::Step::row:
        return true;
    case SQLiteStatement::Step::done:
        return false;
    case SQLiteStatement::Step::failed:
        break;
    }
    throw ClipStoreError(ClipStoreError::Case::execute, m_connection.errorMessage());
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
        throw ClipStoreError(ClipStoreError::Case::execute, error.message());
    }
}

} // namespace tessly
