#pragma once

#include "AppModel.h"
#include "AppSettings.h"
#include "BusService.h"
#include "ClipStore.h"
#include "DirectPasteKeys.h"
#include "GlobalHotKeyManager.h"
#include "HistoryCommands.h"
#include "IniUserDefaults.h"
#include "LaunchAtLoginService.h"
#include "OnboardingWindowController.h"
#include "PanelModel.h"
#include "PasteService.h"
#include "PlatformFactory.h"
#include "PreviewModel.h"
#include "QuickPastePanelController.h"
#include "RescueNotices.h"
#include "SettingsWindowController.h"
#include "ThreadFileInspector.h"
#include "ViewPlugin.h"

#include <QObject>

#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// Owns everything that lives as long as the program, and wires it. Main thread only.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// What the program gets from outside.
    struct Surroundings
    {
        Clock& clock;
        /// Asked once. Throws if there is no desktop.
        std::function<std::unique_ptr<DesktopPlatform>()> makePlatform;
        /// Asked when the first window is to be shown. Null if the windows cannot be loaded.
        std::function<ViewFactory*()> views;
        /// Ends the event loop.
        std::function<void()> quit;
        /// Ends the program, which cannot go on with that; its what() is a sentence for the user.
        std::function<void(const std::exception&)> fail;
    };

    /// Begins to open the history, setting a damaged one aside, and makes the services and the
    /// model. Throws what keeps the program from starting, as far as that is known by then.
    explicit AppDelegate(Surroundings surroundings);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    void applicationDidBecomeActive();
    void applicationWillTerminate();

    /// The display server has gone, and no event loop can run: what has been read of copies is
    /// saved, and the history closed. Nothing may follow but the end of the process.
    void desktopWentAway();

    bool eventFilter(QObject* watched, QEvent* event) override;

    [[nodiscard]] AppModel& model() { return *m_model; }

    /// Ends the program once what was copied by now is in the history; at once if called again.
    void quitApplication();
    /// The same, for a program that is to be started again then: see `startsAgain`. Nothing happens
    /// if it ends anyway.
    void startAgain();
    /// Whether that is what it ends for. Whoever asks it to end meanwhile is heeded.
    [[nodiscard]] bool startsAgain() const { return m_startsAgain; }

    /// Whether the session bus has not answered in all the time since the start.
    [[nodiscard]] bool isBusSilent() const { return m_bus && m_bus->isConnecting(); }

    /// Whether the history is still being opened and checked.
    [[nodiscard]] bool isOpeningHistory() const { return m_isOpeningHistory; }

private:
    void openHistory();
    static QCoro::Task<> historyOpened(QPointer<AppDelegate> self);
    static QCoro::Task<> bringOver(QPointer<AppDelegate> self, QString rescueFolder);

    void setupStatusItem();
    void makeQuickPasteController();
    void repairLoginItem();
    static QCoro::Task<> setupHotKeys(QPointer<AppDelegate> self);
    void showOnboarding();
    void tellOnboardingOfDesktop();
    [[nodiscard]] QCoro::Task<std::optional<QRect>> panelAnchor();
    [[nodiscard]] BusActions busActions();
    [[nodiscard]] HistoryCommands::Abilities abilities();

    void showStatusMenu(QPoint position);
    void showStatusToolTip(const QRect& icon);
    [[nodiscard]] std::vector<StatusMenuItem> statusMenu();
    void perform(const QString& menuAction);
    void closePanel();
    void openQuickPaste();
    void pastePosition(int position);
    void toggleMonitoring();
    void clearHistory();
    void openSettings();
    static QCoro::Task<> settleAndQuit(QPointer<AppDelegate> self);

    /// A window of the factory's; null if it cannot be made.
    template <typename View, typename... Model>
    std::unique_ptr<View>
    make(std::unique_ptr<View> (ViewFactory::*function)(Model&...), Model&... model)
    {
        ViewFactory* const views = m_surroundings.views();
        return views != nullptr ? (views->*function)(model...) : nullptr;
    }

    Surroundings m_surroundings;
    /// Present while a test of the interface runs the program.
    std::optional<QString> m_uiTestingMode;
    bool m_isQuitting = false;
    bool m_startsAgain = false;
    std::unique_ptr<Clock::Timer> m_quitRepeats;
    std::unique_ptr<DesktopPlatform> m_platform;
    GlobalHotKeyManager m_hotKeys;
    DirectPasteKeys m_directPasteKeys;
    IniUserDefaults m_defaults;
    AppSettings m_settings;
    std::unique_ptr<ClipStore> m_store;
    bool m_isOpeningHistory = true;
    std::unique_ptr<PasteService> m_pasteService;
    std::unique_ptr<LaunchAtLoginService> m_launchAtLoginService;
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<RescueNotices> m_rescueNotices;
    ThreadFileInspector m_files;
    std::unique_ptr<PreviewModel> m_previewModel;
    std::unique_ptr<PanelModel> m_panelModel;
    std::unique_ptr<QuickPastePanelController> m_quickPasteController;
    std::unique_ptr<SettingsWindowController> m_settingsController;
    std::unique_ptr<OnboardingWindowController> m_onboardingController;
    std::unique_ptr<StatusMenuView> m_statusMenu;
    std::unique_ptr<StatusToolTipView> m_statusToolTip;
    std::unique_ptr<ConfirmationView> m_confirmation;
    std::unique_ptr<HistoryCommands> m_commands;
    std::unique_ptr<BusService> m_bus;
};

} // namespace tessly
