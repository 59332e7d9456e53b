#include "ScreenPixels.h"

#include <QGuiApplication>
#include <QScreen>

namespace tessly {

QRect ScreenPixels::nativeGeometry() const
{
    return {geometry.topLeft(), (QSizeF(geometry.size()) * pixelRatio).toSize()};
}

QRect ScreenPixels::toIndependent(const QRect& rectangle) const
{
    const QPointF fromCorner = rectangle.topLeft() - geometry.topLeft();
    // Never empty: a point stays a point.
    const QSize size = (QSizeF(rectangle.size()) / pixelRatio).toSize().expandedTo(QSize(1, 1));
    return {geometry.topLeft() + (fromCorner / pixelRatio).toPoint(), size};
}

QRect toIndependentPixels(const QRect& rectangle)
{
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const ScreenPixels pixels = {screen->geometry(), screen->devicePixelRatio()};
        if (pixels.nativeGeometry().contains(rectangle.center())) {
            return pixels.toIndependent(rectangle);
        }
    }
    return rectangle;
}

} // namespace tessly
