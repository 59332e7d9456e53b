#pragma once

#include "SQLiteConnection.h"

#include <QByteArray>

#include <array>

namespace tessly::schema {

/// Whether the file has a table, trigger, … (`type`) of that name. Throws SQLiteError.
[[nodiscard]] bool
exists(const SQLiteConnection& connection, const QByteArray& type, const QByteArray& name);

/// For every connection, before it reads anything: what SQLite needs room for on the side (undoing
/// a statement, sorting) is clipboard content, and would go to a file in /var/tmp; and what is
/// deleted is overwritten from the first statement on, which may be one that mends the file.
extern const char* const connectionSettings;

/// For a new, empty file, before anything else: the write-ahead log fixes the file's format, after
/// which the setting of the same name in `settingsAndTables` comes too late.
extern const char* const newFile;

/// Run on every open: the connection's settings, the table and its indexes.
extern const char* const settingsAndTables;

/// Run on every open: the full-text index and the triggers that keep it in step.
extern const char* const fullText;

/// The names of these triggers.
inline constexpr std::array fullTextTriggers = {
    "clips_after_insert", "clips_after_delete", "clips_after_update"};

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
