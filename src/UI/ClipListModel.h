#pragma once

#include "AppModel.h"

#include <QAbstractListModel>

namespace tessly {

/// The rows of the panel, kept in step with the model's clips by the smallest set of row operations,
/// so that a view keeps its place and animates only what changed. Main thread only.
class ClipListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        clipIDRole = Qt::UserRole + 1,
        previewRole,
        metadataRole,
        kindTitleRole,
        kindSymbolRole,
        isPinnedRole,
        /// "⌥⇧1" … or empty.
        shortcutLabelRole,
    };

    explicit ClipListModel(AppModel& model, Clock& clock, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    AppModel& m_model;
    Clock& m_clock;
    std::vector<Clip> m_rows;
};

} // namespace tessly
