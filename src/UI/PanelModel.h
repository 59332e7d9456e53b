#pragma once

#include "AppModel.h"
#include "ClipListModel.h"

#include <QObject>
#include <QVariantList>

namespace tessly {

/// The face that the model shows to the QML panel: the same state in types that QML binds to, and
/// the panel's actions. Decides nothing of its own. Main thread only.
class PanelModel final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QAbstractItemModel* clips READ clips CONSTANT)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    /// One entry a chip: title, symbol, and the kind's raw value ("" for all).
    Q_PROPERTY(QVariantList filters READ filters CONSTANT)
    Q_PROPERTY(QString selectedKind READ selectedKind NOTIFY selectedKindChanged)
    /// Row of the selected clip, -1 if none is selected.
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectedRowChanged)
    Q_PROPERTY(bool isPresented READ isPresented NOTIFY isPresentedChanged)
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY isPausedChanged)
    Q_PROPERTY(bool hasBanner READ hasBanner NOTIFY bannerChanged)
    Q_PROPERTY(QString bannerMessage READ bannerMessage NOTIFY bannerChanged)
    /// "information", "warning" or "error".
    Q_PROPERTY(QString bannerKind READ bannerKind NOTIFY bannerChanged)
    /// "12 items"
    Q_PROPERTY(QString itemCount READ itemCount NOTIFY itemCountChanged)

public:
    PanelModel(AppModel& model, Clock& clock, QObject* parent = nullptr);

    [[nodiscard]] QAbstractItemModel* clips();
    [[nodiscard]] QString query() const;
    /// The user typed: searches after a pause.
    void setQuery(const QString& query);
    [[nodiscard]] QVariantList filters() const;
    [[nodiscard]] QString selectedKind() const;
    [[nodiscard]] int selectedRow() const;
    [[nodiscard]] bool isPresented() const;
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] bool hasBanner() const;
    [[nodiscard]] QString bannerMessage() const;
    [[nodiscard]] QString bannerKind() const;
    [[nodiscard]] QString itemCount() const;

    /// `rawValue` of the kind, "" for all.
    Q_INVOKABLE void chooseKind(const QString& rawValue);
    Q_INVOKABLE void selectRow(int row);
    /// A click on a row.
    Q_INVOKABLE void activateRow(int row);
    Q_INVOKABLE void copyRow(int row, bool plainTextOnly);
    Q_INVOKABLE void togglePinOfRow(int row);
    Q_INVOKABLE void deleteRow(int row);
    Q_INVOKABLE void togglePaused();
    Q_INVOKABLE void dismissBanner();
    /// Closes the panel and asks for the settings window.
    Q_INVOKABLE void openSettings();

Q_SIGNALS:
    void queryChanged();
    void selectedKindChanged();
    void selectedRowChanged();
    void isPresentedChanged();
    void isPausedChanged();
    void bannerChanged();
    void itemCountChanged();
    void settingsRequested();

private:
    AppModel& m_model;
    ClipListModel m_clips;
};

} // namespace tessly
