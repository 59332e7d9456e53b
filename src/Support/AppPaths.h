#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <optional>

/// Where the history lives on disk, and what becomes of a damaged one. Any thread. Everything that
/// the file system refuses is thrown as FileError.
namespace tessly::AppPaths {

/// The program's data folder: "Tessly" in $XDG_DATA_HOME, or in ~/.local/share where that is not
/// set or not absolute.
[[nodiscard]] QString applicationSupportDirectory();

/// The database in the data folder. Its "-wal", "-shm" and "-journal" stand beside it.
[[nodiscard]] QString databasePath();

/// The file of the settings, in $XDG_CONFIG_HOME or ~/.config.
[[nodiscard]] QString settingsPath();

/// Creates the data folder and what leads to it; nobody else can enter them, from their first
/// moment. An existing data folder is closed to others, and so are earlier rescues with their
/// files; where that fails it is logged.
void prepareDirectories();

/// Moves the database's files out of `dataFolder` into a folder of their own in its "Recovered
/// History" and returns that folder; none, and nothing created, if there is no file. Nothing is
/// ever deleted: what was moved before a failure stays where it then is. The folder is marked as
/// one of which nothing has been brought over.
std::optional<QString> recoverDatabaseFiles(const QString& dataFolder);

/// The latest folder of those in "Recovered History" that are still marked; none if there is none.
[[nodiscard]] std::optional<QString> unfinishedRecovery(const QString& dataFolder);

/// Takes the mark away: what could be brought over from the folder has been, or is no longer
/// wanted. False if the mark is still there.
bool finishRecovery(const QString& rescueFolder);

/// The name of a rescue folder: "history-recovery-2026-03-09T14-05-59Z-3F2A9C1B".
[[nodiscard]] QString recoveryFolderName(const QDateTime& time, QUuid tag);

} // namespace tessly::AppPaths
