#pragma once

namespace tessly::schema {

/// For a new, empty file, before anything else: the write-ahead log fixes the file's format, after
/// which the setting of the same name in `settingsAndTables` comes too late.
extern const char* const newFile;

/// Run on every open: the connection's settings, the table and its indexes.
extern const char* const settingsAndTables;

/// Run on every open: the full-text index and the triggers that keep it in step.
extern const char* const fullText;

/// Fills a new full-text index from the table.
extern const char* const rebuildFullText;

} // namespace tessly::schema
