#pragma once

#include "ClipSummary.h"
#include "StatusReport.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace tessly {

/// One array of objects, one object a line.
[[nodiscard]] QByteArray listJSON(const std::vector<ClipSummary>& entries);

/// One line an entry, its columns aligned; `now` in seconds since 1970. Previews are cut to fit
/// into `columns`, where that is given.
[[nodiscard]] QString
listText(const std::vector<ClipSummary>& entries, double now, std::optional<int> columns);

/// One object.
[[nodiscard]] QByteArray statusJSON(const StatusReport& report);

[[nodiscard]] QString statusText(const StatusReport& report);

} // namespace tessly
