#include "ReferenceReads.h"

#include "ClipSearchQuery.h"
#include "SQLiteStatement.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <stdexcept>

namespace tessly::test {

namespace {

const QByteArray selectList = R"sql(SELECT
    clips.id,
    clips.created_at,
    clips.last_used_at,
    clips.kind,
    clips.preview,
    clips.search_text,
    clips.plain_text,
    clips.rtf,
    clips.html,
    clips.image_png,
    clips.file_urls,
    clips.source_app_name,
    clips.source_bundle_id,
    clips.content_hash,
    clips.is_pinned,
    clips.pin_order,
    clips.copy_count)sql";

const QByteArray orderAndLimit = R"sql( ORDER BY
    clips.is_pinned DESC,
    CASE WHEN clips.is_pinned = 1 THEN clips.pin_order END DESC,
    clips.last_used_at DESC LIMIT ?;)sql";

void require(bool succeeded)
{
    if (!succeeded) {
        throw std::runtime_error("SQLite refused");
    }
}

std::optional<QByteArray> data(const SQLiteStatement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional(row.bytes(column));
}

std::optional<QString> text(const SQLiteStatement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional(QString::fromUtf8(row.bytes(column)));
}

Clip decode(const SQLiteStatement& row)
{
    QByteArrayList urls;
    for (const QJsonValue& url : QJsonDocument::fromJson(row.bytes(10)).array()) {
        urls.append(url.toString().toUtf8());
    }
    return {
        .id = QUuid::fromString(QString::fromUtf8(row.bytes(0))),
        .createdAt = row.real(1),
        .lastUsedAt = row.real(2),
        .payload = ClipPayload(
            {.plainText = data(row, 6),
             .rtf = data(row, 7),
             .html = data(row, 8),
             .imagePNG = data(row, 9),
             .fileURLs = urls}),
        .sourceAppName = text(row, 11),
        .sourceBundleID = text(row, 12),
        .isPinned = row.integer(14) != 0,
        .pinOrder = row.isNull(15) ? std::nullopt : std::optional(row.real(15)),
        .copyCount = row.integer(16),
    };
}

std::vector<Clip> read(SQLiteStatement& statement)
{
    std::vector<Clip> clips;
    SQLiteStatement::Step step = SQLiteStatement::Step::row;
    while ((step = statement.step()) == SQLiteStatement::Step::row) {
        clips.push_back(decode(statement));
    }
    require(step == SQLiteStatement::Step::done);
    return clips;
}

} // namespace

ReferenceReads::ReferenceReads(const QString& path, bool ftsAvailable)
    : m_connection(path)
    , m_ftsAvailable(ftsAvailable)
{
}

std::vector<Clip>
ReferenceReads::search(const QString& query, std::optional<ClipKind> kind, qint64 limit) const
{
    const QString trimmed = query.trimmed();
    if (trimmed.isEmpty()) {
        return list(kind, limit);
    }
    if (m_ftsAvailable) {
        std::vector<Clip> found = searchFTS(trimmed, kind, limit);
        if (!found.empty()) {
            return found;
        }
    }
    return searchLike(trimmed, kind, limit);
}

std::vector<Clip> ReferenceReads::list(std::optional<ClipKind> kind, qint64 limit) const
{
    SQLiteStatement statement(
        m_connection, selectList + " FROM clips" + (kind ? " WHERE kind = ?" : "") + orderAndLimit);
    int parameter = 0;
    if (kind) {
        require(statement.bindText(++parameter, rawValue(*kind).toUtf8()));
    }
    require(statement.bindInteger(++parameter, limit));
    return read(statement);
}

std::vector<Clip>
ReferenceReads::searchFTS(const QString& query, std::optional<ClipKind> kind, qint64 limit) const
{
    SQLiteStatement statement(
        m_connection, selectList + R"sql(
FROM clips
JOIN clips_fts ON clips.rowid = clips_fts.rowid
WHERE clips_fts MATCH ?)sql" +
                          (kind ? " AND clips.kind = ?" : "") + orderAndLimit);
    int parameter = 0;
    require(statement.bindText(++parameter, ftsQuery(query)));
    if (kind) {
        require(statement.bindText(++parameter, rawValue(*kind).toUtf8()));
    }
    require(statement.bindInteger(++parameter, limit));
    return read(statement);
}

std::vector<Clip>
ReferenceReads::searchLike(const QString& query, std::optional<ClipKind> kind, qint64 limit) const
{
    SQLiteStatement statement(m_connection, selectList + R"sql(
FROM clips
WHERE (
    search_text LIKE ? ESCAPE '\'
    OR source_app_name LIKE ? ESCAPE '\'
    OR preview LIKE ? ESCAPE '\'
))sql" + (kind ? " AND kind = ?" : "") + orderAndLimit);
    int parameter = 0;
    for (int i = 0; i < 3; ++i) {
        require(statement.bindText(++parameter, likePattern(query)));
    }
    if (kind) {
        require(statement.bindText(++parameter, rawValue(*kind).toUtf8()));
    }
    require(statement.bindInteger(++parameter, limit));
    return read(statement);
}

} // namespace tessly::test
