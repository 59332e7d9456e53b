#pragma once

#include <QString>

#include <optional>

namespace tessly {

/// Why what is at `path` cannot be a file of the program's own: "is a symbolic link", "is not an
/// ordinary file", "belongs to another user". None if it can be, or if nothing is there; what
/// cannot be looked at is left to whoever opens it.
[[nodiscard]] std::optional<QString> objectionTo(const QString& path);
/// The same for an open file.
[[nodiscard]] std::optional<QString> objectionTo(int descriptor);

/// Creates an empty file that only its owner can read and write, from its first moment. Leaves
/// alone what exists, and anything that fails to whoever opens the file.
void createPrivateFile(const QString& path);

/// Takes all rights from everyone but the owner of a file; false if that fails, or if the file
/// cannot be the program's own. Locks that the process holds on it stay.
bool makeFilePrivate(const QString& path);

/// Creates a folder that only its owner can enter, from its first moment, and the same for an
/// existing one. With `Parents::create` also creates the folders that lead to it. Throws FileError.
enum class Parents { create, mustExist };
void preparePrivateFolder(const QString& path, Parents parents);

/// Creates a folder that only its owner can enter. Throws FileError, also if there is one.
void createPrivateFolder(const QString& path);

/// Takes all rights on a folder from everyone but its owner. Throws FileError, also if a symbolic
/// link is in its place.
void makeFolderPrivate(const QString& path);

} // namespace tessly
