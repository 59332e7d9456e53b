#pragma once

namespace tessly {

class PanelModel;
class PanelView;

/// What the panel's plugin, "tessly-panel.so", exports under this name: makes the panel's window,
/// which the caller owns; null if it cannot be loaded. The model must outlive it. The plugin takes
/// everything else of Tessly from the program that loads it.
using CreatePanelView = PanelView* (*)(PanelModel* model);
inline constexpr const char* createPanelViewSymbol = "tesslyCreatePanelView";

} // namespace tessly
