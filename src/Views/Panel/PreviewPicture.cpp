#include "PreviewPicture.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>

#include <memory>
#include <utility>

namespace tessly {

namespace {

/// The same memory.
QImage imageOf(const ScaledImage& picture)
{
    auto pixels = std::make_unique<QByteArray>(picture.pixels);
    const auto* const data = reinterpret_cast<const uchar*>(pixels->constData());
    return {
        data,
        picture.size.width(),
        picture.size.height(),
        QImage::Format_RGB32,
        [](void* shared) { delete static_cast<QByteArray*>(shared); },
        pixels.release()};
}

} // namespace

PreviewPicture::PreviewPicture(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PreviewPicture::setPreview(PreviewModel* preview)
{
    if (m_preview == preview) {
        return;
    }
    if (m_preview) {
        m_preview->disconnect(this);
    }
    m_preview = preview;
    if (m_preview) {
        connect(m_preview, &PreviewModel::contentChanged, this, &PreviewPicture::pictureChanged);
    }
    pictureChanged();
    Q_EMIT previewChanged();
}

void PreviewPicture::itemChange(ItemChange change, const ItemChangeData& value)
{
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        updateSize();
    }
}

void PreviewPicture::pictureChanged()
{
    m_hasChanged = true;
    updateSize();
    update();
}

void PreviewPicture::updateSize()
{
    const QSize pixels = m_preview ? m_preview->picture().size : QSize();
    const qreal scale = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    setImplicitSize(qMax(pixels.width(), 0) / scale, qMax(pixels.height(), 0) / scale);
}

QSGNode* PreviewPicture::updatePaintNode(QSGNode* node, UpdatePaintNodeData*)
{
    std::unique_ptr<QSGImageNode> image(static_cast<QSGImageNode*>(node));
    if (!m_preview || !m_preview->hasPicture() || width() <= 0 || height() <= 0) {
        return nullptr;
    }
    if (!image) {
        image.reset(window()->createImageNode());
        image->setOwnsTexture(true);
        m_hasChanged = true;
    }
    if (std::exchange(m_hasChanged, false)) {
        const QImage picture = imageOf(m_preview->picture());
        image->setTexture(window()->createTextureFromImage(picture));
        image->setSourceRect(QRectF(QPointF(), QSizeF(picture.size())));
    }
    const bool isPixelForPixel = QSizeF(implicitWidth(), implicitHeight()) == size();
    image->setFiltering(isPixelForPixel ? QSGTexture::Nearest : QSGTexture::Linear);
    image->setRect(QRectF(QPointF(), size()));
    return image.release();
}

} // namespace tessly
