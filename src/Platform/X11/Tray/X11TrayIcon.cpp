#include "X11TrayIcon.h"

#include "StatusItem.h"
#include "X11Property.h"
#include "XcbReply.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <climits>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tessly {

namespace {

constexpr auto visualName = "_NET_SYSTEM_TRAY_VISUAL";
constexpr auto coloursName = "_NET_SYSTEM_TRAY_COLORS";
constexpr auto opcodeName = "_NET_SYSTEM_TRAY_OPCODE";
constexpr auto managerName = "MANAGER";
constexpr auto embeddingName = "_XEMBED_INFO";

constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t embeddingVersion = 0;
constexpr std::uint32_t embeddingIsMapped = 1;

/// What is asked for until the tray says how large its icons are.
constexpr std::uint16_t usualSize = 22;

constexpr xcb_button_t leftButton = 1;
constexpr xcb_button_t rightButton = 3;

/// Deeper than any real window; ends a walk through a tree that changes underneath.
constexpr std::size_t deepestWindow = 64;

constexpr std::uint32_t windowEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                       XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                       XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;

/// WM_NORMAL_HINTS: that there is a smallest size, and which.
constexpr std::size_t sizeHintsLength = 18;
constexpr std::uint32_t hasMinimumSize = 1U << 4U;

template <typename Event>
const Event& as(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

/// Also of events that another client sent: some trays pass clicks on like that.
std::uint8_t typeOf(const xcb_generic_event_t& event)
{
    return event.response_type & 0x7f;
}

/// The window that an event is about.
xcb_window_t windowOf(const xcb_generic_event_t& event)
{
    switch (typeOf(event)) {
    case XCB_EXPOSE:
        return as<xcb_expose_event_t>(event).window;
    case XCB_CONFIGURE_NOTIFY:
        return as<xcb_configure_notify_event_t>(event).window;
    case XCB_MAP_NOTIFY:
        return as<xcb_map_notify_event_t>(event).window;
    case XCB_REPARENT_NOTIFY:
        return as<xcb_reparent_notify_event_t>(event).window;
    case XCB_DESTROY_NOTIFY:
        return as<xcb_destroy_notify_event_t>(event).window;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        return as<xcb_enter_notify_event_t>(event).event;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        return as<xcb_button_press_event_t>(event).event;
    default:
        return XCB_WINDOW_NONE;
    }
}

std::string hostName()
{
    std::array<char, HOST_NAME_MAX + 1> name = {};
    gethostname(name.data(), name.size() - 1);
    return name.data();
}

} // namespace

X11TrayIcon::X11TrayIcon(X11EventLoop& loop)
    : m_loop(loop)
    , m_painter(loop)
{
}

void X11TrayIcon::setHandlers(Handlers handlers)
{
    m_handlers = std::move(handlers);
}

void X11TrayIcon::setVisible(bool visible)
{
    if (std::exchange(m_isVisible, visible) == visible) {
        return;
    }
    if (visible) {
        // So that the answer is told, whatever it is.
        m_presence = Presence::undecided;
        prepare();
        join();
    } else {
        leave();
        setPresence(Presence::absent);
    }
}

void X11TrayIcon::prepare()
{
    if (m_selection != XCB_ATOM_NONE) {
        return;
    }
    auto* const connection = m_loop.connection();
    // A program has one screen, and that is the display's first unless the user chose another.
    int number = 0;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && screens.data->root != m_loop.root(); xcb_screen_next(&screens)) {
        ++number;
    }
    m_selection = m_loop.atom("_NET_SYSTEM_TRAY_S" + std::to_string(number));
    // A tray announces itself by a message when it is ready. That it goes is told by its selection:
    // the icon's window hears of it only once it is in the tray.
    const auto version = owned(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, 5, 0), nullptr));
    const auto* extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (version && extension != nullptr && extension->present != 0) {
        m_selectionEvent =
            static_cast<std::uint8_t>(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
        xcb_xfixes_select_selection_input(
            connection, m_loop.root(), m_selection,
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
}

void X11TrayIcon::join()
{
    leave();
    auto* const connection = m_loop.connection();
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, m_selection), nullptr));
    m_tray = owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
    if (m_tray == XCB_WINDOW_NONE) {
        setPresence(Presence::absent);
        return;
    }
    setPresence(Presence::undecided);
    createWindow();
    describeWindow();
    askToDock();
}

void X11TrayIcon::leave()
{
    m_tray = XCB_WINDOW_NONE;
    m_ancestors.clear();
    m_rectangle.reset();
    setHovered(false);
    if (m_window != XCB_WINDOW_NONE) {
        xcb_destroy_window(m_loop.connection(), std::exchange(m_window, XCB_WINDOW_NONE));
    }
    if (m_colormap != XCB_COLORMAP_NONE) {
        xcb_free_colormap(m_loop.connection(), std::exchange(m_colormap, XCB_COLORMAP_NONE));
    }
}

