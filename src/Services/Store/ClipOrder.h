#pragma once

#include "ClipKind.h"
#include "SQLiteConnection.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace tessly {

/// Finds which clips a list shows, and in which order, from what is quick to read: indexes and the
/// front of each row. The contents, which may be megabytes each, stay where they are; so does what
/// is stored behind them, except of pinned clips.
///
/// List order: pinned clips, the highest pin order first, then the others, the latest use first;
/// what ties stands in the order of its rowid. A negative limit means none.
///
/// All operations throw ClipStoreError and must run within one read transaction with whatever uses
/// the rowids.
class ClipOrder
{
public:
    using Rows = std::vector<qint64>;

    explicit ClipOrder(const SQLiteConnection& connection);

    /// All clips, or all of one kind.
    [[nodiscard]] Rows all(std::optional<ClipKind> kind, qint64 limit) const;

    /// The clips that the full-text index finds.
    [[nodiscard]] Rows
    matching(const QByteArray& ftsQuery, std::optional<ClipKind> kind, qint64 limit) const;

    /// The clips of which the text, the source application's name or the preview is like `pattern`.
    [[nodiscard]] Rows
    like(const QByteArray& pattern, std::optional<ClipKind> kind, qint64 limit) const;

private:
    [[nodiscard]] Rows among(const Rows& candidates, qint64 limit) const;
    void appendLatestUsed(Rows& rows, const Rows& candidates, size_t wanted) const;

    const SQLiteConnection& m_connection;
};

} // namespace tessly
