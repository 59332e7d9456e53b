#include "PreviewLine.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>

namespace tessly {

namespace {

/// The last place at or before `limit` where `text` can be cut.
qsizetype cutBefore(const QString& text, qsizetype limit)
{
    // Positions amid a surrogate pair are moved by ICU, so give it none.
    const qsizetype codePoint = text.at(limit).isLowSurrogate() ? limit - 1 : limit;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> clusters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_SUCCESS(status)) {
        const auto* const characters = reinterpret_cast<const char16_t*>(text.utf16());
        clusters->setText(icu::UnicodeString(false, characters, static_cast<int32_t>(text.size())));
        const auto offset = static_cast<int32_t>(codePoint);
        const qsizetype cluster =
            clusters->isBoundary(offset) ? offset : clusters->preceding(offset);
        if (cluster > 0) {
            return cluster;
        }
    }
    return codePoint;
}

} // namespace

QString previewLine(QByteArrayView preview)
{
    QString line = QString::fromUtf8(preview.first(std::min(preview.size(), previewLineBytes)));
    if (line.size() > previewLineLength) {
        line.truncate(cutBefore(line, previewLineLength));
        line.squeeze();
    }
    return line;
}

} // namespace tessly
