#pragma once

#include "PreviewModel.h"

#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace tessly {

/// The picture of a preview, pixel for pixel where it has its implicit size.
class PreviewPicture : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tessly::PreviewModel* preview READ preview WRITE setPreview NOTIFY previewChanged)

public:
    explicit PreviewPicture(QQuickItem* parent = nullptr);

    [[nodiscard]] PreviewModel* preview() const { return m_preview; }
    void setPreview(PreviewModel* preview);

Q_SIGNALS:
    void previewChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    void pictureChanged();
    void updateSize();

    QPointer<PreviewModel> m_preview;
    /// The node shows another one.
    bool m_hasChanged = true;
};

} // namespace tessly
