#pragma once

#include "SQLiteConnection.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace tessly {

/// What could be brought over from a damaged history.
struct ClipRescue
{
    /// How many clips the damaged file still tells of.
    qint64 found = 0;
    /// How many of them are in the history now.
    qint64 kept = 0;

    bool operator==(const ClipRescue&) const = default;
};

/// Copies the clips that can still be read, and whose content is what was stored, from a damaged
/// database into the open history: the pinned ones first, then the latest used, up to
/// `maximumHistory` of those that are not pinned. What the history has already stays as it is
/// there. The damaged file and its log are not changed.
///
/// What a disk does not hand over just now is no damage: the rescue is over then, and goes on
/// another time.
///
/// How far it is stands in the history (as SQLite's user version), in the same transactions as the
/// clips: a rescue that was cut short goes on where it was, and what the user has deleted since
/// does not come back.
class ClipRescuer
{
public:
    /// Looks for what can be read. Throws SQLiteError if the file cannot be opened, ClipStoreError
    /// if the disk fails. The history must outlive it.
    ClipRescuer(const QString& damagedPath, SQLiteConnection& history, qint64 maximumHistory);

    [[nodiscard]] bool isDone() const { return m_next >= m_rows.size(); }
    /// Copies some more, in one transaction: about as much as a copy may have to wait for. It is on
    /// the disk when this returns. Throws SQLiteError or ClipStoreError if the history cannot be
    /// written or the disk fails; the history is as before then.
    void copySome();
    /// Forgets how far it was, for the next rescue. Throws SQLiteError.
    void forgetProgress();

    /// Asks the history about each clip. Throws ClipStoreError.
    [[nodiscard]] ClipRescue outcome() const;

private:
    struct Row
    {
        qint64 row;
        bool isPinned;
        double lastUsedAt;
    };

    [[nodiscard]] std::vector<Row> readableRows() const;
    [[nodiscard]] qint64 unpinnedInHistory() const;
    void setProgress(std::size_t next);

    SQLiteConnection& m_history;
    qint64 m_maximumHistory;
    // None for a file in which there is nothing to read.
    std::optional<SQLiteConnection> m_damaged;
    std::vector<Row> m_rows;
    std::size_t m_next = 0;
};

} // namespace tessly
