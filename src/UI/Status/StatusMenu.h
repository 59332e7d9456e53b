#pragma once

#include "StatusItem.h"

#include <vector>

namespace tessly {

/// The lines of the status menu, as it is while recording is paused or not. Their actions are
/// "openQuickPaste", "toggleMonitoring", "clearHistory", "openSettings" and "quitApplication".
[[nodiscard]] std::vector<StatusMenuItem> makeStatusMenu(bool isPaused);

} // namespace tessly
