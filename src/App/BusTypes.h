#pragma once

#include "ClipSummary.h"
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

} // namespace tessly

Q_DECLARE_METATYPE(tessly::BusEntries)