void X11TrayIcon::createWindow()
{
    auto* const connection = m_loop.connection();
    const auto& screen = m_loop.screen();
    X11Property visual(m_loop, m_tray, visualName);
    X11Property colours(m_loop, m_tray, coloursName);

    // A tray with translucent windows names the visual that icons must have to be taken in.
    const auto offered = visual.value();
    const auto offeredDepth = offered ? m_painter.depth(*offered) : std::nullopt;
    m_visual = offeredDepth ? *offered : screen.root_visual;
    const std::uint8_t depth = offeredDepth.value_or(screen.root_depth);
    const bool isLikeRoot = m_visual == screen.root_visual;

    // The first three are those of ordinary icons, sixteen bits each.
    const auto tray = colours.values();
    m_colour = StatusIcon::defaultColour;
    if (tray.size() >= 3) {
        const auto part = [&tray](std::size_t index) {
            return static_cast<std::uint8_t>(tray[index] >> 8U);
        };
        m_colour = {.red = part(0), .green = part(1), .blue = part(2)};
    }

    m_width = m_height = usualSize;
    m_window = xcb_generate_id(connection);
    if (!isLikeRoot) {
        m_colormap = xcb_generate_id(connection);
        xcb_create_colormap(
            connection, XCB_COLORMAP_ALLOC_NONE, m_colormap, m_loop.root(), m_visual);
    }
    // What is behind the shape: the tray itself, or nothing.
    xcb_create_window_value_list_t values = {};
    values.background_pixmap = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    values.background_pixel = 0;
    values.border_pixel = 0;
    values.event_mask = windowEvents;
    values.colormap = m_colormap;
    const std::uint32_t mask =
        isLikeRoot ? XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK
                   : XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    xcb_create_window_aux(
        connection, depth, m_window, m_loop.root(), -1, -1, m_width, m_height, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, m_visual, mask, &values);
}

void X11TrayIcon::describeWindow()
{
    auto* const connection = m_loop.connection();
    const auto set32 = [&](xcb_atom_t property, xcb_atom_t type,
                           const std::vector<std::uint32_t>& values) {
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, m_window, property, type, 32,
            static_cast<std::uint32_t>(values.size()), values.data());
    };
    const xcb_atom_t embedding = m_loop.atom(embeddingName);
    set32(embedding, embedding, {embeddingVersion, embeddingIsMapped});
    std::vector<std::uint32_t> hints(sizeHintsLength);
    hints[0] = hasMinimumSize;
    hints[5] = hints[6] = usualSize;
    set32(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
    set32(m_loop.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(getpid())});

    using namespace std::string_literals;
    setProperty("WM_CLIENT_MACHINE", XCB_ATOM_STRING, hostName());
    setProperty("WM_CLASS", XCB_ATOM_STRING, "tessly\0Tessly\0"s);
    setProperty("WM_NAME", XCB_ATOM_STRING, statusItemTitle.toStdString());
    setProperty("_NET_WM_NAME", m_loop.atom("UTF8_STRING"), statusItemToolTip.toStdString());
}

void X11TrayIcon::setProperty(const char* name, xcb_atom_t type, const std::string& text)
{
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_REPLACE, m_window, m_loop.atom(name), type, 8,
        static_cast<std::uint32_t>(text.size()), text.data());
}

void X11TrayIcon::askToDock()
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_tray;
    message.type = m_loop.atom(opcodeName);
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = m_window;
    xcb_send_event(
        m_loop.connection(), 0, m_tray, XCB_EVENT_MASK_NO_EVENT,
        reinterpret_cast<const char*>(&message));
}

bool X11TrayIcon::handle(const xcb_generic_event_t& event)
{
    if (!m_isVisible) {
        return false;
    }
    if (typeOf(event) == XCB_CLIENT_MESSAGE) {
        handleMessage(as<xcb_client_message_event_t>(event));
        return false;
    }
    if (m_selectionEvent != 0 && typeOf(event) == m_selectionEvent) {
        if (as<xcb_xfixes_selection_notify_event_t>(event).selection != m_selection) {
            return false;
        }
        // There may be a new owner already, that is: another tray.
        join();
        return true;
    }
    if (m_window == XCB_WINDOW_NONE) {
        return false;
    }
    if (windowOf(event) == m_window) {
        handleWindow(event);
        return true;
    }
    if (std::ranges::count(m_ancestors, windowOf(event)) > 0) {
        // A window manager may put a frame around the tray at any time.
        if (typeOf(event) == XCB_REPARENT_NOTIFY) {
            watchAncestors();
        }
        locate();
    }
    // Others may be interested in these windows, too.
    return false;
}

