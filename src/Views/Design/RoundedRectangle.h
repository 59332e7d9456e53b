#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// What a rounded rectangle looks like, in device pixels.
struct RoundedShape
{
    QSize size;
    qreal radius = 0;
    QColor color = Qt::transparent;
    /// Of the line along the edge, inside, over the colour.
    qreal lineWidth = 0;
    QColor lineColor = Qt::transparent;

    bool operator==(const RoundedShape&) const = default;
};

/// Drawn with smooth edges. Transparent outside.
[[nodiscard]] QImage roundedImage(const RoundedShape& shape);

/// The line along the edge of a rounded rectangle.
class RoundedBorder : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(qreal width MEMBER m_width NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)

public:
    using QObject::QObject;

    [[nodiscard]] qreal width() const { return m_width; }
    [[nodiscard]] const QColor& color() const { return m_color; }

Q_SIGNALS:
    void changed();

private:
    qreal m_width = 0;
    QColor m_color = Qt::transparent;
};

/// A rectangle with round corners that is sharp at every scale. The toolkit's own, drawn without a
/// GPU, is put together from pieces, between which seams show where a pixel of the design is not a
/// whole number of the screen's.
class RoundedRectangle : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY radiusChanged)
    Q_PROPERTY(tessly::RoundedBorder* border READ border CONSTANT)

public:
    explicit RoundedRectangle(QQuickItem* parent = nullptr);

    [[nodiscard]] const QColor& color() const { return m_color; }
    void setColor(const QColor& color);
    [[nodiscard]] qreal radius() const { return m_radius; }
    void setRadius(qreal radius);
    [[nodiscard]] RoundedBorder* border() { return &m_border; }

Q_SIGNALS:
    void colorChanged();
    void radiusChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    [[nodiscard]] RoundedShape shape() const;

    QColor m_color = Qt::white;
    qreal m_radius = 0;
    RoundedBorder m_border;
    /// What the node shows.
    RoundedShape m_drawn;
};

} // namespace tessly
