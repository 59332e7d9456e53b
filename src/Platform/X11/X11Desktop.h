#pragma once

#include "DesktopEntries.h"
#include "X11ClickWatch.h"
#include "X11EventLoop.h"
#include "X11KeyGrabs.h"
#include "X11Keyboard.h"
#include "X11TrayIcon.h"

#include <functional>
#include <memory>
#include <string>

namespace tessly {

class X11WindowTracker;

/// The connection to the X server over which windows, keys and clicks go, and its thread.
///
/// Lives on the main thread, longer than the objects that are made upon it and shorter than the
/// QCoreApplication.
class X11Desktop
{
public:
    /// Connects to `display` (as $DISPLAY names it; empty: $DISPLAY itself). Throws X11Error.
    explicit X11Desktop(const std::string& display = {}, DesktopEntries entries = {});
    ~X11Desktop();
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;

    [[nodiscard]] const std::shared_ptr<X11WindowTracker>& windows() const { return m_windows; }

    /// Presses the keys of a paste.
    void post(X11Keyboard::Paste paste);
    /// Tells of clicks from now on, or no more (none). From the loop thread.
    void setClickHandler(std::function<void()> clicked);
    /// Runs a job with the grabs of hot keys on the loop thread; drops it when the server is gone.
    void postToKeyGrabs(std::function<void(X11KeyGrabs&)> job);
    /// The same with the icon in the system tray.
    void postToTrayIcon(std::function<void(X11TrayIcon&)> job);

private:
    void post(std::function<void()> job);
    void handle(const xcb_generic_event_t& event);

    X11EventLoop m_loop;
    std::shared_ptr<X11WindowTracker> m_windows;
    X11Keyboard m_keyboard;
    X11ClickWatch m_clicks;
    X11KeyGrabs m_keyGrabs;
    X11TrayIcon m_trayIcon;
    /// The server went away. Loop thread.
    bool m_isLost = false;
};

} // namespace tessly
