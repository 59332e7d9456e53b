#pragma once

#include "SQLiteConnection.h"

#include <QByteArray>

#include <array>
#include <optional>

namespace tessly::schema {

/// Whether the file has a table, trigger, … (`type`) of that name. Throws SQLiteError.
[[nodiscard]] bool
exists(const SQLiteConnection& connection, const QByteArray& type, const QByteArray& name);

/// A column that the table of the clips should have and has not, although it has as many as it
/// should: damage, in place of another program's table. None where there is no such table. Throws
/// SQLiteError.
[[nodiscard]] std::optional<QByteArray> missingColumn(const SQLiteConnection& connection);

/// For every connection, before it reads anything: what SQLite needs room for on the side (undoing
/// a statement, sorting) is clipboard content, and would go to a file in /var/tmp; and what is
/// deleted is overwritten from the first statement on, which may be one that mends the file.
extern const char* const connectionSettings;

/// For a new, empty file, before anything else: the write-ahead log fixes the file's format, after
/// which the setting of the same name in `settingsAndTables` comes too late.
extern const char* const newFile;

/// Run on every open: the connection's settings, the table and its indexes.
extern const char* const settingsAndTables;

/// A trigger by its name and the statement that makes it, as SQLite keeps it too.
struct Trigger
{
    const char* name;
    const char* definition;
};

/// Those that keep the full-text index in step with the table.
extern const std::array<Trigger, 3> fullTextTriggers;

/// Whether the file has exactly this trigger. Throws SQLiteError.
[[nodiscard]] bool hasTrigger(const SQLiteConnection& connection, const Trigger& trigger);

/// Makes the full-text index, empty, if there is none, and its triggers in any case. Throws
/// SQLiteError.
void createFullText(SQLiteConnection& connection);

/// Fills the full-text index from the table.
extern const char* const rebuildFullText;

/// Fails where SQLite cannot use the index, although the file has one.
extern const char* const tryFullText;

/// Has words removed from the index when they are deleted, once and for all; from SQLite 3.42 on.
extern const char* const deleteSecurely;

/// Compares the index with the table; fails where they differ.
extern const char* const checkFullText;

/// Merges the parts of the index into one.
extern const char* const optimizeFullText;

/// For an SQLite that cannot keep the index in step: without this, no clip could be saved.
extern const char* const detachFullText;

} // namespace tessly::schema
