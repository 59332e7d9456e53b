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
    for (const ScreenPixels& pixels : screenPixels()) {
        if (pixels.nativeGeometry().contains(rectangle.center())) {
            return pixels.toIndependent(rectangle);
        }
    }
    return rectangle;
}

std::vector<ScreenPixels> screenPixels()
{
    std::vector<ScreenPixels> pixels;
    const auto screens = QGuiApplication::screens();
    for (const QScreen* const screen : screens) {
        pixels.push_back({screen->geometry(), screen->devicePixelRatio()});
    }
    return pixels;
}

} // namespace tessly
