#include "ClipPreview.h"

#include "HTMLText.h"

#include <algorithm>

namespace tessly {

ClipPreview ClipPreview::of(const ClipPayload& payload)
{
    if (!payload.fileURLs().isEmpty()) {
        return {.fileURLs = payload.fileURLs()};
    }
    if (const auto& png = payload.imagePNG()) {
        return {.size = png->size(), .imagePNG = png};
    }
    if (const auto& text = payload.plainText()) {
        return {
            .size = text->size(),
            .text = text->left(textAtMost),
            .isTextCut = text->size() > textAtMost};
    }
    ClipPreview preview{.size = payload.byteCount()};
    if (const auto& html = payload.html()) {
        preview.setHTML(
            QByteArrayView(*html).first(std::min<qint64>(html->size(), htmlAtMost)),
            html->size() > htmlAtMost);
    }
    return preview;
}

bool ClipPreview::isInstant(const ClipPayload& payload)
{
    return !payload.html() || payload.plainText() || payload.imagePNG() ||
           !payload.fileURLs().isEmpty();
}

void ClipPreview::setHTML(QByteArrayView beginning, bool isCut)
{
    const QByteArray whole = textOfHTML(beginning, textAtMost).toUtf8();
    if (!whole.isEmpty()) {
        text = whole.left(textAtMost);
    }
    isTextCut = isCut || whole.size() > textAtMost;
}

} // namespace tessly
