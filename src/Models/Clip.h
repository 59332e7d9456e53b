#pragma once

#include "ListedPayload.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace tessly {

/// One entry of the history. Times are seconds since 1970-01-01 00:00:00 UTC.
struct Clip
{
    QUuid id;
    /// When the content was first captured.
    double createdAt = 0;
    /// The latest capture or use; drives the order.
    double lastUsedAt = 0;
    ListedPayload payload;
    /// The application in front at the latest capture.
    std::optional<QString> sourceAppName;
    std::optional<QString> sourceBundleID;
    bool isPinned = false;
    /// Order among pinned entries, larger first; absent when not pinned.
    std::optional<double> pinOrder;
    /// How often this content has been captured.
    qint64 copyCount = 1;

    bool operator==(const Clip&) const = default;
};

} // namespace tessly
