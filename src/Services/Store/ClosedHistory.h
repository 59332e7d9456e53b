#pragma once

#include "ClipStore.h"
#include "ClipSummary.h"

#include <functional>
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

/// Hands over every entry with its whole content, in list order: those that there are at the
/// beginning, unless they are deleted meanwhile. Works as well while the program runs, of whatever
/// it has saved, and keeps it from nothing: the entries are read a few megabytes at a time, and
/// nothing is held open in between. What `visit` throws is thrown. Of an entry that is not what
/// was stored `damaged` is told, with its position and the reason.
void forEach(
    const QString& databasePath, const std::function<void(const Clip&)>& visit,
    const std::function<void(qint64 position, const QString& reason)>& damaged);

} // namespace tessly::ClosedHistory
