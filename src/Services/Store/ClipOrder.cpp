#include "ClipOrder.h"

#include "ClipStatement.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>
#include <utility>

namespace tessly {

namespace {

const char* const readFailure = "Could not read clipboard history";

// A negative limit means all, as SQLite has it.
size_t count(qint64 limit)
{
    return limit < 0 ? std::numeric_limits<size_t>::max() : static_cast<size_t>(limit);
}

bool contains(const ClipOrder::Rows& sortedRows, qint64 row)
{
    return std::ranges::binary_search(sortedRows, row);
}

/// Appends the rows that `statement` yields, until `wanted` are there.
void append(ClipOrder::Rows& rows, ClipStatement& statement, size_t wanted)
{
    while (rows.size() < wanted && statement.next(readFailure)) {
        rows.push_back(statement.row().integer(0));
    }
}

ClipOrder::Rows sortedRows(ClipStatement& statement)
{
    ClipOrder::Rows rows;
    append(rows, statement, count(-1));
    std::ranges::sort(rows);
    return rows;
}

// The order of the pinned and of the other clips, each with a place for a further condition. The
// index has the pinned ones together, and the others in the order of the list, down to the rowid:
// no sorter, and the reader ends the walk when it has enough.
QByteArray pinned(const QByteArray& condition)
{
    return QByteArrayLiteral(R"sql(
        SELECT rowid FROM clips INDEXED BY clips_recency_index WHERE is_pinned > 0)sql") +
           condition + R"sql(
        ORDER BY is_pinned DESC, CASE WHEN is_pinned = 1 THEN pin_order END DESC,
            last_used_at DESC, rowid)sql";
}

QByteArray unpinned(const QByteArray& condition)
{
    return QByteArrayLiteral(R"sql(
        SELECT rowid FROM clips INDEXED BY clips_recency_index WHERE is_pinned <= 0)sql") +
           condition + R"sql(
        ORDER BY is_pinned DESC, last_used_at DESC, rowid)sql";
}

} // namespace

ClipOrder::ClipOrder(const SQLiteConnection& connection)
    : m_connection(connection)
{
}

ClipOrder::Rows ClipOrder::all(std::optional<ClipKind> kind, qint64 limit) const
{
    if (kind) {
        ClipStatement ofKind(m_connection, "SELECT rowid FROM clips WHERE kind = ?");
        ofKind.text(1, rawValue(*kind));
        return among(sortedRows(ofKind), limit);
    }
    Rows rows;
    for (const QByteArray& sql : {pinned(""), unpinned("")}) {
        ClipStatement statement(m_connection, sql);
        append(rows, statement, count(limit));
    }
    return rows;
}

ClipOrder::Rows
ClipOrder::matching(const QByteArray& ftsQuery, std::optional<ClipKind> kind, qint64 limit) const
{
    ClipStatement matches(
        m_connection, kind ? R"sql(
        SELECT clips.rowid
        FROM clips_fts
        CROSS JOIN clips INDEXED BY clips_kind_index ON clips.rowid = clips_fts.rowid
        WHERE clips_fts MATCH ? AND clips.kind = ?)sql"
                           : "SELECT rowid FROM clips_fts WHERE clips_fts MATCH ?");
    matches.text(1, ftsQuery);
    if (kind) {
        matches.text(2, rawValue(*kind));
    }
    return among(sortedRows(matches), limit);
}

ClipOrder::Rows
ClipOrder::like(const QByteArray& pattern, std::optional<ClipKind> kind, qint64 limit) const
{
    // The name of the source stands behind the contents: it is looked at last.
    const QByteArray condition = QByteArray(kind ? " AND kind = ?2" : "") + R"sql( AND (
            preview LIKE ?1 ESCAPE '\'
            OR search_text LIKE ?1 ESCAPE '\'
            OR source_app_name LIKE ?1 ESCAPE '\'
        ))sql";
    Rows rows;
    for (const QByteArray& sql : {pinned(condition), unpinned(condition)}) {
        ClipStatement statement(m_connection, sql);
        statement.text(1, pattern);
        if (kind) {
            statement.text(2, rawValue(*kind));
        }
        append(rows, statement, count(limit));
    }
    return rows;
}

ClipOrder::Rows ClipOrder::among(const Rows& candidates, qint64 limit) const
{
    Rows rows;
    const size_t wanted = std::min(count(limit), candidates.size());
    if (wanted == 0) {
        return rows;
    }
    ClipStatement pinnedRows(m_connection, pinned(""));
    while (rows.size() < wanted && pinnedRows.next(readFailure)) {
        const qint64 row = pinnedRows.row().integer(0);
        if (contains(candidates, row)) {
            rows.push_back(row);
        }
    }
    if (rows.size() < wanted) {
        Rows found = rows;
        std::ranges::sort(found);
        Rows rest;
        std::ranges::set_difference(candidates, found, std::back_inserter(rest));
        appendLatestUsed(rows, rest, wanted);
    }
    return rows;
}

void ClipOrder::appendLatestUsed(Rows& rows, const Rows& candidates, size_t wanted) const
{
    // Many candidates are soon met on a walk from the latest use backwards. Few are better looked
    // up one by one. The walk is given up after as many steps as there are candidates, so that the
    // cost grows with their number only, however many clips there are.
    const size_t before = rows.size();
    ClipStatement walk(m_connection, unpinned(""));
    for (size_t steps = 0; steps < candidates.size(); ++steps) {
        if (rows.size() == wanted || !walk.next(readFailure)) {
            return;
        }
        const qint64 row = walk.row().integer(0);
        if (contains(candidates, row)) {
            rows.push_back(row);
        }
    }
    if (rows.size() == wanted) {
        return;
    }
    rows.resize(before);

    struct Use
    {
        double lastUsedAt;
        qint64 row;
    };
    std::vector<Use> uses;
    uses.reserve(candidates.size());
    ClipStatement lookUp(m_connection, "SELECT last_used_at FROM clips WHERE rowid = ?");
    for (const qint64 row : candidates) {
        lookUp.reset();
        lookUp.integer(1, row);
        if (lookUp.next(readFailure)) {
            uses.push_back({lookUp.row().real(0), row});
        }
    }
    const size_t missing = std::min(wanted - rows.size(), uses.size());
    std::ranges::partial_sort(
        uses, uses.begin() + static_cast<std::ptrdiff_t>(missing), [](const Use& a, const Use& b) {
            return a.lastUsedAt != b.lastUsedAt ? a.lastUsedAt > b.lastUsedAt : a.row < b.row;
        });
    std::ranges::transform(std::span(uses).first(missing), std::back_inserter(rows), &Use::row);
}

} // namespace tessly
