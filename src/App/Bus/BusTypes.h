#pragma once

#include "ClipSummary.h"
#include "ImportOutcome.h"
#include "StatusReport.h"

#include <QList>
#include <QVariantMap>

#include <optional>
#include <vector>

namespace tessly {

/// Entries as they cross the bus (aa{sv}): one map each, under the keys of the command line's JSON.
/// What an entry does not have is left out.
using BusEntries = QList<QVariantMap>;

/// Makes BusEntries known to QtDBus. Any number of times, any thread.
void registerBusTypes();

[[nodiscard]] BusEntries busEntries(const std::vector<ClipSummary>& entries);
/// None if one of the maps is no entry.
[[nodiscard]] std::optional<std::vector<ClipSummary>> entries(const BusEntries& maps);

[[nodiscard]] QVariantMap busStatus(const StatusReport& report);
/// What the map does not tell stays as in a fresh report.
[[nodiscard]] StatusReport statusReport(const QVariantMap& map);

/// Its keys are added, present, lines and reasons, the last two as long as each other.
[[nodiscard]] QVariantMap busImportOutcome(const ImportOutcome& outcome);
/// None if that is no outcome of so many lines.
[[nodiscard]] std::optional<ImportOutcome> importOutcome(const QVariantMap& map, qint64 lines);

} // namespace tessly

Q_DECLARE_METATYPE(tessly::BusEntries)
