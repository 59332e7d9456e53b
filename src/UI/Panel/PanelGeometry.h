#pragma once

#include <QRect>
#include <QRegion>

namespace tessly {

/// Where a panel of `size` goes: beside `anchor`, below it where there is room, whole on
/// `workArea`, and smaller only where that is. All in one coordinate system.
[[nodiscard]] QRect panelGeometry(const QRect& anchor, const QSize& size, const QRect& workArea);

/// Every pixel that a rectangle with rounded corners covers, be it in part.
[[nodiscard]] QRegion roundedRegion(const QSize& size, int radius);

} // namespace tessly
