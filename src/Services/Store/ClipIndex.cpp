#include "ClipIndex.h"

#include "ClipIntegrity.h"
#include "ClipSchema.h"
#include "ClipStatement.h"
#include "SQLiteError.h"
#include "SQLiteTransaction.h"

#include <QLoggingCategory>
#include <QScopeGuard>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

constexpr int primaryCode = 0xff;

// The tables in which FTS5 keeps an index.
constexpr std::array shadowTables = {
    "clips_fts_data", "clips_fts_idx", "clips_fts_docsize", "clips_fts_config"};

// Compacting copies the clips into memory once; a file that is larger is left to the next opening.
constexpr qint64 largestToCompact = 64 * 1024 * 1024;

qint64 number(const SQLiteConnection& connection, const char* pragma)
{
    ClipStatement statement(connection, pragma);
    return statement.next("Could not read database size") ? statement.row().integer(0) : 0;
}

/// Whether SQLite can remove deleted words from an index at once.
bool canDeleteSecurely()
{
    constexpr int firstVersion = 3'042'000;
    return sqlite3_libversion_number() >= firstVersion;
}

/// Takes tables out of the schema that cannot be dropped. To be called in a transaction.
void deleteFromSchema(SQLiteConnection& connection, const char* deletion)
{
    connection.execute("PRAGMA writable_schema = ON;");
    const auto protect = qScopeGuard([&connection] {
        try {
            connection.execute("PRAGMA writable_schema = RESET;");
        } catch (const SQLiteError& error) {
            qCWarning(lcStore, "The schema was not read again: %s", error.what());
        }
    });
    connection.execute(deletion);
    connection.execute("PRAGMA writable_schema = RESET;");
}

} // namespace

ClipIndex::ClipIndex(SQLiteConnection& connection)
    : m_connection(connection)
{
}

void ClipIndex::attach()
{
    m_isAvailable = false;
    if (!canBeHad()) {
        detach();
        return;
    }
    std::optional<bool> wasInStep;
    try {
        wasInStep = isInStep();
        if (*wasInStep) {
            m_connection.execute(schema::tryFullText);
        } else {
            // In one transaction: an index that was created and not filled would pass for a full
            // one at the next opening.
            SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
            schema::createFullText(m_connection);
            m_connection.execute(schema::tryFullText);
            m_connection.execute(schema::rebuildFullText);
            transaction.commit();
        }
        deleteSecurely();
        m_isAvailable = true;
    } catch (const SQLiteError& error) {
        if (isHindrance(error.code())) {
            if (wasInStep && !*wasInStep) {
                // Such triggers as there are would fail.
                detach();
            }
            throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
        }
        remake(error.message(), Dropping::compactsIfNeeded);
    }
}

void ClipIndex::attachToRead()
{
    m_isAvailable = false;
    try {
        if (isInStep()) {
            m_connection.execute(schema::tryFullText);
            m_isAvailable = true;
        }
    } catch (const SQLiteError& error) {
        qCInfo(lcStore, "Searching without the index: %s", error.what());
    }
}

