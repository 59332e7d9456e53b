#include "CardShadow.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGNode>
#include <QSGTexture>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

namespace tessly {

namespace {

/// Corners, and what lies between them, which is stretched. Nothing is drawn in the middle.
class ShadowNode final : public QSGNode
{
public:
    explicit ShadowNode(QQuickWindow& window)
    {
        for (QSGImageNode*& piece : m_pieces) {
            piece = window.createImageNode();
            piece->setFiltering(QSGTexture::Nearest);
            appendChildNode(piece);
        }
    }

    /// Draws the shape around a card of `size`, `drop` below it; both in device pixels, of which
    /// `scale` make one of the item's.
    void
    show(QQuickWindow& window, const ShadowShape& shape, const QSize& size, int drop, qreal scale)
    {
        if (std::exchange(m_shape, shape) != shape) {
            std::unique_ptr<QSGTexture> texture(window.createTextureFromImage(
                shadowImage(shape), QQuickWindow::TextureHasAlphaChannel));
            for (QSGImageNode* const piece : m_pieces) {
                piece->setTexture(texture.get());
            }
            m_texture = std::move(texture);
        }
        const int corner = shape.reach + shape.radius;
        const std::array from = {0, corner, corner + 1, 2 * corner + 1};
        const std::array columns = {
            -shape.reach, shape.radius, size.width() - shape.radius, size.width() + shape.reach};
        const std::array rows = {
            -shape.reach, shape.radius, size.height() - shape.radius, size.height() + shape.reach};
        std::size_t next = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                if (row == 1 && column == 1) {
                    continue;
                }
                QSGImageNode& piece = *m_pieces.at(next++);
                piece.setSourceRect(QRectF(
                    QPointF(from.at(column), from.at(row)),
                    QPointF(from.at(column + 1), from.at(row + 1))));
                piece.setRect(QRectF(
                    QPointF(columns.at(column), rows.at(row) + drop) / scale,
                    QPointF(columns.at(column + 1), rows.at(row + 1) + drop) / scale));
            }
        }
    }

private:
    ShadowShape m_shape;
    std::unique_ptr<QSGTexture> m_texture;
    std::array<QSGImageNode*, 8> m_pieces = {};
};

} // namespace

QImage shadowImage(const ShadowShape& shape)
{
    const int corner = shape.reach + shape.radius;
    const int side = 2 * corner + 1;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    // From the middle of the corner's circle; nothing in the row and the column between corners.
    const auto away = [corner](int place) {
        const int distance = std::abs(place - corner);
        return distance > 0 ? distance - 0.5 : 0.0;
    };
    for (int y = 0; y < side; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const double beyond = std::hypot(away(x), away(y)) - shape.radius;
            const double strength = std::clamp(1 - beyond / std::max(shape.reach, 1), 0.0, 1.0);
            QColor color = shape.color;
            color.setAlphaF(static_cast<float>(shape.color.alphaF() * strength * strength));
            line[x] = qPremultiply(color.rgba());
        }
    }
    return image;
}

CardShadow::CardShadow(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void CardShadow::setColor(const QColor& color)
{
    if (std::exchange(m_color, color) != color) {
        update();
        Q_EMIT colorChanged();
    }
}

void CardShadow::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

void CardShadow::itemChange(ItemChange change, const ItemChangeData& value)
{
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged) {
        update();
    }
}

QSGNode* CardShadow::updatePaintNode(QSGNode* node, UpdatePaintNodeData*)
{
    std::unique_ptr<ShadowNode> shadow(static_cast<ShadowNode*>(node));
    const qreal scale = window()->effectiveDevicePixelRatio();
    const auto pixels = [scale](qreal length) { return qRound(length * scale); };
    const QSize size(pixels(width()), pixels(height()));
    if (size.isEmpty()) {
        return nullptr;
    }
    if (!shadow) {
        shadow = std::make_unique<ShadowNode>(*window());
    }
    shadow->show(
        *window(), {.reach = pixels(m_reach), .radius = pixels(m_radius), .color = m_color}, size,
        pixels(m_drop), scale);
    return shadow.release();
}

} // namespace tessly
