#pragma once

#include <QAbstractNativeEventFilter>
#include <QMargins>

#include <functional>
#include <xcb/xcb.h>

class QWindow;

namespace tessly {

/// What X11 has to know of windows that draw their own outline: their round corners, or the shadow
/// around them, which needs a compositing manager. Does nothing on other platforms. Main thread
/// only.
class X11Cards final : public QAbstractNativeEventFilter
{
public:
    /// `compositedChanged` is called from the event loop.
    explicit X11Cards(std::function<void()> compositedChanged);
    ~X11Cards() override;

    /// Whether windows may be transparent in part. Never on other platforms.
    [[nodiscard]] bool areComposited() const { return m_owner != XCB_WINDOW_NONE; }
    /// The card in a window is all of it but `shadow`; there clicks go to what is below. Without a
    /// shadow, the window ends where the card does. `radius` of the card's corners. Both in
    /// device-independent pixels; the window has its size.
    void shape(QWindow& window, const QMargins& shadow, int radius) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    void watchManager(const xcb_screen_t& screen, xcb_atom_t selection);

    std::function<void()> m_compositedChanged;
    /// Null on other platforms.
    xcb_connection_t* m_connection = nullptr;
    xcb_atom_t m_manager = XCB_ATOM_NONE;
    xcb_atom_t m_frameExtents = XCB_ATOM_NONE;
    /// The number of the event that tells of a new owner of a selection.
    int m_selectionEvent = -1;
    /// The compositing manager's window.
    xcb_window_t m_owner = XCB_WINDOW_NONE;
};

} // namespace tessly
