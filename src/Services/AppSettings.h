#pragma once

#include "UserDefaults.h"

#include <QObject>
#include <QSet>
#include <QString>

namespace tessly {

/// The user's preferences: read once, written through on every assignment. Observers hear of real
/// changes only. Setters do not clamp; the ranges are applied when values are read at the next
/// start. Main thread only.
class AppSettings final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(qint64 maxHistory READ maxHistory WRITE setMaxHistory NOTIFY maxHistoryChanged)
    Q_PROPERTY(
        bool captureImages READ captureImages WRITE setCaptureImages NOTIFY captureImagesChanged)
    Q_PROPERTY(bool captureFiles READ captureFiles WRITE setCaptureFiles NOTIFY captureFilesChanged)
    Q_PROPERTY(
        qint64 maxItemSizeMB READ maxItemSizeMB WRITE setMaxItemSizeMB NOTIFY maxItemSizeMBChanged)
    Q_PROPERTY(QString ignoredBundleIDsText READ ignoredBundleIDsText WRITE setIgnoredBundleIDsText
                   NOTIFY ignoredBundleIDsTextChanged)
    Q_PROPERTY(bool directPasteShortcuts READ directPasteShortcuts WRITE setDirectPasteShortcuts
                   NOTIFY directPasteShortcutsChanged)
    Q_PROPERTY(bool moveUsedItemsToTop READ moveUsedItemsToTop WRITE setMoveUsedItemsToTop NOTIFY
                   moveUsedItemsToTopChanged)
    Q_PROPERTY(bool hasCompletedOnboarding READ hasCompletedOnboarding WRITE
                   setHasCompletedOnboarding NOTIFY hasCompletedOnboardingChanged)

public:
    /// `defaults` must outlive the settings.
    explicit AppSettings(UserDefaults& defaults, QObject* parent = nullptr);

    /// How many unpinned clips the history keeps: 10 … 10000.
    [[nodiscard]] qint64 maxHistory() const { return m_maxHistory; }
    /// As `maxHistory`, for what is deleted by it: no limit while what is stored is no number or
    /// could not be read at all, so that neither a slip of the hand in the settings file ("10.000")
    /// nor a disk that fails costs an entry.
    [[nodiscard]] qint64 trimLimit() const;
    [[nodiscard]] bool captureImages() const { return m_captureImages; }
    [[nodiscard]] bool captureFiles() const { return m_captureFiles; }
    /// The largest capture accepted, in MiB: 1 … 250.
    [[nodiscard]] qint64 maxItemSizeMB() const { return m_maxItemSizeMB; }
    /// Applications whose copies are not recorded, one id per line.
    [[nodiscard]] QString ignoredBundleIDsText() const { return m_ignoredBundleIDsText; }
    [[nodiscard]] bool directPasteShortcuts() const { return m_directPasteShortcuts; }
    [[nodiscard]] bool moveUsedItemsToTop() const { return m_moveUsedItemsToTop; }
    [[nodiscard]] bool hasCompletedOnboarding() const { return m_hasCompletedOnboarding; }

    void setMaxHistory(qint64 value);
    void setCaptureImages(bool value);
    void setCaptureFiles(bool value);
    void setMaxItemSizeMB(qint64 value);
    void setIgnoredBundleIDsText(const QString& value);
    void setDirectPasteShortcuts(bool value);
    void setMoveUsedItemsToTop(bool value);
    void setHasCompletedOnboarding(bool value);

    /// The ids of `ignoredBundleIDsText`, trimmed and in lower case.
    [[nodiscard]] QSet<QString> ignoredBundleIDs() const;

Q_SIGNALS:
    void maxHistoryChanged();
    void captureImagesChanged();
    void captureFilesChanged();
    void maxItemSizeMBChanged();
    void ignoredBundleIDsTextChanged();
    void directPasteShortcutsChanged();
    void moveUsedItemsToTopChanged();
    void hasCompletedOnboardingChanged();

private:
    UserDefaults& m_defaults;
    qint64 m_maxHistory = 0;
    bool m_isMaxHistoryKnown = true;
    bool m_captureImages = false;
    bool m_captureFiles = false;
    qint64 m_maxItemSizeMB = 0;
    QString m_ignoredBundleIDsText;
    bool m_directPasteShortcuts = false;
    bool m_moveUsedItemsToTop = false;
    bool m_hasCompletedOnboarding = false;
};

} // namespace tessly
