#pragma once

#include <QMargins>
#include <QRect>
#include <QRegion>

#include <optional>

class QScreen;

namespace tessly {

// All rectangles of one call are in one coordinate system.

/// Where a panel of `size` goes: beside `anchor`, below it where there is room, whole on
/// `workArea`, and smaller only where that is.
[[nodiscard]] QRect panelGeometry(const QRect& anchor, const QSize& size, const QRect& workArea);

/// Where a menu of `size` goes that is asked for at a point: with a corner there, to the right and
/// below where there is room, whole on `workArea`.
[[nodiscard]] QRect menuGeometry(QPoint position, const QSize& size, const QRect& workArea);

/// Where a card beside a panel goes: to the right of it where there is room, else to the left, as
/// high as the panel, and as wide as there is room, between `narrowest` and `widest`. None where
/// there is no room for that on either side.
[[nodiscard]] std::optional<QRect>
cardGeometry(const QRect& panel, int narrowest, int widest, const QRect& workArea);

/// In the middle of `workArea`, and smaller only where that is.
[[nodiscard]] QRect centredGeometry(const QSize& size, const QRect& workArea);

/// How far the window of a card goes beyond it for a shadow that lies so far around it and so much
/// lower: as far as `room` goes, in multiples of 4, which are whole pixels at every quarter of a
/// scale.
[[nodiscard]] QMargins shadowMargins(const QRect& card, int reach, int drop, const QRect& room);

/// Every pixel that a rectangle with rounded corners covers, be it in part.
[[nodiscard]] QRegion roundedRegion(const QSize& size, int radius);

/// The screen at a point (global, device-independent pixels), or the one nearest to it; null if
/// there is no screen.
[[nodiscard]] QScreen* screenNear(QPoint point);

} // namespace tessly
