#pragma once

#include "Clip.h"
#include "ClipOrder.h"
#include "ClipSummary.h"
#include "WaitingCopies.h"

#include <optional>
#include <vector>

namespace tessly {

/// Shows copies that are not saved yet among the clips of a history that nobody changes meanwhile,
/// where they will stand when they are: a content that the history has moves to the front, unless
/// it is pinned, and a new one stands there, in a row whose number no clip of the history has.
class ClipOverlay
{
public:
    /// The oldest copy first. Looks up what of it the history has; throws ClipStoreError.
    ClipOverlay(const SQLiteConnection& connection, const std::vector<WaitingCopy>& copies);

    /// Puts the copies into what ClipOrder has found. Which of them match a query that is not empty
    /// is only roughly what the history will say of them: all its words, whatever their case, are
    /// somewhere in them.
    [[nodiscard]] ClipOrder::Rows arranged(
        const ClipOrder::Rows& rows, const QString& query, std::optional<ClipKind> kind,
        qint64 limit) const;

    /// How many there will be in addition.
    [[nodiscard]] qint64 newClips() const;

    /// Whether the row is of a new content. The others can be read from the history, and are to be
    /// updated with what the copies change of them.
    [[nodiscard]] static bool isWaiting(qint64 row) { return row < 0; }
    void update(qint64 row, Clip& clip) const;
    void update(qint64 row, ClipSummary& summary) const;

    // Of a row that is waiting.
    /// Its content is held if it has no more than that many bytes.
    [[nodiscard]] Clip clip(qint64 row, qint64 largestHeld) const;
    [[nodiscard]] ClipSummary summary(qint64 row, qint64 position) const;

    /// The content of a new clip; null if it is none.
    [[nodiscard]] const ClipPayload* payload(QUuid id) const;

private:
    struct Entry
    {
        qint64 row = 0;
        /// The first that was made of the content, which gives it its name.
        WaitingCopy first;
        WaitingCopy last;
        qint64 copies = 1;
    };

    [[nodiscard]] const Entry* entry(qint64 row) const;
    [[nodiscard]] bool isPinned(qint64 row) const;
    template <typename Listed>
    void updateListed(qint64 row, Listed& listed) const;

    /// In the order of the last copies, the oldest first.
    std::vector<Entry> m_entries;
    ClipOrder::Rows m_pinned;
};

} // namespace tessly
