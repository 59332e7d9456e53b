#include "RoundedRectangle.h"

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <memory>
#include <utility>

namespace tessly {

namespace {

QPainterPath rounded(const QRectF& area, qreal radius)
{
    QPainterPath path;
    path.addRoundedRect(area, std::max(radius, 0.0), std::max(radius, 0.0));
    return path;
}

} // namespace

QImage roundedImage(const RoundedShape& shape)
{
    QImage image(shape.size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QRectF area(QPointF(), QSizeF(shape.size));
    const qreal radius = std::min({shape.radius, area.width() / 2, area.height() / 2});
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath outline = rounded(area, radius);
    painter.fillPath(outline, shape.color);
    if (shape.lineWidth > 0) {
        const qreal line = shape.lineWidth;
        QPainterPath ring = outline;
        ring.addPath(rounded(area.adjusted(line, line, -line, -line), radius - line));
        ring.setFillRule(Qt::OddEvenFill);
        painter.fillPath(ring, shape.lineColor);
    }
    return image;
}

RoundedRectangle::RoundedRectangle(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(&m_border, &RoundedBorder::changed, this, &QQuickItem::update);
}

void RoundedRectangle::setColor(const QColor& color)
{
    if (std::exchange(m_color, color) != color) {
        update();
        Q_EMIT colorChanged();
    }
}

void RoundedRectangle::setRadius(qreal radius)
{
    if (!qFuzzyCompare(std::exchange(m_radius, radius) + 1, radius + 1)) {
        update();
        Q_EMIT radiusChanged();
    }
}

void RoundedRectangle::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

void RoundedRectangle::itemChange(ItemChange change, const ItemChangeData& value)
{
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged) {
        update();
    }
}

RoundedShape RoundedRectangle::shape() const
{
    const qreal scale = window()->effectiveDevicePixelRatio();
    const auto pixels = [scale](qreal length) { return qRound(length * scale); };
    const bool hasLine = m_border.width() > 0 && m_border.color().alpha() > 0;
    return {
        .size = QSize(pixels(width()), pixels(height())),
        .radius = m_radius * scale,
        .color = m_color,
        .lineWidth = hasLine ? std::max(1, pixels(m_border.width())) : 0.0,
        .lineColor = hasLine ? m_border.color() : Qt::transparent,
    };
}

QSGNode* RoundedRectangle::updatePaintNode(QSGNode* node, UpdatePaintNodeData*)
{
    std::unique_ptr<QSGImageNode> image(static_cast<QSGImageNode*>(node));
    const RoundedShape wanted = shape();
    if (wanted.size.isEmpty() || (wanted.color.alpha() == 0 && wanted.lineWidth <= 0)) {
        return nullptr;
    }
    if (!image) {
        image.reset(window()->createImageNode());
        image->setOwnsTexture(true);
        image->setFiltering(QSGTexture::Nearest);
        m_drawn = {};
    }
    if (std::exchange(m_drawn, wanted) != wanted) {
        image->setTexture(window()->createTextureFromImage(
            roundedImage(wanted), QQuickWindow::TextureHasAlphaChannel));
        image->setSourceRect(QRectF(QPointF(), QSizeF(wanted.size)));
    }
    // Pixel for pixel, wherever it begins.
    image->setRect(QRectF(QPointF(), QSizeF(wanted.size) / window()->effectiveDevicePixelRatio()));
    return image.release();
}

} // namespace tessly
