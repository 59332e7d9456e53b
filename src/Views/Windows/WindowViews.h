#pragma once

#include "QuickWindowView.h"

#include <memory>

namespace tessly {

class OnboardingModel;
class SettingsModel;

// The models must outlive the windows.

[[nodiscard]] std::unique_ptr<QuickWindowView> makeSettingsView(SettingsModel& model);
[[nodiscard]] std::unique_ptr<QuickWindowView> makeOnboardingView(OnboardingModel& model);

} // namespace tessly
