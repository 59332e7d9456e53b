#include "ClipSchema.h"

#include "SQLiteError.h"
#include "SQLiteStatement.h"

#include <QByteArrayList>

#include <algorithm>
#include <iterator>

namespace tessly::schema {

const char* const connectionSettings = R"sql(
PRAGMA temp_store = MEMORY;
PRAGMA secure_delete = ON;
)sql";

// A copy changes some twenty pages here and there, each of which goes through the log as a whole.
// Smaller ones still would make a list of large images read too many.
const char* const newFile = "PRAGMA page_size = 2048; PRAGMA auto_vacuum = INCREMENTAL;";

// Deleted content is overwritten (secure_delete), and its pages go back to the file system.
const char* const settingsAndTables = R"sql(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
PRAGMA foreign_keys = ON;
PRAGMA wal_autocheckpoint = 256;
PRAGMA auto_vacuum = INCREMENTAL;
PRAGMA secure_delete = ON;

CREATE TABLE IF NOT EXISTS clips (
    id TEXT NOT NULL UNIQUE,
    created_at REAL NOT NULL,
    last_used_at REAL NOT NULL,
    kind TEXT NOT NULL,
    preview TEXT NOT NULL,
    search_text TEXT NOT NULL,
    plain_text TEXT,
    rtf BLOB,
    html BLOB,
    image_png BLOB,
    file_urls BLOB,
    source_app_name TEXT,
    source_bundle_id TEXT,
    content_hash TEXT NOT NULL UNIQUE,
    is_pinned INTEGER NOT NULL DEFAULT 0,
    pin_order REAL,
    copy_count INTEGER NOT NULL DEFAULT 1
);
CREATE INDEX IF NOT EXISTS clips_recency_index ON clips (is_pinned DESC, last_used_at DESC);
CREATE INDEX IF NOT EXISTS clips_kind_index ON clips (kind);
CREATE INDEX IF NOT EXISTS clips_source_index ON clips (source_bundle_id);
)sql";

const char* const fullTextTable = R"sql(
CREATE VIRTUAL TABLE IF NOT EXISTS clips_fts USING fts5(
    search_text,
    source_app_name,
    content = 'clips',
    content_rowid = 'rowid',
    tokenize = 'unicode61 remove_diacritics 2'
);
)sql";

// The index holds no text of its own: a row is removed from it by naming exactly what was inserted.
const std::array<Trigger, 3> fullTextTriggers = {{
    {"clips_after_insert", R"sql(CREATE TRIGGER clips_after_insert AFTER INSERT ON clips BEGIN
    INSERT INTO clips_fts (rowid, search_text, source_app_name)
    VALUES (new.rowid, new.search_text, coalesce(new.source_app_name, ''));
END)sql"},
    {"clips_after_delete", R"sql(CREATE TRIGGER clips_after_delete AFTER DELETE ON clips BEGIN
    INSERT INTO clips_fts (clips_fts, rowid, search_text, source_app_name)
    VALUES ('delete', old.rowid, old.search_text, coalesce(old.source_app_name, ''));
END)sql"},
    {"clips_after_update", R"sql(CREATE TRIGGER clips_after_update AFTER UPDATE ON clips BEGIN
    INSERT INTO clips_fts (clips_fts, rowid, search_text, source_app_name)
    VALUES ('delete', old.rowid, old.search_text, coalesce(old.source_app_name, ''));
    INSERT INTO clips_fts (rowid, search_text, source_app_name)
    VALUES (new.rowid, new.search_text, coalesce(new.source_app_name, ''));
END)sql"},
}};

void createFullText(SQLiteConnection& connection)
{
    connection.execute(fullTextTable);
    connection.execute(detachFullText);
    for (const Trigger& trigger : fullTextTriggers) {
        connection.execute(trigger.definition);
    }
}

const char* const rebuildFullText = "INSERT INTO clips_fts(clips_fts) VALUES ('rebuild');";

const char* const tryFullText = "SELECT rowid FROM clips_fts LIMIT 0;";

const char* const checkFullText =
    "INSERT INTO clips_fts(clips_fts, rank) VALUES ('integrity-check', 1);";

const char* const optimizeFullText = "INSERT INTO clips_fts(clips_fts) VALUES ('optimize');";

const char* const deleteSecurely =
    "INSERT INTO clips_fts(clips_fts, rank) SELECT 'secure-delete', 1 WHERE NOT EXISTS"
    " (SELECT 1 FROM clips_fts_config WHERE k = 'secure-delete' AND v = 1);";

const char* const detachFullText = R"sql(
DROP TRIGGER IF EXISTS clips_after_insert;
DROP TRIGGER IF EXISTS clips_after_delete;
DROP TRIGGER IF EXISTS clips_after_update;
)sql";

namespace {

constexpr std::array columns = {
    "id",
    "created_at",
    "last_used_at",
    "kind",
    "preview",
    "search_text",
    "plain_text",
    "rtf",
    "html",
    "image_png",
    "file_urls",
    "source_app_name",
    "source_bundle_id",
    "content_hash",
    "is_pinned",
    "pin_order",
    "copy_count",
};

bool finds(
    const SQLiteConnection& connection, const QByteArray& sql, const QByteArray& first,
    const QByteArray& second)
{
    SQLiteStatement query(connection, sql);
    if (!query.bindText(1, first) || !query.bindText(2, second)) {
        throw SQLiteError(connection.errorMessage(), connection.errorCode());
    }
    const SQLiteStatement::Step step = query.step();
    if (step == SQLiteStatement::Step::failed) {
        throw SQLiteError(connection.errorMessage(), connection.errorCode());
    }
    return step == SQLiteStatement::Step::row;
}

} // namespace

bool exists(const SQLiteConnection& connection, const QByteArray& type, const QByteArray& name)
{
    return finds(
        connection, "SELECT 1 FROM sqlite_master WHERE type = ? AND name = ? LIMIT 1;", type, name);
}

std::optional<QByteArray> missingColumn(const SQLiteConnection& connection)
{
    SQLiteStatement query(connection, "SELECT name FROM pragma_table_info('clips');");
    QByteArrayList names;
    SQLiteStatement::Step step = SQLiteStatement::Step::row;
    while ((step = query.step()) == SQLiteStatement::Step::row) {
        names.append(query.bytes(0));
    }
    if (step == SQLiteStatement::Step::failed) {
        throw SQLiteError(connection.errorMessage(), connection.errorCode());
    }
    if (names.size() != std::ssize(columns)) {
        return std::nullopt;
    }
    const auto* const missing = std::ranges::find_if(
        columns, [&names](const char* column) { return !names.contains(column); });
    return missing == columns.end() ? std::nullopt : std::optional(QByteArray(*missing));
}

bool hasTrigger(const SQLiteConnection& connection, const Trigger& trigger)
{
    return finds(
        connection,
        "SELECT 1 FROM sqlite_master WHERE type = 'trigger' AND name = ? AND sql = ? LIMIT 1;",
        trigger.name, trigger.definition);
}

} // namespace tessly::schema
