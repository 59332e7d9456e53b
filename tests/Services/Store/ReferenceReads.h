#pragma once

#include "Clip.h"
#include "SQLiteConnection.h"

#include <optional>
#include <vector>

namespace tessly::test {

/// The searches of the history as plain SQL: one statement that selects, joins, sorts and limits
/// whole rows. What the store answers by other ways must be what these answer.
class ReferenceReads
{
public:
    ReferenceReads(const QString& path, bool ftsAvailable);

    [[nodiscard]] std::vector<Clip>
    search(const QString& query, std::optional<ClipKind> kind, qint64 limit) const;
    [[nodiscard]] std::vector<Clip> list(std::optional<ClipKind> kind, qint64 limit) const;
    [[nodiscard]] std::vector<Clip>
    searchFTS(const QString& query, std::optional<ClipKind> kind, qint64 limit) const;
    [[nodiscard]] std::vector<Clip>
    searchLike(const QString& query, std::optional<ClipKind> kind, qint64 limit) const;

private:
    SQLiteConnection m_connection;
    bool m_ftsAvailable;
};

} // namespace tessly::test
