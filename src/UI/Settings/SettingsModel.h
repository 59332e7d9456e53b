#pragma once

#include "AppModel.h"
#include "Pasteboard.h"

#include <QObject>
#include <QVariantList>

#include <optional>

namespace tessly {

/// One tab of the settings.
struct SettingsTab
{
    Q_GADGET
    Q_PROPERTY(QString name MEMBER name CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)

public:
    QString name;
    QString title;
    QString symbol;
};

/// What some keys do.
struct ShortcutSettingRow
{
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    /// One key cap each.
    Q_PROPERTY(QStringList keys MEMBER keys CONSTANT)
    /// All of them under their names on this keyboard: "Ctrl+P".
    Q_PROPERTY(QString keyNames MEMBER keyNames CONSTANT)

public:
    QString title;
    QStringList keys;
    QString keyNames;
};

struct ShortcutSection
{
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    /// ShortcutSettingRow, from top to bottom.
    Q_PROPERTY(QVariantList rows MEMBER rows CONSTANT)

public:
    QString title;
    QVariantList rows;
};

/// The face that the settings, the model and the login item show to the settings window: every
/// control's state, text and effect. Main thread only.
class SettingsModel final : public QObject
{
    Q_OBJECT
    /// SettingsTab, from left to right.
    Q_PROPERTY(QVariantList tabs READ tabs CONSTANT)
    /// Its place among `tabs`.
    Q_PROPERTY(int selectedTab READ selectedTab WRITE setSelectedTab NOTIFY selectedTabChanged)

    // General
    Q_PROPERTY(bool launchesAtLogin READ launchesAtLogin WRITE setLaunchesAtLogin NOTIFY
                   launchesAtLoginChanged)
    Q_PROPERTY(
        bool captureImages READ captureImages WRITE setCaptureImages NOTIFY captureImagesChanged)
    Q_PROPERTY(bool captureFiles READ captureFiles WRITE setCaptureFiles NOTIFY captureFilesChanged)
    Q_PROPERTY(int maxHistory READ maxHistory WRITE setMaxHistory NOTIFY maxHistoryChanged)
    Q_PROPERTY(QString maxHistoryLabel READ maxHistoryLabel NOTIFY maxHistoryChanged)
    Q_PROPERTY(
        int maxItemSizeMB READ maxItemSizeMB WRITE setMaxItemSizeMB NOTIFY maxItemSizeMBChanged)
    Q_PROPERTY(QString maxItemSizeLabel READ maxItemSizeLabel NOTIFY maxItemSizeMBChanged)
    Q_PROPERTY(int minHistory MEMBER minHistory CONSTANT)
    Q_PROPERTY(int topHistory MEMBER topHistory CONSTANT)
    Q_PROPERTY(int historyStep MEMBER historyStep CONSTANT)
    Q_PROPERTY(int minItemSizeMB MEMBER minItemSizeMB CONSTANT)
    Q_PROPERTY(int topItemSizeMB MEMBER topItemSizeMB CONSTANT)
    Q_PROPERTY(bool moveUsedItemsToTop READ moveUsedItemsToTop WRITE setMoveUsedItemsToTop NOTIFY
                   moveUsedItemsToTopChanged)
    Q_PROPERTY(bool directPasteShortcuts READ directPasteShortcuts WRITE setDirectPasteShortcuts
                   NOTIFY directPasteShortcutsChanged)

    // Privacy
    Q_PROPERTY(QString clipboardAccessDescription READ clipboardAccessDescription NOTIFY reloaded)
    /// Whether the history can be recorded without the user's doing.
    Q_PROPERTY(bool clipboardAccessIsGood READ clipboardAccessIsGood NOTIFY reloaded)
    Q_PROPERTY(bool automaticPasteAccessGranted READ automaticPasteAccessGranted NOTIFY
                   automaticPasteAccessGrantedChanged)
    Q_PROPERTY(QString automaticPasteAccessDescription READ automaticPasteAccessDescription NOTIFY
                   automaticPasteAccessGrantedChanged)
    Q_PROPERTY(QString ignoredBundleIDsText READ ignoredBundleIDsText WRITE setIgnoredBundleIDsText
                   NOTIFY ignoredBundleIDsTextChanged)
    /// "12 items"
    Q_PROPERTY(QString historyCount READ historyCount NOTIFY statisticsChanged)
    Q_PROPERTY(QString pinnedCount READ pinnedCount NOTIFY statisticsChanged)
    /// "1.2 MB"
    Q_PROPERTY(QString databaseSize READ databaseSize NOTIFY statisticsChanged)
    Q_PROPERTY(bool isClearingPending READ isClearingPending NOTIFY pendingClearScopeChanged)
    Q_PROPERTY(QString clearingTitle READ clearingTitle NOTIFY pendingClearScopeChanged)
    Q_PROPERTY(QString clearingMessage READ clearingMessage NOTIFY pendingClearScopeChanged)
    Q_PROPERTY(QString clearingButton READ clearingButton NOTIFY pendingClearScopeChanged)

    // Shortcuts
    /// ShortcutSection, from top to bottom.
    Q_PROPERTY(QVariantList shortcutSections READ shortcutSections CONSTANT)
    Q_PROPERTY(QString keyboardLine READ keyboardLine CONSTANT)

    // About
    Q_PROPERTY(QString versionText READ versionText CONSTANT)

