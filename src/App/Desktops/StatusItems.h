#pragma once

#include "StatusItem.h"

#include <memory>

namespace tessly {

class X11Desktop;

/// An icon in a tray that is on the session bus.
[[nodiscard]] std::unique_ptr<StatusItem> makeBusStatusItem();
/// An icon in a tray of the X server's; `desktop` must outlive it.
[[nodiscard]] std::unique_ptr<StatusItem> makeX11StatusItem(X11Desktop& desktop);

} // namespace tessly
