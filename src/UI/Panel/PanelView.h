#pragma once

#include <QRect>
#include <Qt>

#include <functional>

namespace tessly {

/// What the panel's window is to the desktop.
enum class PanelSurface {
    window,
    /// One that stands in front of all windows, full-screen ones too: a layer surface of Wayland.
    layer,
};

/// The panel's window, as its controller sees it. Main thread only.
class PanelView
{
public:
    /// What the window tells its controller: `didClose` also from inside `close`, the others from
    /// the event loop only.
    struct Events
    {
        /// A key press while the panel's window has the keyboard; true if it was consumed, and the
        /// focused control shall not see it.
        std::function<bool(int key, Qt::KeyboardModifiers modifiers)> keyPressed;
        /// The window lost the keyboard to another window, of this program or another.
        std::function<void()> resignedKey;
        /// The window is gone, whoever closed it.
        std::function<void()> didClose;
    };

    PanelView() = default;
    PanelView(const PanelView&) = delete;
    PanelView& operator=(const PanelView&) = delete;
    virtual ~PanelView() = default;

    virtual void setEvents(Events events) = 0;
    [[nodiscard]] virtual bool isShown() const = 0;
    /// Shows the window beside `anchor` (global, device-independent pixels), whole on the anchor's
    /// screen; in its middle if the anchor is all of it; in the middle of the one that the desktop
    /// chooses if it is empty. Whether it came up shows in `isShown`.
    virtual void show(const QRect& anchor) = 0;
    /// Brings the window to the front and gives it the keyboard.
    virtual void activate() = 0;
    /// Closes the window, which ends in `didClose`. May be called from inside an event.
    virtual void close() = 0;
};

} // namespace tessly
