#pragma once

#include "ActionOutcome.h"
#include "AppSettings.h"
#include "Clip.h"
#include "ClipStore.h"
#include "ClipboardMonitor.h"
#include "Clock.h"
#include "LaunchAtLoginService.h"
#include "PasteService.h"
#include "Workspace.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace tessly {

/// The one object that the interface reads and calls: the visible part of the history, the search,
/// the selection, the banner, and every action of the user. Main thread only. Operations return at
/// once; what they start reports through the properties and banners. A signal tells of a real
/// change; `bannerChanged` of every set.
class AppModel final : public QObject
{
    Q_OBJECT

public:
    enum class BannerKind { information, warning, error };

    struct Banner
    {
        QString message;
        BannerKind kind = BannerKind::information;
    };

    /// All of it must outlive the model.
    struct Dependencies
    {
        ClipStore& store;
        AppSettings& settings;
        PasteService& pasteService;
        LaunchAtLoginService& launchAtLoginService;
        Pasteboard& pasteboard;
        ImageConverter& imageConverter;
        Workspace& workspace;
        Clock& clock;
    };

    /// Rows the panel lists at the most.
    static constexpr qint64 listLimit = 50;

    explicit AppModel(Dependencies dependencies, QObject* parent = nullptr);
    ~AppModel() override;

    [[nodiscard]] AppSettings& settings() const { return m_dependencies.settings; }
    [[nodiscard]] PasteService& pasteService() const { return m_dependencies.pasteService; }
    [[nodiscard]] LaunchAtLoginService& launchAtLoginService() const
    {
        return m_dependencies.launchAtLoginService;
    }
    /// Made on first use, and not started by that.
    [[nodiscard]] ClipboardMonitor& clipboardMonitor();

    [[nodiscard]] const std::vector<Clip>& clips() const { return m_clips; }
    /// Whether the clips are the first of the whole history, so that their places are the positions
    /// that commands and keys go by.
    [[nodiscard]] bool listsWholeHistory() const
    {
        return !m_listedKind && m_listedQuery.trimmed().isEmpty();
    }
    [[nodiscard]] const QString& query() const { return m_query; }
    [[nodiscard]] std::optional<ClipKind> selectedKind() const { return m_selectedKind; }
    [[nodiscard]] std::optional<QUuid> selectedID() const { return m_selectedID; }
    /// The clip of `selectedID`; the first one if nothing is selected; null if there is none.
    [[nodiscard]] const Clip* selectedClip() const;
    [[nodiscard]] bool isPanelPresented() const { return m_isPanelPresented; }
    [[nodiscard]] const std::shared_ptr<RunningApplication>& currentTargetApplication() const
    {
        return m_currentTargetApplication;
    }
    [[nodiscard]] bool automaticPasteAccessGranted() const { return m_automaticPasteAccessGranted; }
    [[nodiscard]] const std::optional<Banner>& banner() const
    {
        return m_notices.empty() ? m_banner : m_notices.front().banner;
    }
    [[nodiscard]] const ClipStore::Statistics& statistics() const { return m_statistics; }

    void setQuery(const QString& query);
    void setSelectedKind(std::optional<ClipKind> kind);
    void setSelectedID(std::optional<QUuid> id);
    /// Opening the panel selects the first clip, and, unless the user does something before, the
    /// first again once all that had been copied by then is listed.
    void setPanelPresented(bool presented);
    void setCurrentTargetApplication(std::shared_ptr<RunningApplication> application);
    /// Sets a banner that stays until another replaces it or the user dismisses it. Behind a notice
    /// it waits.
    void setBanner(std::optional<Banner> banner);

    /// Installed by the panel's controller.
    std::function<void()> closePanel;
    std::function<void()> showPanel;
    /// Installed by the delegate: registers the hot keys anew.
    std::function<void()> hotKeyConfigurationDidChange;

    enum class Debounce { no, yes };
    /// Fetches list, statistics and selection anew; a newer reload replaces an older one.
    void reload(Debounce debounce);
    /// Calls back once the list is what the user has asked for: at once if it is, else when the
    /// search has ended. Not at all if the user goes on before, or the search fails.
    void whenListed(std::function<void()> callback);
    void selectNext();
    void selectPrevious();
    /// Shows a banner for four seconds.
    void showBanner(const QString& message, BannerKind kind);
    /// Shows a banner in front of all others, until the user dismisses it; they wait. One of the
    /// same name is replaced.
    void showNotice(const QString& name, const Banner& banner);
    void dismissBanner();

