#include "ClipContents.h"

#include "ClipDecoder.h"
#include "ClipStatement.h"
#include "ClipStoreError.h"
#include "PreviewLine.h"
#include "SQLiteBlob.h"
#include "SQLiteError.h"
#include "StringListJSON.h"

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const char* const readFailure = "Could not read clipboard history";
const char* const table = "clips";

/// Runs `read` with the one row of a query about a clip.
template <typename Read>
auto withRow(ClipStatement& statement, qint64 row, Read read)
{
    if (!statement.integer(1, row).next(readFailure)) {
        throw ClipStoreError(
            ClipStoreError::Case::execute,
            QLatin1StringView(readFailure) + u": a row is missing"_s);
    }
    auto result = read(statement.row());
    // Else SQLite would keep the row's content.
    statement.reset();
    return result;
}

template <typename Read>
auto withBlob(const SQLiteConnection& connection, const char* column, qint64 row, Read read)
{
    try {
        return read(SQLiteBlob(connection, table, column, row));
    } catch (const SQLiteError& error) {
        throw ClipStoreError(
            ClipStoreError::Case::execute,
            QLatin1StringView(readFailure) + u": "_s + error.message(), error.code());
    }
}

} // namespace

ClipContents::ClipContents(const SQLiteConnection& connection)
    : m_connection(connection)
    // SQLite tells the length of a blob without reading it; that of a text it would count.
    , m_size(connection, R"sql(SELECT typeof(plain_text),
    ifnull(length(rtf), 0) + ifnull(length(html), 0) + ifnull(length(image_png), 0)
        + ifnull(length(file_urls), 0)
FROM clips WHERE rowid = ?;)sql")
    , m_content(
          connection, QByteArrayLiteral("SELECT") + contentColumns + " FROM clips WHERE rowid = ?;")
{
}

ListedPayload ClipContents::listed(qint64 row, qint64 largestHeld)
{
    if (size(row) > largestHeld) {
        return outline(row);
    }
    const ClipPayload payload = withRow(m_content, row, decodePayload);
    (void)payload.kind();
    (void)payload.previewLine();
    return payload;
}

ClipPayload ClipContents::payload(qint64 row) const
{
    return ClipPayload({
        .plainText = all("plain_text", row),
        .rtf = all("rtf", row),
        .html = all("html", row),
        .imagePNG = all("image_png", row),
        .fileURLs = decodeFileURLs(all("file_urls", row).value_or(QByteArray())),
    });
}

ClipPreview ClipContents::preview(qint64 row) const
{
    // Behind all the others in the row: the way to it is long where they are large.
    const auto listSize = beginning("file_urls", row, 0);
    if (listSize && listSize->size > QByteArrayView("[]").size()) {
        const auto list = beginning("file_urls", row, ClipPreview::fileListAtMost);
        if (list->isCut()) {
            // None is whole if the first is longer than any file's name can be.
            if (const auto urls = wholeStrings(list->bytes); urls && !urls->isEmpty()) {
                return {.fileURLs = *urls, .areFilesCut = true};
            }
        }
        const QByteArrayList urls = decodeFileURLs(
            list->isCut() ? all("file_urls", row).value_or(QByteArray()) : list->bytes);
        if (!urls.isEmpty()) {
            return {.fileURLs = urls};
        }
    }
    if (const auto png = all("image_png", row)) {
        return {.size = png->size(), .imagePNG = png};
    }
    if (const auto text = beginning("plain_text", row, ClipPreview::textAtMost)) {
        return {.size = text->size, .text = text->bytes, .isTextCut = text->isCut()};
    }
    const auto rtf = beginning("rtf", row, 0);
    const auto html = beginning("html", row, ClipPreview::htmlAtMost);
    ClipPreview preview{.size = (rtf ? rtf->size : 0) + (html ? html->size : 0)};
    if (html) {
        preview.setHTML(html->bytes, html->isCut());
    }
    return preview;
}

/// The bytes of all flavours, more or less: of the files, those of the list as it is stored.
qint64 ClipContents::size(qint64 row)
{
    bool hasText = false;
    const qint64 size = withRow(m_size, row, [&hasText](const SQLiteStatement& found) {
        hasText = found.bytes(0) != "null";
        return found.integer(1);
    });
    const auto sizeOf = [](const SQLiteBlob& blob) { return blob.size(); };
    return hasText ? size + withBlob(m_connection, "plain_text", row, sizeOf) : size;
}

ListedPayload ClipContents::outline(qint64 row) const
{
    // What is stored for searching serves: to make it anew, the content would have to be read.
    ClipStatement known(m_connection, "SELECT kind, content_hash FROM clips WHERE rowid = ?;");
    auto outline = withRow(known, row, [](const SQLiteStatement& found) {
        return ListedPayload::Outline{
            .kind = clipKind(QString::fromUtf8(found.bytes(0))).value_or(ClipKind::text),
            .previewLine = {},
            .contentHash = found.bytes(1)};
    });
    outline.previewLine = withBlob(m_connection, "preview", row, [](const SQLiteBlob& preview) {
        return previewLine(preview.first(previewLineBytes));
    });
    return ListedPayload(std::move(outline));
}

std::optional<QByteArray> ClipContents::all(const char* column, qint64 row) const
{
    auto whole = beginning(column, row, std::numeric_limits<qint64>::max());
    return whole ? std::optional(std::move(whole->bytes)) : std::nullopt;
}

std::optional<ClipContents::Beginning>
ClipContents::beginning(const char* column, qint64 row, qint64 bytesAtMost) const
{
    ClipStatement absence(
        m_connection,
        // The type is known without reading the content.
        QByteArrayLiteral("SELECT typeof(") + column + ") = 'null' FROM clips WHERE rowid = ?;");
    if (withRow(absence, row, [](const SQLiteStatement& found) { return found.integer(0) != 0; })) {
        return std::nullopt;
    }
    return withBlob(m_connection, column, row, [bytesAtMost](const SQLiteBlob& blob) {
        return Beginning{.bytes = blob.first(bytesAtMost), .size = blob.size()};
    });
}

} // namespace tessly