void X11TrayIcon::handleMessage(const xcb_client_message_event_t& event)
{
    const bool isTray = event.window == m_loop.root() && event.format == 32 &&
                        event.type == m_loop.atom(managerName) &&
                        event.data.data32[1] == m_selection;
    // A tray that was found before it announced itself has been asked already.
    if (isTray && event.data.data32[2] != m_tray) {
        join();
    }
}

void X11TrayIcon::handleWindow(const xcb_generic_event_t& event)
{
    switch (typeOf(event)) {
    case XCB_EXPOSE:
        // The last of those that came together.
        if (as<xcb_expose_event_t>(event).count == 0) {
            draw();
        }
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configured = as<xcb_configure_notify_event_t>(event);
        const bool isResized = configured.width != m_width || configured.height != m_height;
        m_width = configured.width;
        m_height = configured.height;
        if (isResized) {
            draw();
        }
        locate();
        break;
    }
    case XCB_MAP_NOTIFY:
        locate();
        break;
    case XCB_REPARENT_NOTIFY:
        handleReparented(as<xcb_reparent_notify_event_t>(event).parent);
        break;
    case XCB_DESTROY_NOTIFY:
        // By the tray, or with it.
        m_window = XCB_WINDOW_NONE;
        leave();
        setPresence(Presence::absent);
        break;
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        if (as<xcb_enter_notify_event_t>(event).mode == XCB_NOTIFY_MODE_NORMAL) {
            setHovered(typeOf(event) == XCB_ENTER_NOTIFY);
        }
        break;
    case XCB_BUTTON_PRESS:
        setHovered(false);
        break;
    case XCB_BUTTON_RELEASE:
        handleRelease(as<xcb_button_release_event_t>(event));
        break;
    default:
        break;
    }
}

void X11TrayIcon::setHovered(bool hovered)
{
    if (std::exchange(m_isHovered, hovered) != hovered && m_handlers.hovered) {
        m_handlers.hovered(hovered);
    }
}

void X11TrayIcon::handleReparented(xcb_window_t parent)
{
    if (parent != m_loop.root()) {
        setPresence(Presence::present);
        watchAncestors();
        locate();
        return;
    }
    // The tray put it out, or went: windows that it had taken in are left over on the screen.
    leave();
    setPresence(Presence::absent);
}

void X11TrayIcon::handleRelease(const xcb_button_release_event_t& event)
{
    const bool isOver = event.event_x >= 0 && event.event_x < m_width && event.event_y >= 0 &&
                        event.event_y < m_height;
    if (!isOver || (event.detail != leftButton && event.detail != rightButton)) {
        return;
    }
    setRectangle(
        {.x = event.root_x - event.event_x,
         .y = event.root_y - event.event_y,
         .width = m_width,
         .height = m_height});
    if (m_handlers.clicked) {
        m_handlers.clicked(
            {.isRight = event.detail == rightButton,
             .x = event.root_x,
             .y = event.root_y,
             .icon = *m_rectangle});
    }
}

void X11TrayIcon::draw()
{
    m_painter.draw(
        m_window, m_visual, {.x = 0, .y = 0, .width = m_width, .height = m_height}, m_colour);
}

void X11TrayIcon::locate()
{
    const auto place = owned(xcb_translate_coordinates_reply(
        m_loop.connection(),
        xcb_translate_coordinates(m_loop.connection(), m_window, m_loop.root(), 0, 0), nullptr));
    if (place) {
        setRectangle({.x = place->dst_x, .y = place->dst_y, .width = m_width, .height = m_height});
    }
}

void X11TrayIcon::watchAncestors()
{
    auto* const connection = m_loop.connection();
    m_ancestors.clear();
    xcb_window_t window = m_window;
    while (m_ancestors.size() < deepestWindow) {
        const auto tree =
            owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        if (!tree || tree->parent == m_loop.root() || tree->parent == XCB_WINDOW_NONE) {
            return;
        }
        window = tree->parent;
        m_ancestors.push_back(window);
        // Added to what this connection wants of the window already: it may be watched for other
        // reasons. For the same reason it is never taken back; it brings few events.
        const auto attributes = owned(xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, window), nullptr));
        if (attributes) {
            const std::uint32_t events =
                attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
        }
    }
}

void X11TrayIcon::setRectangle(const Rectangle& rectangle)
{
    if (m_rectangle != rectangle) {
        m_rectangle = rectangle;
        if (m_handlers.moved) {
            m_handlers.moved(rectangle);
        }
    }
}

void X11TrayIcon::setPresence(Presence presence)
{
    if (std::exchange(m_presence, presence) != presence && m_handlers.presenceChanged) {
        m_handlers.presenceChanged(presence);
    }
}

void X11TrayIcon::lost()
{
    m_isVisible = false;
    m_window = XCB_WINDOW_NONE;
    setPresence(Presence::absent);
}

} // namespace tessly
