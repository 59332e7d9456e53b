#include "WindowViews.h"

#include "OnboardingModel.h"
#include "SettingsModel.h"
#include "Tokens.h"

using namespace Qt::StringLiterals;

namespace tessly {

std::unique_ptr<QuickWindowView> makeSettingsView(SettingsModel& model)
{
    const TokenMetrics metrics;
    return std::make_unique<QuickWindowView>(QuickWindowView::Design{
        .title = u"Tessly Settings"_s,
        .size = {metrics.settingsWidth, metrics.settingsHeight},
        .frame = QuickWindowView::Frame::titled,
        .file = u"Settings.qml"_s,
        .properties = {{u"settings"_s, QVariant::fromValue(&model)}},
    });
}

std::unique_ptr<QuickWindowView> makeOnboardingView(OnboardingModel& model)
{
    const TokenMetrics metrics;
    return std::make_unique<QuickWindowView>(QuickWindowView::Design{
        .title = u"Welcome to Tessly"_s,
        .size = {metrics.onboardingWidth, metrics.onboardingHeight},
        .frame = QuickWindowView::Frame::none,
        .file = u"Onboarding.qml"_s,
        .properties = {{u"onboarding"_s, QVariant::fromValue(&model)}},
    });
}

} // namespace tessly
