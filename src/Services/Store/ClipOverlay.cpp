#include "ClipOverlay.h"

#include "ClipStatement.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <ranges>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const char* const readFailure = "Could not read clipboard history";

bool matches(const WaitingCopy& copy, const QStringList& words)
{
    const QString text = QString::fromUtf8(copy.payload.searchText()) + u'\n' +
                         copy.sourceAppName.value_or(QString());
    return std::ranges::all_of(
        words, [&](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
}

} // namespace

ClipOverlay::ClipOverlay(const SQLiteConnection& connection, const std::vector<WaitingCopy>& copies)
{
    ClipStatement pinned(
        connection, "SELECT rowid FROM clips INDEXED BY clips_recency_index WHERE is_pinned > 0;");
    while (pinned.next(readFailure)) {
        m_pinned.push_back(pinned.row().integer(0));
    }
    std::ranges::sort(m_pinned);

    ClipStatement known(connection, "SELECT rowid FROM clips WHERE content_hash = ?;");
    for (const WaitingCopy& copy : copies) {
        const QByteArray hash = copy.payload.contentHash();
        const auto earlier = std::ranges::find(
            m_entries, hash, [](const Entry& entry) { return entry.first.payload.contentHash(); });
        if (earlier != m_entries.end()) {
            earlier->last = copy;
            ++earlier->copies;
            std::rotate(earlier, std::next(earlier), m_entries.end());
            continue;
        }
        known.reset();
        const bool isKnown = known.text(1, hash).next(readFailure);
        const qint64 newRow = -1 - static_cast<qint64>(m_entries.size());
        m_entries.push_back(
            {.row = isKnown ? known.row().integer(0) : newRow, .first = copy, .last = copy});
    }
}

ClipOrder::Rows ClipOverlay::arranged(
    const ClipOrder::Rows& rows, const QString& query, std::optional<ClipKind> kind,
    qint64 limit) const
{
    const QStringList words = query.split(QRegularExpression(u"\\s+"_s), Qt::SkipEmptyParts);
    ClipOrder::Rows ahead;
    for (const Entry& entry : m_entries | std::views::reverse) {
        const bool isListed = !isPinned(entry.row) &&
                              (!kind || entry.last.payload.kind() == *kind) &&
                              (words.isEmpty() || matches(entry.last, words));
        if (isListed) {
            ahead.push_back(entry.row);
        }
    }
    const auto firstUnpinned =
        std::ranges::find_if_not(rows, [this](qint64 row) { return isPinned(row); });
    ClipOrder::Rows arranged(rows.begin(), firstUnpinned);
    std::ranges::copy(ahead, std::back_inserter(arranged));
    std::copy_if(firstUnpinned, rows.end(), std::back_inserter(arranged), [&](qint64 row) {
        return std::ranges::find(ahead, row) == ahead.end();
    });
    if (limit >= 0 && std::cmp_greater(arranged.size(), limit)) {
        arranged.resize(static_cast<std::size_t>(limit));
    }
    return arranged;
}

qint64 ClipOverlay::newClips() const
{
    return std::ranges::count_if(m_entries, isWaiting, &Entry::row);
}

template <typename Listed>
void ClipOverlay::updateListed(qint64 row, Listed& listed) const
{
    if (const Entry* const copied = entry(row)) {
        listed.lastUsedAt = copied->last.time.value_or(listed.lastUsedAt);
        listed.sourceAppName = copied->last.sourceAppName;
        listed.sourceBundleID = copied->last.sourceBundleID;
        listed.copyCount += copied->copies;
    }
}

void ClipOverlay::update(qint64 row, Clip& clip) const
{
    updateListed(row, clip);
}

void ClipOverlay::update(qint64 row, ClipSummary& summary) const
{
    updateListed(row, summary);
}

Clip ClipOverlay::clip(qint64 row, qint64 largestHeld) const
{
    const Entry& copied = *entry(row);
    const ClipPayload& payload = copied.first.payload;
    const auto outline = [&payload] {
        return ListedPayload(ListedPayload::Outline{
            .kind = payload.kind(),
            .previewLine = payload.previewLine(),
            .contentHash = payload.contentHash()});
    };
    Clip clip;
    clip.id = copied.first.id;
    clip.createdAt = copied.first.time.value_or(0);
    clip.payload = payload.byteCount() <= largestHeld ? ListedPayload(payload) : outline();
    clip.copyCount = 0;
    update(row, clip);
    return clip;
}

ClipSummary ClipOverlay::summary(qint64 row, qint64 position) const
{
    const Entry& copied = *entry(row);
    const ClipPayload& payload = copied.first.payload;
    ClipSummary summary;
    summary.position = position;
    summary.id = copied.first.id;
    summary.kind = payload.kind();
    summary.preview = payload.previewLine();
    summary.createdAt = copied.first.time.value_or(0);
    summary.copyCount = 0;
    summary.byteCount = payload.byteCount();
    update(row, summary);
    return summary;
}

const ClipPayload* ClipOverlay::payload(QUuid id) const
{
    const auto found = std::ranges::find_if(m_entries, [id](const Entry& entry) {
        return isWaiting(entry.row) && entry.first.id == id;
    });
    return found == m_entries.end() ? nullptr : &found->first.payload;
}

const ClipOverlay::Entry* ClipOverlay::entry(qint64 row) const
{
    const auto found = std::ranges::find(m_entries, row, &Entry::row);
    return found == m_entries.end() ? nullptr : &*found;
}

bool ClipOverlay::isPinned(qint64 row) const
{
    return std::ranges::binary_search(m_pinned, row);
}

} // namespace tessly
