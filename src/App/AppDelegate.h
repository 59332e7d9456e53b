#pragma once

#include "AppModel.h"
#include "AppSettings.h"
#include "BusService.h"
#include "ClipStore.h"
#include "HistoryCommands.h"
#include "IniUserDefaults.h"
#include "LaunchAtLoginService.h"
#include "PanelModel.h"
#include "PasteService.h"
#include "PlatformFactory.h"
#include "QuickPastePanelController.h"
#include "SystemClock.h"
#include "ViewLoader.h"

#include <QObject>

#include <memory>
#include <optional>

namespace tessly {

/// Owns everything that lives as long as the program, and wires it.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// Opens the history, setting a damaged one aside, and makes the services and the model. Throws
    /// what keeps the program from starting; its what() is a sentence for the user.
    AppDelegate();
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

private:
    void openHistory();
    [[nodiscard]] std::unique_ptr<ClipStore> makeStore() const;
    [[nodiscard]] std::unique_ptr<PanelView> makePanelView();
    [[nodiscard]] std::optional<QRect> panelAnchor() const;
    [[nodiscard]] BusActions busActions();
    [[nodiscard]] HistoryCommands::Abilities abilities();

    SystemClock m_clock;
    std::unique_ptr<ClipStore> m_store;
    /// Where a damaged history was put, if there was one.
    std::optional<QString> m_rescueFolder;
    IniUserDefaults m_defaults;
    AppSettings m_settings;
    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<PasteService> m_pasteService;
    std::unique_ptr<LaunchAtLoginService> m_launchAtLoginService;
    std::unique_ptr<AppModel> m_model;
    ViewLoader m_views;
    std::unique_ptr<PanelModel> m_panelModel;
    std::unique_ptr<QuickPastePanelController> m_quickPasteController;
    std::unique_ptr<HistoryCommands> m_commands;
    std::unique_ptr<BusService> m_bus;
};

} // namespace tessly
