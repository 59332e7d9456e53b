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
    /// And whether these indexes say what the table says.
    clipsAndTheirIndexes,
};

/// What is wrong inside a history's file, in SQLite's words as a rule; none if it is sound. Reads
/// all pages of the extent. Throws ClipStoreError `openDatabase` where that cannot be found out
/// just now: a file that another process has locked, or that cannot be read, is not damaged.
[[nodiscard]] std::optional<QString>
integrityProblem(const SQLiteConnection& connection, Extent extent);

/// Makes the own indexes of the table of the clips again if they, and not the table, are damaged,
/// which no opening looks for; whether they were. False as well where that cannot be found out or
/// done just now. Either is a line in the log. Reads all pages of the table.
bool remakeDamagedIndexes(SQLiteConnection& connection);

} // namespace tessly
