#pragma once

#include "Clip.h"

#include <QAbstractListModel>

#include <vector>

namespace tessly {

/// The rows of the panel. Follows a list of clips by the smallest set of row operations, so that a
/// view keeps its place and touches only what changed. Main thread only.
class ClipListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        clipIDRole = Qt::UserRole + 1,
        /// The beginning of the preview, fit for one line.
        previewRole,
        metadataRole,
        kindTitleRole,
        kindSymbolRole,
        isPinnedRole,
        /// "⌥⇧1" … or empty.
        shortcutLabelRole,
        /// The same key under its names on this keyboard: "Alt+Shift+1" … or empty.
        shortcutNameRole,
    };

    /// Rows that have a direct-paste key.
    static constexpr std::size_t shortcutCount = 10;

    enum class Shortcuts { hidden, shown };

    explicit ClipListModel(QObject* parent = nullptr);

    /// Makes `clips` the rows. Ages are told as of `now`, in seconds since 1970.
    void setClips(const std::vector<Clip>& clips, double now);
    /// Tells the ages as of `now`.
    void setNow(double now);
    /// Hidden at first.
    void setShortcuts(Shortcuts shortcuts);

    /// Null if there is no such row.
    [[nodiscard]] const Clip* clip(int row) const;
    /// -1 if it is not listed.
    [[nodiscard]] int rowOf(const QUuid& id) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        Clip clip;
        // As the view has them, to tell it of nothing but changes.
        QString metadata;
        QString shortcutLabel;
    };

    void removeRowsMissingFrom(const std::vector<Clip>& clips);
    void moveAndInsertRows(const std::vector<Clip>& clips, double now);
    void updateContents(const std::vector<Clip>& clips, double now);
    void updateShortcutLabels();
    void changed(std::size_t row, const QList<int>& roles);
    [[nodiscard]] Row makeRow(const Clip& clip, std::size_t row, double now) const;
    [[nodiscard]] QString shortcutLabelAt(std::size_t row) const;

    std::vector<Row> m_rows;
    Shortcuts m_shortcuts = Shortcuts::hidden;
};

} // namespace tessly
