#pragma once

#include <memory>

class QRect;
class QScreen;
class QWindow;

namespace tessly {

/// What makes a window a layer surface of Wayland: in front of all windows and with the keyboard to
/// itself, for as long as it is shown. Main thread only.
class PanelLayer
{
public:
    PanelLayer() = default;
    PanelLayer(const PanelLayer&) = delete;
    PanelLayer& operator=(const PanelLayer&) = delete;
    virtual ~PanelLayer() = default;

    // For when the window is shown the next time:

    /// `geometry` is global, in device-independent pixels, and on that screen.
    virtual void place(const QRect& geometry, QScreen& screen) = 0;
    /// In the middle of the screen that the compositor chooses.
    virtual void placeOnActiveScreen() = 0;
};

/// Before the window is shown for the first time, on a compositor with zwlr_layer_shell_v1. Null if
/// the program was built without what it takes. Must not outlive the window.
[[nodiscard]] std::unique_ptr<PanelLayer> makePanelLayer(QWindow& window);

} // namespace tessly
