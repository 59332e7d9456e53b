#include "ShellPlace.h"

#include <algorithm>

namespace tessly {

namespace {

const ScreenPixels* screenAt(QPoint point, const std::vector<ScreenPixels>& screens)
{
    const auto found = std::ranges::find_if(screens, [point](const ScreenPixels& screen) {
        return screen.nativeGeometry().contains(point);
    });
    return found == screens.end() ? nullptr : &*found;
}

} // namespace

QRect anchorAt(const ShellPlace& place, const std::vector<ScreenPixels>& screens)
{
    QRect desktop;
    for (const ScreenPixels& screen : screens) {
        desktop |= screen.nativeGeometry();
    }
    if (place.desktop.isEmpty() || desktop.isEmpty()) {
        return {};
    }
    const qreal factor = qreal(desktop.width()) / place.desktop.width();
    const QPoint pointer = (QPointF(place.pointer) * factor).toPoint();
    // What the shell takes for outside of its monitors is there, too.
    const bool isOnMonitor = place.pointerMonitor.contains(place.pointer);
    if (const auto* const screen = screenAt(pointer, screens); screen != nullptr && isOnMonitor) {
        return screen->toIndependent(QRect(pointer, QSize(1, 1)));
    }
    const QPoint focus = (QPointF(place.focusMonitor.center()) * factor).toPoint();
    return screenAround(QRect(focus, QSize(1, 1)), screens);
}

QRect screenAround(const QRect& rectangle, const std::vector<ScreenPixels>& screens)
{
    const auto* const screen = screenAt(rectangle.center(), screens);
    return screen != nullptr ? screen->geometry : QRect();
}

} // namespace tessly
