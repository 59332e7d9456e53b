#include "XClient.h"

#include "XcbReply.h"
#include "XcbXkb.h"

#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace tessly::test {

namespace {

constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

template <typename Reply>
XcbOwned<Reply> answered(Reply* reply)
{
    if (reply == nullptr) {
        throw std::runtime_error("the X server did not answer");
    }
    return owned(reply);
}

} // namespace

XClient::XClient(const QString& display)
    : m_connection(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("no X server");
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    xcb_xkb_use_extension(m_connection, 1, 0);
}

XClient::~XClient()
{
    xcb_disconnect(m_connection);
}

QByteArray XClient::windowClass(const QByteArray& instance, const QByteArray& name)
{
    return instance + '\0' + name + '\0';
}

xcb_window_t XClient::show(const Look& look)
{
    const auto window = xcb_generate_id(m_connection);
    const std::array<std::uint32_t, 2> values = {
        look.isUnmanaged ? 1U : 0U, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE};
    xcb_create_window(
        m_connection, XCB_COPY_FROM_PARENT, window,
        look.parent == XCB_WINDOW_NONE ? m_screen->root : look.parent, look.x, look.y, 200, 100, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    setWindowClass(window, look.windowClass);
    if (!look.gtkApplicationID.isEmpty()) {
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, window, atom("_GTK_APPLICATION_ID"),
            atom("UTF8_STRING"), 8, static_cast<std::uint32_t>(look.gtkApplicationID.size()),
            look.gtkApplicationID.constData());
    }
    if (look.processID) {
        setProperty(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, {*look.processID});
    }
    map(window);
    return window;
}

void XClient::setWindowClass(xcb_window_t window, const QByteArray& value)
{
    if (!value.isEmpty()) {
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
            static_cast<std::uint32_t>(value.size()), value.constData());
    }
    sync();
}

void XClient::map(xcb_window_t window)
{
    xcb_map_window(m_connection, window);
    sync();
}

void XClient::unmap(xcb_window_t window)
{
    xcb_unmap_window(m_connection, window);
    sync();
}

void XClient::destroy(xcb_window_t window)
{
    xcb_destroy_window(m_connection, window);
    sync();
}

void XClient::focus(xcb_window_t window)
{
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    sync();
}

xcb_window_t XClient::focused()
{
    return answered(
               xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr))
        ->focus;
}

QRect XClient::geometryOf(xcb_window_t window)
{
    const auto size = answered(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const auto place = answered(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_screen->root, 0, 0),
        nullptr));
    return {place->dst_x, place->dst_y, size->width, size->height};
}

xcb_window_t XClient::windowAt(QPoint place)
{
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_window_t child = m_screen->root;
    while (child != XCB_WINDOW_NONE) {
        window = child;
        child = answered(xcb_translate_coordinates_reply(
                             m_connection,
                             xcb_translate_coordinates(
                                 m_connection, m_screen->root, window,
                                 static_cast<std::int16_t>(place.x()),
                                 static_cast<std::int16_t>(place.y())),
                             nullptr))
                    ->child;
    }
    return window != m_screen->root ? window : xcb_window_t{XCB_WINDOW_NONE};
}

xcb_window_t XClient::ownerOf(const std::string& selection)
{
    return answered(
               xcb_get_selection_owner_reply(
                   m_connection, xcb_get_selection_owner(m_connection, atom(selection)), nullptr))
        ->owner;
}

void XClient::own(const std::string& selection, xcb_window_t window)
{
    xcb_set_selection_owner(
        m_connection, window != XCB_WINDOW_NONE ? window : m_screen->root, atom(selection), time());
    sync();
}

const std::vector<XClient::Key>& XClient::keys()
{
    sync();
    return m_keys;
}

