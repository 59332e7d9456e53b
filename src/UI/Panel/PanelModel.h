#pragma once

#include "AppModel.h"
#include "ClipListModel.h"
#include "PreviewModel.h"

#include <QObject>
#include <QVariantList>

#include <memory>

namespace tessly {

/// One chip of the panel's filter bar.
struct PanelFilter
{
    Q_GADGET
    /// The kind's raw value; empty for all kinds.
    Q_PROPERTY(QString kind MEMBER kind CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)

public:
    QString kind;
    QString title;
    QString symbol;
};

/// One hint of the panel's footer.
struct PanelHint
{
    Q_GADGET
    /// One key cap each.
    Q_PROPERTY(QStringList keys MEMBER keys CONSTANT)
    /// All of them under their names on this keyboard: "Shift+Return".
    Q_PROPERTY(QString keyNames MEMBER keyNames CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)

public:
    QStringList keys;
    QString keyNames;
    QString title;
};

/// The face that the model shows to the QML panel: the same state in types that QML binds to, and
/// the panel's actions. Decides nothing of its own. Main thread only.
class PanelModel final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QAbstractItemModel* clips READ clips CONSTANT)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(int queryLength READ queryLength CONSTANT)
    /// PanelFilter, in the order of the chips.
    Q_PROPERTY(QVariantList filters READ filters CONSTANT)
    /// PanelHint, in the order of the footer.
    Q_PROPERTY(QVariantList hints READ hints CONSTANT)
    /// The kind's raw value; empty for all kinds.
    Q_PROPERTY(QString selectedKind READ selectedKind NOTIFY selectedKindChanged)
    /// Row of the selected clip, -1 if none is selected.
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectedRowChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY isEmptyChanged)
    Q_PROPERTY(bool isPresented READ isPresented NOTIFY isPresentedChanged)
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY isPausedChanged)
    Q_PROPERTY(bool hasBanner READ hasBanner NOTIFY bannerChanged)
    Q_PROPERTY(QString bannerMessage READ bannerMessage NOTIFY bannerChanged)
    /// "information", "warning" or "error".
    Q_PROPERTY(QString bannerKind READ bannerKind NOTIFY bannerChanged)
    /// "12 items"
    Q_PROPERTY(QString itemCount READ itemCount NOTIFY itemCountChanged)
    Q_PROPERTY(tessly::PreviewModel* preview READ preview CONSTANT)

public:
    /// All of it must outlive this.
    struct Dependencies
    {
        AppModel& model;
        PreviewModel& preview;
        Pasteboard& pasteboard;
        Clock& clock;
    };

    /// How much of the clipboard is read for the search field, in bytes, and how much of that is
    /// put in, in UTF-16 units.
    static constexpr qint64 pasteByteLimit = qint64{64} * 1024;
    static constexpr qsizetype pasteLength = 500;
    /// What is longer, in UTF-16 units, is cut: each of its words is one more condition of the
    /// search.
    static constexpr int longestQuery = 1000;

    explicit PanelModel(Dependencies dependencies, QObject* parent = nullptr);
    ~PanelModel() override;

    [[nodiscard]] QAbstractItemModel* clips();
    [[nodiscard]] QString query() const;
    [[nodiscard]] int queryLength() const { return longestQuery; }
    /// The user typed: searches after a pause.
    void setQuery(const QString& query);
    [[nodiscard]] QVariantList filters() const;
    [[nodiscard]] QVariantList hints() const;
    [[nodiscard]] QString selectedKind() const;
    [[nodiscard]] int selectedRow() const { return m_selectedRow; }
    [[nodiscard]] bool isEmpty() const { return m_isEmpty; }
    [[nodiscard]] bool isPresented() const;
    [[nodiscard]] bool isPaused() const;
    [[nodiscard]] bool hasBanner() const;
    [[nodiscard]] QString bannerMessage() const;
    [[nodiscard]] QString bannerKind() const;
    [[nodiscard]] QString itemCount() const;
    [[nodiscard]] PreviewModel* preview() const { return &m_dependencies.preview; }

    /// `rawValue` of the kind, empty for all.
    Q_INVOKABLE void chooseKind(const QString& rawValue);

    /// Selects the clip so many rows further down the list, or the last one, or the first.
    Q_INVOKABLE void moveSelection(int rows);

    // Clips are told by their ids, as rows move at any time. Nothing happens to one that is no
    // longer listed.
    /// The pointer came upon a clip.
    Q_INVOKABLE void selectClip(const QString& clipID);
    /// A click on a clip.
    Q_INVOKABLE void activateClip(const QString& clipID);
    Q_INVOKABLE void copyClip(const QString& clipID, bool plainTextOnly);
    Q_INVOKABLE void togglePinOfClip(const QString& clipID);
    Q_INVOKABLE void deleteClip(const QString& clipID);

    Q_INVOKABLE void togglePaused();
    Q_INVOKABLE void dismissBanner();
    /// Closes the panel and asks for the settings window.
    Q_INVOKABLE void openSettings();
    /// Reads the clipboard's text for the search field; its first line arrives as
    /// `queryTextPasted`, unless the panel is closed meanwhile. The toolkit's own way of pasting
    /// waits for the clipboard's owner.
    Q_INVOKABLE void pasteIntoQuery();
    /// Copies a piece of the search field; false if that failed.
    Q_INVOKABLE bool copyQueryText(const QString& text);

Q_SIGNALS:
    void queryChanged();
    void selectedKindChanged();
    void selectedRowChanged();
    /// Another clip was selected; `selectedRow` also changes when the selected one moves.
    void selectionChanged();
    void isEmptyChanged();
    void isPresentedChanged();
    void isPausedChanged();
    void bannerChanged();
    void itemCountChanged();
    /// Text for the search field, at its cursor.
    void queryTextPasted(const QString& text);
    void settingsRequested();

private:
    void updateClips();
    void updateSelectedRow();
    void updateSelection();
    void updateShortcuts();
    void updatePresentation();
    QCoro::Task<> readQueryText(qint64 changeCount);
    /// Null if it is not listed.
    [[nodiscard]] const Clip* find(const QString& clipID) const;
    /// False if it is not listed.
    bool select(const QString& clipID);

    Dependencies m_dependencies;
    ClipListModel m_clips;
    int m_selectedRow = -1;
    bool m_isEmpty = true;
    std::unique_ptr<Clock::Timer> m_ageTimer;
    /// Counts openings and pastes, to tell whether an answer from the pasteboard is still wanted.
    quint64 m_pasteGeneration = 0;
};

} // namespace tessly
