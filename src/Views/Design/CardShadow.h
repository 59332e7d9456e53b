#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// The shadow of the smallest card there is with such corners, which is all corners, with one row
/// and one column between them. In device pixels.
struct ShadowShape
{
    /// How far it lies beyond the card.
    int reach = 0;
    /// Of the card's corners.
    int radius = 0;
    /// At the card's edge; outwards it fades.
    QColor color = Qt::transparent;

    bool operator==(const ShadowShape&) const = default;
};

[[nodiscard]] QImage shadowImage(const ShadowShape& shape);

/// The soft shadow around a card that it is as large as, and under: drawn beyond its edges, from
/// one small image.
class CardShadow : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(qreal radius MEMBER m_radius)
    Q_PROPERTY(qreal reach MEMBER m_reach)
    /// How much lower it lies than the card; at most the radius.
    Q_PROPERTY(qreal drop MEMBER m_drop)

public:
    explicit CardShadow(QQuickItem* parent = nullptr);

    [[nodiscard]] const QColor& color() const { return m_color; }
    void setColor(const QColor& color);

Q_SIGNALS:
    void colorChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    QColor m_color = Qt::transparent;
    qreal m_radius = 0;
    qreal m_reach = 0;
    qreal m_drop = 0;
};

} // namespace tessly
