#pragma once

#include <memory>

namespace tessly {

class ConfirmationView;
class OnboardingModel;
class PanelModel;
class PanelView;
enum class PanelSurface;
class SettingsModel;
class StatusMenuView;
class StatusToolTipView;
class WindowView;

/// Makes every window of the program. Each function answers null, with the reason in the log, if
/// the window cannot be made. Models must outlive the views that are made for them. Main thread
/// only.
class ViewFactory
{
public:
    ViewFactory() = default;
    ViewFactory(const ViewFactory&) = delete;
    ViewFactory& operator=(const ViewFactory&) = delete;
    virtual ~ViewFactory() = default;

    /// A window where a layer surface cannot be made.
    [[nodiscard]] virtual std::unique_ptr<PanelView>
    makePanel(PanelModel& model, PanelSurface surface) = 0;
    [[nodiscard]] virtual std::unique_ptr<WindowView> makeSettings(SettingsModel& model) = 0;
    [[nodiscard]] virtual std::unique_ptr<WindowView> makeOnboarding(OnboardingModel& model) = 0;
    [[nodiscard]] virtual std::unique_ptr<StatusMenuView> makeStatusMenu() = 0;
    [[nodiscard]] virtual std::unique_ptr<StatusToolTipView> makeStatusToolTip() = 0;
    [[nodiscard]] virtual std::unique_ptr<ConfirmationView> makeConfirmation() = 0;
};

/// What the plugin, "tessly-views.so", exports under this name: makes the factory, which the caller
/// owns. The plugin takes everything else of Tessly from the program that loads it.
using CreateViewFactory = ViewFactory* (*)();
inline constexpr const char* createViewFactorySymbol = "tesslyCreateViewFactory";

} // namespace tessly
