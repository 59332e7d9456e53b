#pragma once

#include <QRect>

#include <vector>

namespace tessly {

/// A rectangle in the display's own pixels, as other programs tell it, in Qt's device-independent
/// ones. Main thread, with a QGuiApplication; without one nothing is changed.
[[nodiscard]] QRect toIndependentPixels(const QRect& rectangle);

/// The same for screens that the caller knows.
struct ScreenPixels
{
    /// In device-independent pixels. A screen's corner is where it is in its own ones.
    QRect geometry;
    qreal pixelRatio = 1;

    /// In the display's own pixels.
    [[nodiscard]] QRect nativeGeometry() const;
    [[nodiscard]] QRect toIndependent(const QRect& rectangle) const;
};

/// The screens that there are. Main thread; none without a QGuiApplication.
[[nodiscard]] std::vector<ScreenPixels> screenPixels();

} // namespace tessly
