#pragma once

#include "PanelModel.h"
#include "PanelView.h"

#include <memory>

namespace tessly {

/// Loads the panel's library and makes the panel's window. The library stays loaded. Null, with the
/// reason in the log, if it cannot be loaded.
[[nodiscard]] std::unique_ptr<PanelView> loadPanelView(PanelModel& model);

} // namespace tessly
