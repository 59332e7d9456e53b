#include "X11TrayPainter.h"

#include "XcbReply.h"

#include <algorithm>
#include <vector>

namespace tessly {

namespace {

/// Larger than any tray's icons, and small enough for one request.
constexpr int largestSize = 256;

constexpr std::uint8_t opacityDepth = 8;
/// Rows of pixels take whole units of this many bytes.
constexpr int rowUnit = 4;

constexpr std::uint16_t widened(std::uint8_t part)
{
    return static_cast<std::uint16_t>(part * 0x101);
}

} // namespace

X11TrayPainter::X11TrayPainter(X11EventLoop& loop)
    : m_loop(loop)
{
}

std::optional<std::uint8_t> X11TrayPainter::depth(xcb_visualid_t visual) const
{
    auto depths = xcb_screen_allowed_depths_iterator(&m_loop.screen());
    for (; depths.rem > 0; xcb_depth_next(&depths)) {
        auto visuals = xcb_depth_visuals_iterator(depths.data);
        for (; visuals.rem > 0; xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == visual) {
                return depths.data->depth;
            }
        }
    }
    return std::nullopt;
}

X11TrayPainter::Formats X11TrayPainter::formats(xcb_visualid_t visual) const
{
    // Asked for each drawing, of which there are few: the answer is long.
    auto* const connection = m_loop.connection();
    const auto reply = owned(xcb_render_query_pict_formats_reply(
        connection, xcb_render_query_pict_formats(connection), nullptr));
    Formats found;
    if (!reply) {
        return found;
    }
    auto formats = xcb_render_query_pict_formats_formats_iterator(reply.get());
    for (; formats.rem > 0; xcb_render_pictforminfo_next(&formats)) {
        const auto& format = *formats.data;
        if (format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == opacityDepth &&
            format.direct.alpha_mask == 0xff && format.direct.red_mask == 0) {
            found.opacity = format.id;
        }
    }
    auto screens = xcb_render_query_pict_formats_screens_iterator(reply.get());
    for (; screens.rem > 0; xcb_render_pictscreen_next(&screens)) {
        auto depths = xcb_render_pictscreen_depths_iterator(screens.data);
        for (; depths.rem > 0; xcb_render_pictdepth_next(&depths)) {
            auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data);
            for (; visuals.rem > 0; xcb_render_pictvisual_next(&visuals)) {
                if (visuals.data->visual == visual) {
                    found.target = visuals.data->format;
                }
            }
        }
    }
    return found;
}

xcb_pixmap_t X11TrayPainter::opacityPixmap(xcb_window_t window, int size) const
{
    auto* const connection = m_loop.connection();
    const std::vector<std::uint8_t> opacity = StatusIcon::opacity(size);
    const int rowLength = (size + rowUnit - 1) / rowUnit * rowUnit;
    std::vector<std::uint8_t> rows;
    rows.reserve(static_cast<std::size_t>(rowLength) * static_cast<std::size_t>(size));
    for (int y = 0; y < size; ++y) {
        const auto row = opacity.begin() + static_cast<std::ptrdiff_t>(y) * size;
        rows.insert(rows.end(), row, row + size);
        rows.resize(static_cast<std::size_t>(y + 1) * static_cast<std::size_t>(rowLength));
    }
    const auto side = static_cast<std::uint16_t>(size);
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_pixmap(connection, opacityDepth, pixmap, window, side, side);
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    xcb_put_image(
        connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, side, side, 0, 0, 0, opacityDepth,
        static_cast<std::uint32_t>(rows.size()), rows.data());
    xcb_free_gc(connection, context);
    return pixmap;
}

void X11TrayPainter::draw(
    xcb_window_t window, xcb_visualid_t visual, xcb_rectangle_t area, StatusIcon::Colour colour)
{
    auto* const connection = m_loop.connection();
    const Formats format = formats(visual);
    const int size = std::min({int{area.width}, int{area.height}, largestSize});
    xcb_clear_area(connection, 0, window, 0, 0, 0, 0);
    if (format.opacity == 0 || format.target == 0 || size == 0) {
        return;
    }
    const xcb_pixmap_t pixmap = opacityPixmap(window, size);
    const xcb_render_picture_t opacity = xcb_generate_id(connection);
    const xcb_render_picture_t paint = xcb_generate_id(connection);
    const xcb_render_picture_t target = xcb_generate_id(connection);
    xcb_render_create_picture(connection, opacity, pixmap, format.opacity, 0, nullptr);
    xcb_render_create_solid_fill(
        connection, paint,
        {.red = widened(colour.red),
         .green = widened(colour.green),
         .blue = widened(colour.blue),
         .alpha = 0xffff});
    xcb_render_create_picture(connection, target, window, format.target, 0, nullptr);
    xcb_render_composite(
        connection, XCB_RENDER_PICT_OP_OVER, paint, opacity, target, 0, 0, 0, 0,
        static_cast<std::int16_t>((area.width - size) / 2),
        static_cast<std::int16_t>((area.height - size) / 2), static_cast<std::uint16_t>(size),
        static_cast<std::uint16_t>(size));
    for (const xcb_render_picture_t picture : {target, paint, opacity}) {
        xcb_render_free_picture(connection, picture);
    }
    xcb_free_pixmap(connection, pixmap);
}

} // namespace tessly
