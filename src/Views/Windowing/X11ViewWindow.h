#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>
#include <QWindow>

#include <functional>
#include <initializer_list>
#include <xcb/xcb.h>

namespace tessly {

/// What a window asks of X11 beyond what the toolkit does: to be left out of taskbar and
/// pager, to get the keyboard although no click of the user's in this program led to it, and to
/// tell a lost focus from a keyboard grab. Does nothing on other platforms. Must not outlive the
/// window.
class X11ViewWindow final : public QAbstractNativeEventFilter
{
public:
    /// `focusLost` is called from the event loop, once the focus has gone to another window.
    X11ViewWindow(QWindow& window, std::function<void()> focusLost);
    ~X11ViewWindow() override;

    /// Whether this platform is X11.
    [[nodiscard]] bool isUsed() const { return m_connection != nullptr; }

    /// Before the window is shown, each time: the window manager forgets when it is hidden.
    void prepareToShow();
    void activate();

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    /// Whether an event is no late one, about the window before it was hidden and shown again.
    [[nodiscard]] bool isOfThisShowing(const xcb_generic_event_t& event) const;
    void handleTimestamp(xcb_timestamp_t time);
    void askManager(xcb_atom_t request, std::initializer_list<std::uint32_t> arguments) const;
    [[nodiscard]] xcb_window_t id() const { return static_cast<xcb_window_t>(m_window.winId()); }

    QWindow& m_window;
    /// Null on other platforms.
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    QTimer m_focusLost;
    bool m_isPrepared = false;
    /// The number of the first request of this showing.
    std::uint32_t m_firstRequest = 0;
    bool m_isAwaitingTimestamp = false;
    xcb_atom_t m_wmState = XCB_ATOM_NONE;
    xcb_atom_t m_above = XCB_ATOM_NONE;
    xcb_atom_t m_skipTaskbar = XCB_ATOM_NONE;
    xcb_atom_t m_skipPager = XCB_ATOM_NONE;
    xcb_atom_t m_activeWindow = XCB_ATOM_NONE;
    xcb_atom_t m_timestamp = XCB_ATOM_NONE;
};

} // namespace tessly
