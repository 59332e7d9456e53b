#include "ClipDecoder.h"

#include "ClipStoreError.h"
#include "PreviewLine.h"
#include "StringListJSON.h"

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

std::optional<QByteArray> data(const SQLiteStatement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional(row.bytes(column));
}

std::optional<QString> text(const SQLiteStatement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional(QString::fromUtf8(row.bytes(column)));
}

} // namespace

const char* const bookkeepingColumns = R"sql(
    clips.id,
    clips.created_at,
    clips.last_used_at,
    clips.source_app_name,
    clips.source_bundle_id,
    clips.is_pinned,
    clips.pin_order,
    clips.copy_count)sql";

// Kind, preview and search text are stored for searching, and made anew of a content that is read.
const char* const contentColumns = R"sql(
    clips.plain_text,
    clips.rtf,
    clips.html,
    clips.image_png,
    clips.file_urls)sql";

// Here kind and preview serve, which are stored for searching: to make them anew, the contents
// would have to be read. 1600 is previewLineBytes.
static_assert(previewLineBytes == 1600);
const char* const summaryColumns = R"sql(
    clips.id,
    clips.created_at,
    clips.last_used_at,
    clips.source_app_name,
    clips.source_bundle_id,
    clips.is_pinned,
    clips.pin_order,
    clips.copy_count,
    clips.kind,
    substr(CAST(clips.preview AS BLOB), 1, 1600),
    clips.file_urls,
    ifnull(length(CAST(clips.plain_text AS BLOB)), 0) + ifnull(length(clips.rtf), 0)
        + ifnull(length(clips.html), 0) + ifnull(length(clips.image_png), 0))sql";

Clip decodeClip(const SQLiteStatement& row, const ListedPayload& payload)
{
    return {
        .id = decodeID(row.bytes(0)),
        .createdAt = row.real(1),
        .lastUsedAt = row.real(2),
        .payload = payload,
        .sourceAppName = text(row, 3),
        .sourceBundleID = text(row, 4),
        .isPinned = row.integer(5) != 0,
        .pinOrder = row.isNull(6) ? std::nullopt : std::optional(row.real(6)),
        .copyCount = static_cast<qint32>(row.integer(7)),
    };
}

ClipPayload decodePayload(const SQLiteStatement& row)
{
    return ClipPayload({
        .plainText = data(row, 0),
        .rtf = data(row, 1),
        .html = data(row, 2),
        .imagePNG = data(row, 3),
        .fileURLs = decodeFileURLs(row.bytes(4)),
    });
}

QByteArrayList decodeFileURLs(const QByteArray& json)
{
    return stringList(json).value_or(QByteArrayList());
}

ClipSummary decodeSummary(const SQLiteStatement& row, qint64 position)
{
    qint64 byteCount = row.integer(11);
    for (const QByteArray& url : decodeFileURLs(row.bytes(10))) {
        byteCount += url.size();
    }
    return {
        .position = position,
        .id = decodeID(row.bytes(0)),
        .kind = clipKind(QString::fromUtf8(row.bytes(8))).value_or(ClipKind::text),
        .preview = previewLine(row.bytes(9)),
        .createdAt = row.real(1),
        .lastUsedAt = row.real(2),
        .sourceAppName = text(row, 3),
        .sourceBundleID = text(row, 4),
        .isPinned = row.integer(5) != 0,
        .pinOrder = row.isNull(6) ? std::nullopt : std::optional(row.real(6)),
        .copyCount = static_cast<qint32>(row.integer(7)),
        .byteCount = byteCount,
    };
}

QByteArray storedID(QUuid id)
{
    return id.toByteArray(QUuid::WithoutBraces).toUpper();
}

QUuid decodeID(const QByteArray& text)
{
    const QUuid id = QUuid::fromString(QLatin1StringView(text));
    // Only the plain form is one, not every form that Qt reads.
    if (storedID(id) != text.toUpper()) {
        throw ClipStoreError(
            ClipStoreError::Case::decode, u"A clipboard item had an invalid identifier."_s);
    }
    return id;
}

} // namespace tessly
