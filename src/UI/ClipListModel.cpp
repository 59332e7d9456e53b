#include "ClipListModel.h"

#include "Presentation.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tessly {

namespace {

/// Of numbers that are all different, the longest subsequence that ascends: the rows that can stay
/// where they are while the others move around them.
QSet<int> longestAscent(const std::vector<int>& numbers)
{
    // ends[n]: where the ascent of n + 1 numbers with the smallest last one ends.
    std::vector<std::size_t> ends;
    std::vector<std::size_t> before(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto end = std::ranges::lower_bound(
            ends, numbers[i], {}, [&](std::size_t position) { return numbers[position]; });
        before[i] = end == ends.begin() ? i : *std::prev(end);
        if (end == ends.end()) {
            ends.push_back(i);
        } else {
            *end = i;
        }
    }
    QSet<int> ascent;
    if (!ends.empty()) {
        std::size_t position = ends.back();
        for (std::size_t count = ends.size(); count > 0; --count) {
            ascent.insert(numbers[position]);
            position = before[position];
        }
    }
    return ascent;
}

} // namespace

ClipListModel::ClipListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void ClipListModel::setClips(const std::vector<Clip>& clips, double now)
{
    removeRowsMissingFrom(clips);
    moveAndInsertRows(clips, now);
    updateContents(clips, now);
    updateShortcutLabels();
}

void ClipListModel::setNow(double now)
{
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (QString metadata = displayLine(metadataLine(m_rows[i].clip, now));
            metadata != m_rows[i].metadata) {
            m_rows[i].metadata = std::move(metadata);
            changed(i, {metadataRole});
        }
    }
}

void ClipListModel::setShortcuts(Shortcuts shortcuts)
{
    m_shortcuts = shortcuts;
    updateShortcutLabels();
}

const Clip* ClipListModel::clip(int row) const
{
    const auto index = static_cast<std::size_t>(row);
    return row >= 0 && index < m_rows.size() ? &m_rows[index].clip : nullptr;
}

int ClipListModel::rowOf(const QUuid& id) const
{
    const auto row =
        std::ranges::find(m_rows, id, [](const Row& candidate) { return candidate.clip.id; });
    return row == m_rows.end() ? -1 : static_cast<int>(std::distance(m_rows.begin(), row));
}

int ClipListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant ClipListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case clipIDRole:
        return row.clip.id.toString(QUuid::WithoutBraces);
    case previewRole:
        return displayLine(row.clip.payload.previewLine());
    case metadataRole:
        return row.metadata;
    case kindTitleRole:
        return kindTitle(row.clip.payload.kind());
    case kindSymbolRole:
        return kindSymbol(row.clip.payload.kind());
    case isPinnedRole:
        return row.clip.isPinned;
    case shortcutLabelRole:
        return row.shortcutLabel;
    case shortcutNameRole:
        return keyNames(row.shortcutLabel);
    default:
        return {};
    }
}

QHash<int, QByteArray> ClipListModel::roleNames() const
{
    return {
        {clipIDRole, "clipID"},
        {previewRole, "preview"},
        {metadataRole, "metadata"},
        {kindTitleRole, "kindTitle"},
        {kindSymbolRole, "kindSymbol"},
        {isPinnedRole, "isPinned"},
        {shortcutLabelRole, "shortcutLabel"},
        {shortcutNameRole, "shortcutName"},
    };
}

void ClipListModel::removeRowsMissingFrom(const std::vector<Clip>& clips)
{
    QSet<QUuid> wanted;
    for (const Clip& clip : clips) {
        wanted.insert(clip.id);
    }
    const auto isWanted = [&](std::size_t row) { return wanted.contains(m_rows[row].clip.id); };
    // From the end, so that the rows before stay where they are.
    for (std::size_t end = m_rows.size(); end > 0;) {
        if (isWanted(end - 1)) {
            --end;
            continue;
        }
        std::size_t begin = end - 1;
        while (begin > 0 && !isWanted(begin - 1)) {
            --begin;
        }
        beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end - 1));
        m_rows.erase(
            m_rows.begin() + static_cast<std::ptrdiff_t>(begin),
            m_rows.begin() + static_cast<std::ptrdiff_t>(end));
        endRemoveRows();
        end = begin;
    }
}

