#include "ClipPayload.h"

#include "ContentHash.h"
#include "FileURL.h"
#include "MendedUTF8.h"
#include "PreviewLine.h"
#include "StringListJSON.h"
#include "URLSyntax.h"
#include "UnicodeText.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

namespace tessly {

struct ClipPayload::Content
{
    explicit Content(Fields payloadFields)
        : fields(std::move(payloadFields))
    {
    }

    template <typename Value, typename Make>
    static const Value& once(std::once_flag& flag, Value& value, Make make)
    {
        std::call_once(flag, [&] { value = make(); });
        return value;
    }

    Fields fields;
    mutable std::once_flag kindFlag;
    mutable std::once_flag previewLineFlag;
    mutable std::once_flag contentHashFlag;
    mutable ClipKind kind = ClipKind::text;
    mutable QString previewLine;
    mutable QByteArray contentHash;
};

namespace {

constexpr auto noLimit = std::numeric_limits<qsizetype>::max();

ClipKind kindOf(const ClipPayload::Fields& fields)
{
    if (!fields.fileURLs.isEmpty()) {
        return ClipKind::files;
    }
    if (fields.imagePNG) {
        return ClipKind::image;
    }
    if (fields.rtf || fields.html) {
        return ClipKind::richText;
    }
    if (!fields.plainText) {
        return ClipKind::text;
    }
    return isAbsoluteURL(trimmed(*fields.plainText)) ? ClipKind::link : ClipKind::text;
}

/// The preview, or at least its first `bytesNeeded` bytes.
QByteArray previewOf(const ClipPayload::Fields& fields, qsizetype bytesNeeded)
{
    if (!fields.fileURLs.isEmpty()) {
        QByteArray names;
        bool isFirst = true;
        for (const QByteArray& url : fields.fileURLs) {
            const auto file = FileURL::parse(url);
            if (!file) {
                continue;
            }
            if (!std::exchange(isFirst, false)) {
                names += ", ";
            }
            names += mendedUTF8(file->lastPathComponent);
            if (names.size() >= bytesNeeded) {
                break;
            }
        }
        return names;
    }
    if (fields.plainText) {
        const QByteArrayView text = trimmed(*fields.plainText);
        if (!text.isEmpty()) {
            return text.first(std::min(text.size(), bytesNeeded)).toByteArray().replace('\n', ' ');
        }
    }
    return fields.imagePNG ? QByteArrayLiteral("Image") : QByteArrayLiteral("Clipboard item");
}

} // namespace

ClipPayload::ClipPayload()
{
    static const auto nothing = std::make_shared<const Content>(Fields());
    m_content = nothing;
}

ClipPayload::ClipPayload(Fields fields)
{
    // Stored and hashed as JSON, which holds nothing but valid text: a list must come back as it
    // was given.
    for (QByteArray& url : fields.fileURLs) {
        url = mendedUTF8(url);
    }
    m_content = std::make_shared<const Content>(std::move(fields));
}

const std::optional<QByteArray>& ClipPayload::plainText() const
{
    return m_content->fields.plainText;
}

const std::optional<QByteArray>& ClipPayload::rtf() const
{
    return m_content->fields.rtf;
}

const std::optional<QByteArray>& ClipPayload::html() const
{
    return m_content->fields.html;
}

const std::optional<QByteArray>& ClipPayload::imagePNG() const
{
    return m_content->fields.imagePNG;
}

const QByteArrayList& ClipPayload::fileURLs() const
{
    return m_content->fields.fileURLs;
}

bool ClipPayload::operator==(const ClipPayload& other) const
{
    return m_content == other.m_content || m_content->fields == other.m_content->fields;
}

bool ClipPayload::isEmpty() const
{
    const Fields& fields = m_content->fields;
    return (!fields.plainText || fields.plainText->isEmpty()) && !fields.rtf && !fields.html &&
           !fields.imagePNG && fields.fileURLs.isEmpty();
}

qint64 ClipPayload::byteCount() const
{
    const Fields& fields = m_content->fields;
    qint64 sum = 0;
    const auto add = [&sum](qint64 bytes) {
        if (__builtin_add_overflow(sum, bytes, &sum)) {
            qFatal("The size of a payload does not fit 64 bits");
        }
    };
    for (const auto* flavour : {&fields.plainText, &fields.rtf, &fields.html, &fields.imagePNG}) {
        add(flavour->has_value() ? (*flavour)->size() : 0);
    }
    for (const QByteArray& url : fields.fileURLs) {
        add(url.size());
    }
    return sum;
}

ClipKind ClipPayload::kind() const
{
    return Content::once(
        m_content->kindFlag, m_content->kind, [this] { return kindOf(m_content->fields); });
}

QByteArray ClipPayload::preview() const
{
    return previewOf(m_content->fields, noLimit);
}

QString ClipPayload::previewLine() const
{
    return Content::once(m_content->previewLineFlag, m_content->previewLine, [this] {
        return tessly::previewLine(previewOf(m_content->fields, previewLineBytes));
    });
}

QByteArray ClipPayload::searchText() const
{
    const Fields& fields = m_content->fields;
    QByteArrayList lines;
    if (fields.plainText && !fields.plainText->isEmpty()) {
        lines.append(*fields.plainText);
    }
    for (const QByteArray& url : fields.fileURLs) {
        if (const auto file = FileURL::parse(url)) {
            lines.append(mendedUTF8(file->lastPathComponent) + ' ' + mendedUTF8(file->path));
        }
    }
    if (fields.imagePNG) {
        lines.append(QByteArrayLiteral("image screenshot photo"));
    }
    return lines.size() == 1 ? lines.first() : lines.join('\n');
}

QByteArray ClipPayload::contentHash() const
{
    return Content::once(m_content->contentHashFlag, m_content->contentHash, [this] {
        const Fields& fields = m_content->fields;
        ContentHash hash;
        hash.addSection("text", fields.plainText);
        hash.addSection("rtf", fields.rtf);
        hash.addSection("html", fields.html);
        hash.addSection("png", fields.imagePNG);
        hash.addSection("files", fileURLsJSON());
        return hash.result();
    });
}

QByteArray ClipPayload::fileURLsJSON() const
{
    return stringListJSON(m_content->fields.fileURLs);
}

} // namespace tessly
