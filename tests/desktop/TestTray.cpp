#include "TestTray.h"

#include "XcbReply.h"

#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace tessly::test {

namespace {

template <typename Reply>
XcbOwned<Reply> answered(Reply* reply)
{
    if (reply == nullptr) {
        throw std::runtime_error("the X server did not answer");
    }
    return owned(reply);
}

constexpr std::uint8_t translucentDepth = 32;

} // namespace

TestTray::TestTray(const QString& display)
    : TestTray(display, Look())
{
}

TestTray::TestTray(const QString& display, Look look)
    : m_connection(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("no X server");
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const xcb_visualid_t visual = look.isTranslucent ? translucentVisual() : m_screen->root_visual;
    const std::uint8_t depth = look.isTranslucent ? translucentDepth : m_screen->root_depth;
    const xcb_colormap_t colormap = xcb_generate_id(m_connection);
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, colormap, m_screen->root, visual);
    m_window = xcb_generate_id(m_connection);
    const std::array<std::uint32_t, 4> values = {look.background, 0, 1, colormap};
    xcb_create_window(
        m_connection, depth, m_window, m_screen->root, 400, 300, m_side, m_side, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
        values.data());
    xcb_map_window(m_connection, m_window);
    if (look.isTranslucent) {
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, m_window, atom("_NET_SYSTEM_TRAY_VISUAL"),
            XCB_ATOM_VISUALID, 32, 1, &visual);
    }
    if (!look.colour.empty()) {
        // Ordinary, error, warning, success.
        std::vector<std::uint32_t> colours = look.colour;
        colours.resize(12);
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, m_window, atom("_NET_SYSTEM_TRAY_COLORS"),
            XCB_ATOM_CARDINAL, 32, 12, colours.data());
    }
    const xcb_atom_t selection = atom("_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(m_connection, m_window, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_screen->root;
    message.type = atom("MANAGER");
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = selection;
    message.data.data32[2] = m_window;
    xcb_send_event(
        m_connection, 0, m_screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
        reinterpret_cast<const char*>(&message));
    drain();
}

TestTray::~TestTray()
{
    xcb_disconnect(m_connection);
}

xcb_visualid_t TestTray::translucentVisual() const
{
    auto depths = xcb_screen_allowed_depths_iterator(m_screen);
    for (; depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth == translucentDepth && depths.data->visuals_len > 0) {
            return xcb_depth_visuals(depths.data)->visual_id;
        }
    }
    throw std::runtime_error("no translucent windows here");
}

xcb_atom_t TestTray::atom(const char* name)
{
    return answered(xcb_intern_atom_reply(
                        m_connection,
                        xcb_intern_atom(
                            m_connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
                        nullptr))
        ->atom;
}

void TestTray::drain()
{
    static_cast<void>(answered(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)));
    while (const auto event = owned(xcb_poll_for_event(m_connection))) {
        if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if (message.type == atom("_NET_SYSTEM_TRAY_OPCODE") && message.data.data32[1] == 0) {
                m_asked.push_back(message.data.data32[2]);
            }
        }
    }
}

const std::vector<xcb_window_t>& TestTray::asked()
{
    drain();
    return m_asked;
}

bool TestTray::takeIcons()
{
    drain();
    if (m_icon == XCB_WINDOW_NONE && !m_asked.empty()) {
        const xcb_window_t icon = m_asked.back();
        const auto cookie = xcb_reparent_window_checked(m_connection, icon, m_window, 0, 0);
        if (owned(xcb_request_check(m_connection, cookie))) {
            // It went meanwhile.
            return false;
        }
        m_icon = icon;
        xcb_change_save_set(m_connection, XCB_SET_MODE_INSERT, m_icon);
        resize(m_side);
        xcb_map_window(m_connection, m_icon);
        drain();
    }
    return m_icon != XCB_WINDOW_NONE;
}

void TestTray::resize(std::uint16_t side)
{
    m_side = side;
    const std::array<std::uint32_t, 2> values = {side, side};
    for (const xcb_window_t window : {m_window, m_icon}) {
        xcb_configure_window(
            m_connection, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
            values.data());
    }
    drain();
}

void TestTray::move(std::int16_t x, std::int16_t y)
{
    const std::array<std::uint32_t, 2> values = {
        static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
    xcb_configure_window(
        m_connection, m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values.data());
    drain();
}

void TestTray::putOut()
{
    xcb_reparent_window(m_connection, std::exchange(m_icon, XCB_WINDOW_NONE), m_screen->root, 0, 0);
    m_asked.clear();
    drain();
}

void TestTray::destroyIcon()
{
    xcb_destroy_window(m_connection, std::exchange(m_icon, XCB_WINDOW_NONE));
    m_asked.clear();
    drain();
}

void TestTray::passClickOn(xcb_button_t button)
{
    xcb_button_press_event_t event = {};
    event.detail = button;
    event.event = m_icon;
    event.root = m_screen->root;
    event.root_x = 405;
    event.root_y = 306;
    event.event_x = 5;
    event.event_y = 6;
    event.same_screen = 1;
    for (const auto& [type, mask] :
         {std::pair{XCB_BUTTON_PRESS, XCB_EVENT_MASK_BUTTON_PRESS},
          std::pair{XCB_BUTTON_RELEASE, XCB_EVENT_MASK_BUTTON_RELEASE}}) {
        event.response_type = static_cast<std::uint8_t>(type);
        xcb_send_event(m_connection, 0, m_icon, mask, reinterpret_cast<const char*>(&event));
    }
    drain();
}

QByteArray TestTray::property(const char* name)
{
    const auto reply = answered(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, m_icon, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
        nullptr));
    return {
        static_cast<const char*>(xcb_get_property_value(reply.get())),
        xcb_get_property_value_length(reply.get())};
}

std::uint32_t TestTray::pixel(std::int16_t x, std::int16_t y)
{
    const auto image = answered(xcb_get_image_reply(
        m_connection,
        xcb_get_image(
            m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_icon, x, y, 1, 1, ~std::uint32_t{0}),
        nullptr));
    std::uint32_t value = 0;
    std::memcpy(&value, xcb_get_image_data(image.get()), sizeof value);
    // Elsewhere the upper byte means nothing and holds anything.
    return image->depth == translucentDepth ? value : value & 0xffffff;
}

xcb_visualid_t TestTray::iconVisual()
{
    return answered(xcb_get_window_attributes_reply(
                        m_connection, xcb_get_window_attributes(m_connection, m_icon), nullptr))
        ->visual;
}

} // namespace tessly::test
