#pragma once

#include "StatusIcon.h"
#include "X11EventLoop.h"

#include <xcb/render.h>

#include <optional>

namespace tessly {

/// Draws the status icon's shape into windows, by the RENDER extension: whatever a window's pixels
/// are made of, what is behind the shape shines through. Loop thread.
class X11TrayPainter
{
public:
    explicit X11TrayPainter(X11EventLoop& loop);

    /// The number of bits of a pixel of this visual; none if the screen has no such visual.
    [[nodiscard]] std::optional<std::uint8_t> depth(xcb_visualid_t visual) const;

    /// Draws the shape in a window's middle, as large as it fits, over the window's background.
    void draw(
        xcb_window_t window, xcb_visualid_t visual, xcb_rectangle_t area,
        StatusIcon::Colour colour);

private:
    struct Formats
    {
        xcb_render_pictformat_t opacity = 0;
        xcb_render_pictformat_t target = 0;
    };

    [[nodiscard]] Formats formats(xcb_visualid_t visual) const;
    [[nodiscard]] xcb_pixmap_t opacityPixmap(xcb_window_t window, int size) const;

    X11EventLoop& m_loop;
};

} // namespace tessly
