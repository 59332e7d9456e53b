#pragma once

#include <QString>

namespace tessly {

/// Creates an empty file that only its owner can read and write, from its first moment. Leaves
/// alone what exists, and anything that fails to whoever opens the file.
void createPrivateFile(const QString& path);

/// Takes all rights from everyone but the owner of a file; false if that fails.
bool makeFilePrivate(const QString& path);

/// Creates a folder that only its owner can enter, from its first moment, and the same for an
/// existing one. With `Parents::create` also creates the folders that lead to it. Throws FileError.
enum class Parents { create, mustExist };
void preparePrivateFolder(const QString& path, Parents parents);

/// Creates a folder that only its owner can enter. Throws FileError, also if there is one.
void createPrivateFolder(const QString& path);

} // namespace tessly
