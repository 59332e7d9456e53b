#pragma once

#include "ClipKind.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace tessly {

/// An entry of the history without its content. Times are seconds since 1970-01-01 00:00:00 UTC.
struct ClipSummary
{
    /// Counted from 1 in the whole history, in list order, also where a list shows a part of it.
    qint64 position = 0;
    QUuid id;
    ClipKind kind = ClipKind::text;
    /// As much of the preview as a row can show.
    QString preview;
    double createdAt = 0;
    double lastUsedAt = 0;
    std::optional<QString> sourceAppName;
    std::optional<QString> sourceBundleID;
    bool isPinned = false;
    std::optional<double> pinOrder;
    qint64 copyCount = 1;
    /// Bytes of all flavours together.
    qint64 byteCount = 0;

    bool operator==(const ClipSummary&) const = default;
};

} // namespace tessly
