#include "WindowGeometry.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessly {

namespace {

// Between the anchor and the panel.
constexpr int gap = 6;
// Between the panel and the card, and between that and the edge of the screen.
constexpr int cardGap = 8;

/// Moves a rectangle that is no larger than `workArea` into it.
QRect movedInto(QRect rectangle, const QRect& workArea)
{
    rectangle.moveLeft(std::clamp(
        rectangle.left(), workArea.left(), workArea.left() + workArea.width() - rectangle.width()));
    rectangle.moveTop(std::clamp(
        rectangle.top(), workArea.top(), workArea.top() + workArea.height() - rectangle.height()));
    return rectangle;
}

} // namespace

QRect panelGeometry(const QRect& anchor, const QSize& size, const QRect& workArea)
{
    QRect panel(QPoint(), size.boundedTo(workArea.size()));
    panel.moveCenter(anchor.center());
    if (anchor.bottom() + gap + panel.height() <= workArea.bottom()) {
        panel.moveTop(anchor.bottom() + gap + 1);
    } else if (anchor.top() - gap - panel.height() >= workArea.top()) {
        panel.moveBottom(anchor.top() - gap - 1);
    } else if (anchor.right() + gap + panel.width() <= workArea.right()) {
        panel.moveLeft(anchor.right() + gap + 1);
    } else if (anchor.left() - gap - panel.width() >= workArea.left()) {
        panel.moveRight(anchor.left() - gap - 1);
    }
    return movedInto(panel, workArea);
}

QRect menuGeometry(QPoint position, const QSize& size, const QRect& workArea)
{
    QRect menu(position, size.boundedTo(workArea.size()));
    if (menu.right() > workArea.right()) {
        menu.moveRight(position.x() - 1);
    }
    if (menu.bottom() > workArea.bottom()) {
        menu.moveBottom(position.y() - 1);
    }
    return movedInto(menu, workArea);
}

std::optional<QRect>
cardGeometry(const QRect& panel, int narrowest, int widest, const QRect& workArea)
{
    const int right = workArea.right() - panel.right() - 2 * cardGap;
    const int left = panel.left() - workArea.left() - 2 * cardGap;
    const int width = std::min(std::max(right, left), widest);
    if (width < narrowest) {
        return std::nullopt;
    }
    QRect card(QPoint(panel.right() + 1 + cardGap, panel.top()), QSize(width, panel.height()));
    if (right < width) {
        card.moveRight(panel.left() - 1 - cardGap);
    }
    return card;
}

QRect centredGeometry(const QSize& size, const QRect& workArea)
{
    QRect window(QPoint(), size.boundedTo(workArea.size()));
    window.moveCenter(workArea.center());
    return window;
}

QMargins shadowMargins(const QRect& card, int reach, int drop, const QRect& room)
{
    const auto within = [](int wanted, int space) {
        const int length = std::clamp(space, 0, wanted);
        return length - length % 4;
    };
    return {
        within(reach, card.left() - room.left()), within(reach - drop, card.top() - room.top()),
        within(reach, room.right() - card.right()),
        within(reach + drop, room.bottom() - card.bottom())};
}

QRegion roundedRegion(const QSize& size, int radius)
{
    QRegion region(0, radius, size.width(), size.height() - 2 * radius);
    for (int row = 0; row < radius; ++row) {
        // A row of pixels is covered furthest at its lower edge.
        const double rise = radius - row - 1;
        const double reach = std::sqrt(radius * radius - rise * rise);
        const int inset = static_cast<int>(std::floor(radius - reach));
        region += QRect(inset, row, size.width() - 2 * inset, 1);
        region += QRect(inset, size.height() - 1 - row, size.width() - 2 * inset, 1);
    }
    return region;
}

QScreen* screenNear(QPoint point)
{
    if (QScreen* const screen = QGuiApplication::screenAt(point); screen != nullptr) {
        return screen;
    }
    // Between the screens, or on one that has just been unplugged.
    QScreen* nearest = QGuiApplication::primaryScreen();
    int shortest = std::numeric_limits<int>::max();
    const auto screens = QGuiApplication::screens();
    for (QScreen* const screen : screens) {
        const QRect area = screen->geometry();
        const QPoint closest(
            std::clamp(point.x(), area.left(), area.right()),
            std::clamp(point.y(), area.top(), area.bottom()));
        if (const int distance = (point - closest).manhattanLength(); distance < shortest) {
            nearest = screen;
            shortest = distance;
        }
    }
    return nearest;
}

} // namespace tessly
