#pragma once

#include "ClipStore.h"
#include "ClipSummary.h"

#include <optional>
#include <vector>

/// Reads the history of a program that does not run, and changes nothing: no file is created for a
/// history that was closed in order, and what a crash left behind stays for the next start to mend.
/// The file is not checked; damage is found where it is met. Plain calls, any thread. Throws
/// ClipStoreError, `corruptedDatabase` for damage.
namespace tessly::ClosedHistory {

/// As ClipStore::summaries; none if there is no database.
[[nodiscard]] std::vector<ClipSummary> summaries(
    const QString& databasePath, const QString& query, std::optional<ClipKind> kind, qint64 limit);

/// As ClipStore::statistics; all 0 if there is no database.
[[nodiscard]] ClipStore::Statistics statistics(const QString& databasePath);

} // namespace tessly::ClosedHistory