    enum class PasteStyle { original, plainTextOnly };
    /// A place in the order of those who write the pasteboard, to be taken before anything is
    /// awaited.
    using Turn = QCoro::Task<PasteService::Turn>;
    [[nodiscard]] Turn turn() { return pasteService().turn(); }

    void paste(
        const Clip& clip, PasteStyle style, std::shared_ptr<RunningApplication> target,
        ActionCompletion completion = {});
    void paste(
        const Clip& clip, PasteStyle style, std::shared_ptr<RunningApplication> target, Turn turn,
        ActionCompletion completion);
    /// Pastes the entry at a position (1 to 10) of the whole history into the application in front.
    void pasteGlobalPosition(int position);
    /// The same into another application.
    void pastePosition(int position, std::shared_ptr<RunningApplication> target);
    void copySelected(PasteStyle style);
    void copy(const Clip& clip, PasteStyle style, const ActionCompletion& completion = {});
    void copy(const Clip& clip, PasteStyle style, Turn turn, const ActionCompletion& completion);
    /// The selected clip if none is given.
    void togglePin(const Clip* clip = nullptr);
    /// Pinning a pinned clip puts it before the other pinned ones.
    void setPinned(const Clip& clip, bool pinned, ActionCompletion completion = {});
    void deleteSelected();
    void deleteClip(const Clip& clip, ActionCompletion completion = {});
    void clearHistory(bool includePinned, ActionCompletion completion = {});
    /// As ClipStore::importLines, with the limit of the settings.
    void importLines(
        std::function<QByteArrayView()> lines, std::function<void(const ImportOutcome&)> done,
        ActionCompletion failed);
    /// Stops or resumes recording, and says so; does nothing if that is so already.
    void setRecordingPaused(bool paused);
    void trimHistoryToCurrentLimit();
    void directPasteShortcutsDidChange();
    void openAutomaticPasteSettings();
    void refreshAutomaticPasteAccess(bool retryIfNeeded);

    /// Waits until what had been copied by the time of the call is on its way into the history, but
    /// not long: its owner may hang.
    QCoro::Task<> settle();
    /// The same before the program ends: waits until it is in the history.
    QCoro::Task<> settleForGood();
    /// The same where no event loop runs any more: gives to the store what has been read of copies
    /// by now, and ends the recording.
    void saveWhatWasRead();
    /// Why the last save failed, if no later one has succeeded.
    [[nodiscard]] const std::optional<QString>& lastError() const { return m_lastError; }

Q_SIGNALS:
    void clipsChanged();
    /// A search has ended, whether or not it changed the clips.
    void listed();
    void queryChanged();
    void selectedKindChanged();
    void selectedIDChanged();
    void isPanelPresentedChanged();
    void currentTargetApplicationChanged();
    void automaticPasteAccessGrantedChanged();
    void bannerChanged();
    /// The user has seen the notice of this name.
    void noticeDismissed(const QString& name);
    void statisticsChanged();

private:
    struct Notice
    {
        QString name;
        std::optional<Banner> banner;
    };

    /// What the panel's opening still waits for.
    enum class Opening {
        done,
        /// For what was copied before it.
        settling,
        /// For that to be listed.
        listing,
    };

    /// What the monitor has handed on.
    struct Capture
    {
        ClipPayload payload;
        std::optional<QString> sourceAppName;
        std::optional<QString> sourceBundleID;
        /// Saving it has failed before.
        bool hasFailed = false;
    };

    /// How long after the last capture, trim or deletion what was dropped is wiped from the disk.
    static constexpr Clock::Duration scrubDelay = std::chrono::seconds(5);