void ClipIndex::check()
{
    try {
        m_connection.execute(schema::checkFullText);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

void ClipIndex::optimize()
{
    try {
        m_connection.execute(schema::optimizeFullText);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

void ClipIndex::giveBack()
{
    // Where words are removed at once their pages stay, without a word, until something is merged
    // into them.
    if (!canDeleteSecurely()) {
        return;
    }
    try {
        m_connection.execute(schema::rebuildFullText);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

bool ClipIndex::isToBlame(const ClipStoreError& error)
{
    if (error.sqliteCode() == SQLITE_CORRUPT_VTAB) {
        return true;
    }
    switch (error.sqliteCode() & primaryCode) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        try {
            return !integrityProblem(m_connection, Extent::clips);
        } catch (const ClipStoreError&) {
            // Who knows.
            return false;
        }
    case SQLITE_CONSTRAINT:
        // Those of the clips name their column, or are somebody's trigger.
        return error.sqliteCode() != SQLITE_CONSTRAINT_TRIGGER &&
               !error.message().contains(": clips."_L1);
    case SQLITE_ERROR:
        // A table of it may be gone, or a trigger.
        try {
            if (!m_isAvailable || !schema::exists(m_connection, "table", "clips")) {
                return false;
            }
            if (!isInStep()) {
                return true;
            }
            check();
            return false;
        } catch (const SQLiteError& error) {
            return !isHindrance(error.code());
        } catch (const ClipStoreError& error) {
            return !isHindrance(error.sqliteCode());
        }
    default:
        return false;
    }
}

bool ClipIndex::remake(const QString& reason, Dropping dropping)
{
    try {
        mend(reason, dropping);
        return true;
    } catch (const SQLiteError& error) {
        qCInfo(lcStore, "The search index could not be made again: %s", error.what());
    }
    qCWarning(lcStore, "Searching without an index: %s", qUtf8Printable(reason));
    return detach();
}

void ClipIndex::mend(const QString& reason, Dropping dropping)
{
    m_isAvailable = false;
    bool isMade = false;
    if (dropping != Dropping::compacts) {
        try {
            drop();
            make();
            isMade = true;
        } catch (const SQLiteError& error) {
            if (isHindrance(error.code())) {
                throw;
            }
            qCInfo(lcStore, "The search index has to be dropped by force: %s", error.what());
        }
    }
    if (!isMade) {
        dropByForce(dropping);
        make();
    }
    m_isAvailable = true;
    qCWarning(lcStore, "The search index was made again: %s", qUtf8Printable(reason));
}

void ClipIndex::make()
{
    SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
    schema::createFullText(m_connection);
    m_connection.execute(schema::rebuildFullText);
    transaction.commit();
    deleteSecurely();
}

/// Has deleted words removed from the index at once, where SQLite can do that: later versions leave
/// some behind when the index is merged.
void ClipIndex::deleteSecurely()
{
    if (canDeleteSecurely()) {
        m_connection.execute(schema::deleteSecurely);
    }
}

void ClipIndex::drop()
{
    SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
    m_connection.execute(schema::detachFullText);
    m_connection.execute("DROP TABLE IF EXISTS clips_fts;");
    transaction.commit();
}

void ClipIndex::compact()
{
    try {
        m_connection.execute("VACUUM;");
        return;
    } catch (const SQLiteError& error) {
        const bool isDamage = (error.code() & primaryCode) == SQLITE_CORRUPT;
        if (!isDamage || !schema::exists(m_connection, "table", "sqlite_stat1")) {
            throw;
        }
    }
    // Its own statistics, which later versions of SQLite make by themselves, are copied as well. It
    // can do without them, and makes them again. Where they are damaged no statement can drop them.
    // By now the schema has been read; within the transaction the damage would fail that.
    {
        SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
        deleteFromSchema(
            m_connection, "DELETE FROM sqlite_master WHERE tbl_name GLOB 'sqlite_stat[1-4]';");
        transaction.commit();
    }
    m_connection.execute("VACUUM;");
}

void ClipIndex::dropByForce(Dropping dropping)
{
    const bool isTooLarge =
        number(m_connection, "PRAGMA page_count;") * number(m_connection, "PRAGMA page_size;") >
        largestToCompact;
    if (dropping == Dropping::compacts && !isTooLarge) {
        // What is wrong may be of no table, as with a list of free pages that leads nowhere: then
        // this mends it, and nothing less does.
        try {
            compact();
            drop();
            return;
        } catch (const SQLiteError& error) {
            if (isHindrance(error.code()) && (error.code() & primaryCode) != SQLITE_FULL) {
                throw;
            }
        }
    }
    // FTS5 does not drop what it cannot make sense of, nor SQLite a table with a page that is no
    // page any more. Their names can be taken out of the schema; the pages that then belong to
    // nobody go when the file is compacted, or when the next opening finds them.
    {
        SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
        m_connection.execute(schema::detachFullText);
        deleteFromSchema(
            m_connection, "DELETE FROM sqlite_master WHERE type = 'table' AND name = 'clips_fts';");
        transaction.commit();
    }
    bool isDropped = true;
    for (const char* const table : shadowTables) {
        try {
            const QByteArray sql = QByteArrayLiteral("DROP TABLE IF EXISTS ") + table;
            m_connection.execute(sql.constData());
        } catch (const SQLiteError& error) {
            // Of a page that no file can have SQLite says that the disk is full. If it is,
            // compacting fails as well.
            const int code = error.code() & primaryCode;
            if (code != SQLITE_CORRUPT && code != SQLITE_FULL) {
                throw;
            }
            isDropped = false;
        }
    }
    if (isDropped && (isTooLarge || dropping == Dropping::compactsIfNeeded)) {
        return;
    }
    if (isTooLarge) {
        throw SQLiteError(u"the file is too large to be compacted in memory"_s, SQLITE_TOOBIG);
    }
    SQLiteTransaction transaction(m_connection, SQLiteTransaction::Mode::immediate);
    deleteFromSchema(
        m_connection, "DELETE FROM sqlite_master WHERE tbl_name IN ('clips_fts_data', "
                      "'clips_fts_idx', 'clips_fts_docsize', 'clips_fts_config');");
    transaction.commit();
    m_connection.execute("VACUUM;");
}

bool ClipIndex::detach()
{
    try {
        m_connection.execute(schema::detachFullText);
        return true;
    } catch (const SQLiteError& error) {
        // The saves will say what is wrong.
        qCWarning(lcStore, "The search index is still attached: %s", error.what());
        return false;
    }
}

bool ClipIndex::isInStep()
{
    // An index without its triggers was left by an SQLite that cannot keep it. One that was changed
    // by a damage would fail every save, or let the index go astray.
    return schema::exists(m_connection, "table", "clips_fts") &&
           std::ranges::all_of(schema::fullTextTriggers, [this](const schema::Trigger& trigger) {
               return schema::hasTrigger(m_connection, trigger);
           });
}

bool ClipIndex::canBeHad()
{
    try {
        ClipStatement modules(
            m_connection, "SELECT 1 FROM pragma_module_list WHERE name = 'fts5' LIMIT 1;");
        return modules.next("Could not read the modules of SQLite");
    } catch (const ClipStoreError&) {
        // An SQLite that cannot tell has none.
        return false;
    }
}

} // namespace tessly
