#include "PanelGeometry.h"

#include <algorithm>
#include <cmath>

namespace tessly {

namespace {

// Between the anchor and the panel.
constexpr int gap = 6;

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
    panel.moveLeft(std::clamp(
        panel.left(), workArea.left(), workArea.left() + workArea.width() - panel.width()));
    panel.moveTop(std::clamp(
        panel.top(), workArea.top(), workArea.top() + workArea.height() - panel.height()));
    return panel;
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

} // namespace tessly
