#pragma once

#include "SQLiteConnection.h"

#include <QString>

#include <optional>

namespace tessly {

enum class Extent {
    /// Everything that is in the file.
    file,
    /// The table of the clips with its own indexes.
    clips,
};

/// What is wrong inside a history's file, in SQLite's words; none if it is sound. Reads all pages
/// of the extent. Throws ClipStoreError `openDatabase` where that cannot be found out just now: a
/// file that another process has locked, or that cannot be read, is not damaged.
[[nodiscard]] std::optional<QString>
integrityProblem(const SQLiteConnection& connection, Extent extent);

} // namespace tessly