    Q_PROPERTY(bool hasBanner READ hasBanner NOTIFY bannerChanged)
    Q_PROPERTY(QString bannerMessage READ bannerMessage NOTIFY bannerChanged)
    /// "information", "warning" or "error".
    Q_PROPERTY(QString bannerKind READ bannerKind NOTIFY bannerChanged)

public:
    struct Dependencies
    {
        /// Both must outlive this.
        AppModel& model;
        Pasteboard& pasteboard;
        /// Empty if the program does not know its own.
        QString version;
    };

    /// What is to be cleared.
    enum class ClearHistoryScope { unpinned, everything };

    static constexpr int minHistory = 10;
    static constexpr int topHistory = 10'000;
    static constexpr int historyStep = 50;
    static constexpr int minItemSizeMB = 1;
    static constexpr int topItemSizeMB = 250;

    /// How much of the clipboard is read for the list of excluded applications, in bytes.
    static constexpr qint64 pasteByteLimit = 64LL * 1024;

    explicit SettingsModel(Dependencies dependencies, QObject* parent = nullptr);
    ~SettingsModel() override;

    /// Reads anew what changes without a word: the figures, the login item, the
    /// access to the clipboard.
    void reload();

    [[nodiscard]] QVariantList tabs() const;
    [[nodiscard]] int selectedTab() const { return m_selectedTab; }
    void setSelectedTab(int tab);

    /// As it is registered at this moment.
    [[nodiscard]] bool launchesAtLogin() const;
    /// What fails is told by a banner; the change is told either way, as it may not have come
    /// about.
    void setLaunchesAtLogin(bool launches);
    [[nodiscard]] bool captureImages() const;
    void setCaptureImages(bool captures);
    [[nodiscard]] bool captureFiles() const;
    void setCaptureFiles(bool captures);
    [[nodiscard]] int maxHistory() const;
    /// Kept between `minHistory` and `topHistory`; a change trims the history.
    void setMaxHistory(int items);
    [[nodiscard]] QString maxHistoryLabel() const;
    [[nodiscard]] int maxItemSizeMB() const;
    /// Kept between `minItemSizeMB` and `topItemSizeMB`.
    void setMaxItemSizeMB(int megabytes);
    [[nodiscard]] QString maxItemSizeLabel() const;
    [[nodiscard]] bool moveUsedItemsToTop() const;
    void setMoveUsedItemsToTop(bool moves);
    [[nodiscard]] bool directPasteShortcuts() const;
    /// A change registers or releases the global keys.
    void setDirectPasteShortcuts(bool enabled);

    [[nodiscard]] QString clipboardAccessDescription() const;
    [[nodiscard]] bool clipboardAccessIsGood() const;
    [[nodiscard]] bool automaticPasteAccessGranted() const;
    [[nodiscard]] QString automaticPasteAccessDescription() const;
    Q_INVOKABLE void allowAutomaticPaste();
    [[nodiscard]] QString ignoredBundleIDsText() const;
    void setIgnoredBundleIDsText(const QString& text);
    /// Reads the clipboard's text for the list of excluded applications; it arrives as
    /// `textPasted`. The toolkit's own way of pasting waits for the clipboard's owner.
    Q_INVOKABLE void pasteText();
    /// Copies a piece of that list; false if that failed.
    Q_INVOKABLE bool copyText(const QString& text);

    [[nodiscard]] QString historyCount() const;
    [[nodiscard]] QString pinnedCount() const;
    [[nodiscard]] QString databaseSize() const;
    [[nodiscard]] std::optional<ClearHistoryScope> pendingClearScope() const
    {
        return m_pendingClearScope;
    }
    [[nodiscard]] bool isClearingPending() const { return m_pendingClearScope.has_value(); }
    [[nodiscard]] QString clearingTitle() const;
    [[nodiscard]] QString clearingMessage() const;
    [[nodiscard]] QString clearingButton() const;
    // These two wait for a confirmation.
    Q_INVOKABLE void clearUnpinnedHistory();
    Q_INVOKABLE void clearEverything();
    Q_INVOKABLE void confirmClearing();
    Q_INVOKABLE void cancelClearing();
    Q_INVOKABLE void clearSystemClipboard();

    [[nodiscard]] QVariantList shortcutSections() const;
    [[nodiscard]] QString keyboardLine() const;
    [[nodiscard]] QString versionText() const;

    [[nodiscard]] bool hasBanner() const;
    [[nodiscard]] QString bannerMessage() const;
    [[nodiscard]] QString bannerKind() const;
    Q_INVOKABLE void dismissBanner();

Q_SIGNALS:
    void selectedTabChanged();
    void launchesAtLoginChanged();
    void captureImagesChanged();
    void captureFilesChanged();
    void maxHistoryChanged();
    void maxItemSizeMBChanged();
    void moveUsedItemsToTopChanged();
    void directPasteShortcutsChanged();
    void automaticPasteAccessGrantedChanged();
    void ignoredBundleIDsTextChanged();
    void statisticsChanged();
    void pendingClearScopeChanged();
    void bannerChanged();
    void reloaded();
    /// Text for the list of excluded applications, at its cursor.
    void textPasted(const QString& text);

private:
    void setPendingClearScope(std::optional<ClearHistoryScope> scope);
    QCoro::Task<> readText(qint64 changeCount);

    Dependencies m_dependencies;
    int m_selectedTab = 0;
    std::optional<ClearHistoryScope> m_pendingClearScope;
};

} // namespace tessly
