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
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> clusters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_SUCCESS(status)) {
        const auto* const characters = reinterpret_cast<const char16_t*>(text.utf16());
        clusters->setText(icu::UnicodeString(false, characters, static_cast<int32_t>(text.size())));
        const qsizetype boundary = clusters->preceding(static_cast<int32_t>(limit) + 1);
        if (boundary > 0) {
            return boundary;
        }
    }
    return text.at(limit).isLowSurrogate() ? limit - 1 : limit;
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
