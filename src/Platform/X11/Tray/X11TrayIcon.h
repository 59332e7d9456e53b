#pragma once

#include "X11EventLoop.h"
#include "X11TrayPainter.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tessly {

/// The icon in the system tray of the X11 desktop: a window of the program's that the tray takes
/// into its own. Joins whatever tray there is, and the next one when that goes. Loop thread.
class X11TrayIcon
{
public:
    enum class Presence {
        /// The tray has been asked and has not taken the icon yet.
        undecided,
        absent,
        present,
    };

    /// In the screen's own pixels.
    struct Rectangle
    {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;

        bool operator==(const Rectangle&) const = default;
    };

    /// A button that was let go over the icon.
    struct Click
    {
        bool isRight = false;
        /// On the screen.
        int x = 0;
        int y = 0;
        Rectangle icon;
    };

    struct Handlers
    {
        std::function<void(Presence)> presenceChanged;
        std::function<void(const Rectangle&)> moved;
        std::function<void(const Click&)> clicked;
        /// The pointer came over the icon, or left it, or pressed a button there.
        std::function<void(bool isOver)> hovered;
    };

    explicit X11TrayIcon(X11EventLoop& loop);

    void setHandlers(Handlers handlers);
    void setVisible(bool visible);
    /// Whether the event was for the icon only.
    bool handle(const xcb_generic_event_t& event);
    void lost();

private:
    void prepare();
    void join();
    void leave();
    void createWindow();
    void describeWindow();
    void askToDock();
    void handleMessage(const xcb_client_message_event_t& event);
    void handleWindow(const xcb_generic_event_t& event);
    void handleRelease(const xcb_button_release_event_t& event);
    void handleReparented(xcb_window_t parent);
    void draw();
    void locate();
    void watchAncestors();
    void setRectangle(const Rectangle& rectangle);
    void setHovered(bool hovered);
    void setPresence(Presence presence);
    void setProperty(const char* name, xcb_atom_t type, const std::string& text);

    X11EventLoop& m_loop;
    X11TrayPainter m_painter;
    Handlers m_handlers;
    bool m_isVisible = false;
    Presence m_presence = Presence::absent;

    xcb_atom_t m_selection = XCB_ATOM_NONE;
    std::uint8_t m_selectionEvent = 0;
    /// The tray that was asked.
    xcb_window_t m_tray = XCB_WINDOW_NONE;
    StatusIcon::Colour m_colour = StatusIcon::defaultColour;

    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_visualid_t m_visual = 0;
    xcb_colormap_t m_colormap = XCB_COLORMAP_NONE;
    std::uint16_t m_width = 0;
    std::uint16_t m_height = 0;
    /// The tray's windows around the icon's: when they move, it does.
    std::vector<xcb_window_t> m_ancestors;
    std::optional<Rectangle> m_rectangle;
    bool m_isHovered = false;
};

} // namespace tessly
