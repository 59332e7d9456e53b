#pragma once

#include "ScreenPixels.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <vector>

namespace tessly {

/// Where the user is, as GNOME Shell tells it: in its own pixels, of which the X server that it
/// brings along may have a whole number each.
struct ShellPlace
{
    QPoint pointer;
    QRect pointerMonitor;
    QRect focusMonitor;
    /// Of all monitors together.
    QSize desktop;

    bool operator==(const ShellPlace&) const = default;
};

/// The same in device-independent pixels: the pointer, a pixel large; or, where it is on none of
/// the screens, the whole of the screen that has the focus. Empty if neither is known.
[[nodiscard]] QRect anchorAt(const ShellPlace& place, const std::vector<ScreenPixels>& screens);

/// The whole of the screen that the middle of a rectangle (in the display's own pixels) is on;
/// empty if it is on none.
[[nodiscard]] QRect screenAround(const QRect& rectangle, const std::vector<ScreenPixels>& screens);

} // namespace tessly