    // Work that waits for the store holds the model weakly, and does nothing once it is gone.
    void captured(Capture capture);
    static QCoro::Task<> save(QPointer<AppModel> self, Capture capture);
    void saveFailed(Capture capture, const QString& message);
    void saveUnsaved();
    /// What came of writing a clip on the pasteboard.
    struct Written
    {
        /// None if it was not.
        WriteTicket ticket;
        /// Why not.
        ActionOutcome failure;
        /// Whether it took so long that the user may be doing something else by now.
        bool isLate = false;
    };
    static QCoro::Task<Written> write(QPointer<AppModel> self, Clip clip, PasteStyle style);
    static QCoro::Task<> pasteInTurn(
        QPointer<AppModel> self, Clip clip, PasteStyle style,
        std::shared_ptr<RunningApplication> target, Turn turn, ActionCompletion completion);
    static QCoro::Task<>
    clearWhenSettled(QPointer<AppModel> self, bool includePinned, ActionCompletion completion);
    static QCoro::Task<> addLines(
        QPointer<AppModel> self, std::function<QByteArrayView()> lines,
        std::function<void(const ImportOutcome&)> done, ActionCompletion failed);
    static QCoro::Task<> copyInTurn(
        QPointer<AppModel> self, Clip clip, PasteStyle style, Turn turn,
        std::function<void(const Written&, bool isHeld)> done);
    static QCoro::Task<> fetch(
        QPointer<AppModel> self, QString query, std::optional<ClipKind> kind, std::stop_token stop);
    static QCoro::Task<> finish(
        QPointer<AppModel> self, QCoro::Task<> operation, QString successMessage = {},
        ActionCompletion completion = {});
    static QCoro::Task<> pastePosition(
        QPointer<AppModel> self, int position, std::shared_ptr<RunningApplication> target,
        Turn turn);
    static QCoro::Task<> scrub(QPointer<AppModel> self);
    void scheduleScrub(Clock::Duration delay);
    static QCoro::Task<> settleOpening(QPointer<AppModel> self, quint64 opening);
    void finishOpening();
    [[nodiscard]] bool isListed() const;
    void userGoesOn();
    void startBannerTimer();
    void reportAccessIssue(ClipboardMonitor::AccessIssue issue);
    void show(std::vector<Clip> clips, ClipStore::Statistics statistics);
    void callWhenListed();
    void showError(const std::exception& error);
    void select(qsizetype index);
    [[nodiscard]] std::optional<qsizetype> selectedIndex() const;
    void
    pasteEnded(const Clip& clip, PasteService::Result result, const ActionCompletion& completion);
    void recordUsage(const Clip& clip);
    void setAutomaticPasteAccessGranted(bool granted);
    void pollAutomaticPasteAccess(int checksLeft);

    Dependencies m_dependencies;
    std::vector<Clip> m_clips;
    QString m_query;
    std::optional<ClipKind> m_selectedKind;
    std::optional<QUuid> m_selectedID;
    bool m_isPanelPresented = false;
    Opening m_opening = Opening::done;
    quint64 m_openings = 0;
    int m_savesUnderWay = 0;
    /// A reload has been asked for, and has neither ended nor failed.
    bool m_isReloading = false;
    /// What `m_clips` is the answer to.
    QString m_listedQuery;
    std::optional<ClipKind> m_listedKind;
    std::deque<std::function<void()>> m_whenListed;
    std::shared_ptr<RunningApplication> m_currentTargetApplication;
    bool m_automaticPasteAccessGranted = false;
    std::optional<Banner> m_banner;
    ClipStore::Statistics m_statistics;
    std::unique_ptr<Clock::Timer> m_searchDelay;
    std::stop_source m_searchStop;
    std::unique_ptr<Clock::Timer> m_bannerTimer;
    /// Whether the banner goes by itself.
    bool m_isBannerTimed = false;
    std::deque<Notice> m_notices;
    std::unique_ptr<Clock::Timer> m_accessPoll;
    std::unique_ptr<Clock::Timer> m_scrubTimer;
    Clock::Duration m_scrubRetryDelay;
    bool m_hasReloaded = false;
    /// Those that could not be saved, the latest last.
    std::deque<Capture> m_unsaved;
    std::unique_ptr<Clock::Timer> m_saveRetry;
    std::optional<QString> m_lastError;
    /// It came while the panel was closed.
    bool m_isLastErrorUnseen = false;
    std::unique_ptr<ClipboardMonitor> m_clipboardMonitor;
};

} // namespace tessly
