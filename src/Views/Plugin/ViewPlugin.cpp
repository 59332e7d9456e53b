#include "ViewPlugin.h"

#include "PanelModel.h"
#include "QuickConfirmation.h"
#include "QuickPanelView.h"
#include "QuickStatusMenu.h"
#include "QuickStatusToolTip.h"
#include "WindowViews.h"

#include <type_traits>
#include <utility>

namespace {

/// What cannot be loaded is of no use.
template <typename View, typename Base>
std::unique_ptr<Base> loaded(std::unique_ptr<View> view)
{
    return view->isLoaded() ? std::unique_ptr<Base>(std::move(view)) : nullptr;
}

class QuickViewFactory final : public tessly::ViewFactory
{
public:
    std::unique_ptr<tessly::PanelView>
    makePanel(tessly::PanelModel& model, tessly::PanelSurface surface) override
    {
        return loaded<tessly::QuickPanelView, tessly::PanelView>(
            std::make_unique<tessly::QuickPanelView>(model, surface));
    }
    std::unique_ptr<tessly::WindowView> makeSettings(tessly::SettingsModel& model) override
    {
        return loaded<tessly::QuickWindowView, tessly::WindowView>(tessly::makeSettingsView(model));
    }
    std::unique_ptr<tessly::WindowView> makeOnboarding(tessly::OnboardingModel& model) override
    {
        return loaded<tessly::QuickWindowView, tessly::WindowView>(
            tessly::makeOnboardingView(model));
    }
    std::unique_ptr<tessly::StatusMenuView> makeStatusMenu() override
    {
        return loaded<tessly::QuickStatusMenu, tessly::StatusMenuView>(
            std::make_unique<tessly::QuickStatusMenu>());
    }
    std::unique_ptr<tessly::StatusToolTipView> makeStatusToolTip() override
    {
        return loaded<tessly::QuickStatusToolTip, tessly::StatusToolTipView>(
            std::make_unique<tessly::QuickStatusToolTip>());
    }
    std::unique_ptr<tessly::ConfirmationView> makeConfirmation() override
    {
        return loaded<tessly::QuickConfirmation, tessly::ConfirmationView>(
            std::make_unique<tessly::QuickConfirmation>());
    }
};

} // namespace

extern "C" Q_DECL_EXPORT tessly::ViewFactory* tesslyCreateViewFactory()
{
    return new QuickViewFactory;
}

static_assert(std::is_same_v<decltype(&tesslyCreateViewFactory), tessly::CreateViewFactory>);
