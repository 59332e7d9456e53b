#include "ClipInsertion.h"

#include "ClipDecoder.h"
#include "ClipStatement.h"

namespace tessly {

namespace {

void run(
    const QByteArray& insert, const Clip& clip, const ClipPayload& payload,
    SQLiteConnection& history)
{
    ClipStatement statement(history, insert + R"sql( INTO clips (
    id, created_at, last_used_at, kind, preview, search_text,
    plain_text, rtf, html, image_png, file_urls,
    source_app_name, source_bundle_id, content_hash,
    is_pinned, pin_order, copy_count
) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?);)sql");
    statement.text(1, storedID(clip.id))
        .real(2, clip.createdAt)
        .real(3, clip.lastUsedAt)
        .text(4, rawValue(payload.kind()))
        .text(5, payload.preview())
        .text(6, payload.searchText())
        .text(7, payload.plainText())
        .data(8, payload.rtf())
        .data(9, payload.html())
        .data(10, payload.imagePNG())
        .data(11, payload.fileURLsJSON())
        .text(12, clip.sourceAppName)
        .text(13, clip.sourceBundleID)
        .text(14, payload.contentHash())
        .integer(15, clip.isPinned ? 1 : 0)
        .integer(17, clip.copyCount);
    if (clip.isPinned && clip.pinOrder) {
        statement.real(16, *clip.pinOrder);
    }
    statement.run("Could not update clipboard history");
}

} // namespace

void insert(const Clip& clip, const ClipPayload& payload, SQLiteConnection& history)
{
    run("INSERT", clip, payload, history);
}

bool insertIfNew(const Clip& clip, const ClipPayload& payload, SQLiteConnection& history)
{
    run("INSERT OR IGNORE", clip, payload, history);
    return history.changes() > 0;
}

} // namespace tessly
