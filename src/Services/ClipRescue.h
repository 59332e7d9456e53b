#pragma once

#include "SQLiteConnection.h"

#include <QString>

namespace tessly {

/// What could be brought over from a damaged history.
struct ClipRescue
{
    /// How many clips the damaged file still tells of.
    qint64 found = 0;
    /// How many of them are in the history now.
    qint64 kept = 0;

    bool operator==(const ClipRescue&) const = default;
};

/// Copies the clips that can still be read, and whose content is what was stored, from the damaged
/// database at `damagedPath` into the open history: the latest used ones first, `maximumHistory` of
/// those that are not pinned, and all that are. What the history has already stays as it is there.
/// The damaged file and its log are not changed. Throws ClipStoreError if the history cannot be
/// written; what was copied by then stays.
[[nodiscard]] ClipRescue
rescueClips(const QString& damagedPath, SQLiteConnection& history, qint64 maximumHistory);

} // namespace tessly