std::vector<xcb_keycode_t> XClient::heldKeys()
{
    std::vector<xcb_keycode_t> held;
    const auto reply =
        answered(xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    for (unsigned key = 0; key < 256; ++key) {
        if ((reply->keys[key / 8] & (1U << (key % 8))) != 0) {
            held.push_back(static_cast<xcb_keycode_t>(key));
        }
    }
    return held;
}

XClient::KeyboardState XClient::keyboardState()
{
    const auto reply = answered(xcb_xkb_get_state_reply(
        m_connection, xcb_xkb_get_state(m_connection, coreKeyboard), nullptr));
    return {
        .mods = reply->mods,
        .lockedMods = reply->lockedMods,
        .latchedMods = reply->latchedMods,
        .group = reply->group,
        .lockedGroup = reply->lockedGroup,
    };
}

void XClient::lock(std::uint8_t mods, std::uint8_t group)
{
    xcb_xkb_latch_lock_state(m_connection, coreKeyboard, 0xff, mods, 1, group, 0, 0, 0);
    sync();
}

void XClient::latch(std::uint8_t mods)
{
    // xcb's function has no parameter for which modifiers to latch; the byte after the mask is it.
    struct
    {
        std::uint8_t opcode;
        std::uint8_t minor = 5;
        std::uint16_t length = 4;
        std::uint16_t device = coreKeyboard;
        std::uint8_t affectLocks = 0;
        std::uint8_t locks = 0;
        std::uint8_t lockGroup = 0;
        std::uint8_t groupLock = 0;
        std::uint8_t affectLatches = 0xff;
        std::uint8_t latches;
        std::uint8_t pad = 0;
        std::uint8_t latchGroup = 0;
        std::uint16_t groupLatch = 0;
    } request = {
        .opcode = xcb_get_extension_data(m_connection, &xcb_xkb_id)->major_opcode,
        .latches = mods,
    };
    static_assert(sizeof request == 16);
    std::array<iovec, 3> parts = {};
    parts[2] = {.iov_base = &request, .iov_len = sizeof request};
    static constexpr xcb_protocol_request_t protocol = {
        .count = 1, .ext = &xcb_xkb_id, .opcode = 5, .isvoid = 1};
    xcb_send_request(m_connection, 0, parts.data() + 2, &protocol);
    sync();
}

xcb_timestamp_t XClient::time()
{
    // The server tells the time with everything that changes.
    const auto window = xcb_generate_id(m_connection);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(
        m_connection, 0, window, m_screen->root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    setProperty(window, "_TEST_CLOCK", XCB_ATOM_CARDINAL, {});
    xcb_destroy_window(m_connection, window);
    sync();
    return m_time;
}

void XClient::pressOnKeyboard(xcb_keycode_t key)
{
    fakeOnKeyboard(XCB_INPUT_DEVICE_KEY_PRESS, key);
}

void XClient::releaseOnKeyboard(xcb_keycode_t key)
{
    fakeOnKeyboard(XCB_INPUT_DEVICE_KEY_RELEASE, key);
}

void XClient::fakeOnKeyboard(int event, xcb_keycode_t key)
{
    const auto devices = answered(xcb_input_xi_query_device_reply(
        m_connection, xcb_input_xi_query_device(m_connection, XCB_INPUT_DEVICE_ALL), nullptr));
    auto device = xcb_input_xi_query_device_infos_iterator(devices.get());
    for (; device.rem > 0; xcb_input_xi_device_info_next(&device)) {
        const std::string_view name(
            xcb_input_xi_device_info_name(device.data), device.data->name_len);
        if (device.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
            name.find("XTEST") == std::string_view::npos) {
            const auto first = xcb_get_extension_data(m_connection, &xcb_input_id)->first_event;
            const auto cookie = xcb_test_fake_input_checked(
                m_connection, static_cast<std::uint8_t>(first + event), key, XCB_CURRENT_TIME,
                XCB_WINDOW_NONE, 0, 0, static_cast<std::uint8_t>(device.data->deviceid));
            if (owned(xcb_request_check(m_connection, cookie))) {
                break;
            }
            return;
        }
    }
    throw std::runtime_error("no keyboard but that of XTEST");
}

void XClient::grabKey(xcb_keycode_t key)
{
    xcb_grab_key(
        m_connection, 0, m_screen->root, XCB_MOD_MASK_ANY, key, XCB_GRAB_MODE_ASYNC,
        XCB_GRAB_MODE_ASYNC);
    sync();
}

bool XClient::grabKey(xcb_keycode_t key, std::uint16_t modifiers)
{
    const auto cookie = xcb_grab_key_checked(
        m_connection, 0, m_screen->root, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    return !owned(xcb_request_check(m_connection, cookie));
}

void XClient::ungrabKey(xcb_keycode_t key, std::uint16_t modifiers)
{
    xcb_ungrab_key(m_connection, key, m_screen->root, modifiers);
    sync();
}

void XClient::grabKeyboard()
{
    const auto reply = answered(xcb_grab_keyboard_reply(
        m_connection,
        xcb_grab_keyboard(
            m_connection, 0, m_screen->root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC),
        nullptr));
    if (reply->status != XCB_GRAB_STATUS_SUCCESS) {
        throw std::runtime_error("the keyboard is grabbed already");
    }
}

void XClient::ungrabKeyboard()
{
    xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
    sync();
}

void XClient::grabPointer()
{
    const auto reply = answered(xcb_grab_pointer_reply(
        m_connection,
        xcb_grab_pointer(
            m_connection, 0, m_screen->root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME),
        nullptr));
    if (reply->status != XCB_GRAB_STATUS_SUCCESS) {
        throw std::runtime_error("the pointer is grabbed already");
    }
}

void XClient::grabServer()
{
    xcb_grab_server(m_connection);
    sync();
}

void XClient::ungrabServer()
{
    xcb_ungrab_server(m_connection);
    sync();
}

void XClient::manage()
{
    m_managerWindow = xcb_generate_id(m_connection);
    xcb_create_window(
        m_connection, XCB_COPY_FROM_PARENT, m_managerWindow, m_screen->root, -1, -1, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    setProperty(m_managerWindow, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, {m_managerWindow});
    setProperty(m_screen->root, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, {m_managerWindow});
    setProperty(m_screen->root, "_NET_SUPPORTED", XCB_ATOM_ATOM, {atom("_NET_ACTIVE_WINDOW")});
    sync();
}

void XClient::nameActive(xcb_window_t window)
{
    setProperty(m_screen->root, "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, {window});
    sync();
}

void XClient::stopManaging()
{
    destroy(m_managerWindow);
}

void XClient::sync()
{
    static_cast<void>(focused());
    drain();
}

xcb_atom_t XClient::atom(const std::string& name)
{
    return answered(xcb_intern_atom_reply(
                        m_connection,
                        xcb_intern_atom(
                            m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
                        nullptr))
        ->atom;
}

void XClient::setProperty(
    xcb_window_t window, const char* name, xcb_atom_t type,
    const std::vector<std::uint32_t>& values)
{
    xcb_change_property(
        m_connection, XCB_PROP_MODE_REPLACE, window, atom(name), type, 32,
        static_cast<std::uint32_t>(values.size()), values.data());
}

void XClient::drain()
{
    while (const auto event = owned(xcb_poll_for_event(m_connection))) {
        if (event->response_type == XCB_KEY_PRESS || event->response_type == XCB_KEY_RELEASE) {
            const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
            m_keys.push_back(
                {.isPress = event->response_type == XCB_KEY_PRESS,
                 .code = key.detail,
                 .state = key.state,
                 .window = key.event});
        } else if (event->response_type == XCB_PROPERTY_NOTIFY) {
            m_time = reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
        }
    }
}

} // namespace tessly::test