void ClipListModel::moveAndInsertRows(const std::vector<Clip>& clips, double now)
{
    // Where each row is to go, of the rows there are; what is not among them is to be inserted.
    QHash<QUuid, int> targets;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        targets.insert(clips[i].id, static_cast<int>(i));
    }
    std::vector<int> order;
    order.reserve(m_rows.size());
    QSet<QUuid> present;
    for (const Row& row : m_rows) {
        order.push_back(targets.value(row.clip.id));
        present.insert(row.clip.id);
    }
    const QSet<int> staying = longestAscent(order);

    // Each clip in turn comes to stand right behind the one before it. Rows that are still to be
    // moved may stand in between; they leave when it is their turn.
    int place = 0;
    for (std::size_t i = 0; i < clips.size();) {
        const auto begin = i++;
        if (!present.contains(clips[begin].id)) {
            while (i < clips.size() && !present.contains(clips[i].id)) {
                ++i;
            }
            const auto count = static_cast<int>(i - begin);
            beginInsertRows({}, place, place + count - 1);
            std::vector<Row> inserted;
            for (auto source = begin; source < i; ++source) {
                inserted.push_back(makeRow(clips[source], source, now));
            }
            m_rows.insert(
                m_rows.begin() + place, std::make_move_iterator(inserted.begin()),
                std::make_move_iterator(inserted.end()));
            endInsertRows();
            place += count;
            continue;
        }
        const int from = rowOf(clips[begin].id);
        if (staying.contains(static_cast<int>(begin))) {
            place = from + 1;
            continue;
        }
        int count = 1;
        // Neighbours that move to the same place move together.
        while (i < clips.size() && !staying.contains(static_cast<int>(i)) &&
               rowOf(clips[i].id) == from + count) {
            ++i;
            ++count;
        }
        if (from != place) {
            beginMoveRows({}, from, from + count - 1, {}, place);
            const auto first = m_rows.begin() + from;
            const auto destination = m_rows.begin() + place;
            if (from > place) {
                std::rotate(destination, first, first + count);
            } else {
                std::rotate(first, first + count, destination);
            }
            endMoveRows();
        }
        place = from < place ? place : place + count;
    }
}

void ClipListModel::updateContents(const std::vector<Clip>& clips, double now)
{
    for (std::size_t i = 0; i < clips.size(); ++i) {
        Row& row = m_rows[i];
        QList<int> roles;
        if (row.clip.isPinned != clips[i].isPinned) {
            roles.append(isPinnedRole);
        }
        // An entry's content never changes: no need to look at it.
        row.clip = clips[i];
        if (QString metadata = displayLine(metadataLine(row.clip, now)); metadata != row.metadata) {
            row.metadata = std::move(metadata);
            roles.append(metadataRole);
        }
        if (!roles.isEmpty()) {
            changed(i, roles);
        }
    }
}

void ClipListModel::updateShortcutLabels()
{
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (QString label = shortcutLabelAt(i); label != m_rows[i].shortcutLabel) {
            m_rows[i].shortcutLabel = std::move(label);
            changed(i, {shortcutLabelRole, shortcutNameRole});
        }
    }
}

void ClipListModel::changed(std::size_t row, const QList<int>& roles)
{
    const QModelIndex where = index(static_cast<int>(row));
    Q_EMIT dataChanged(where, where, roles);
}

ClipListModel::Row ClipListModel::makeRow(const Clip& clip, std::size_t row, double now) const
{
    return {clip, displayLine(metadataLine(clip, now)), shortcutLabelAt(row)};
}

QString ClipListModel::shortcutLabelAt(std::size_t row) const
{
    if (m_shortcuts == Shortcuts::hidden || row >= shortcutCount) {
        return {};
    }
    return shortcutLabel(static_cast<int>(row) + 1);
}

} // namespace tessly
