#include "X11Cards.h"

#include "WindowGeometry.h"

#include <QGuiApplication>
#include <QWindow>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

namespace tessly {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

/// The number of the screen that the toolkit shows windows on.
int screenNumber()
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    const bool isParsed = xcb_parse_display(nullptr, &host, &display, &screen) != 0;
    std::free(host);
    return isParsed ? screen : 0;
}

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number > 0 && screens.rem > 0) {
        xcb_screen_next(&screens);
        --number;
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

xcb_intern_atom_cookie_t requestAtom(xcb_connection_t* connection, std::string_view name)
{
    return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atomOf(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie)
{
    const Owned<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<xcb_rectangle_t> inDevicePixels(const QRegion& region, qreal scale)
{
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& part : region) {
        const auto left = static_cast<int>(std::floor(part.x() * scale));
        const auto top = static_cast<int>(std::floor(part.y() * scale));
        const auto right = static_cast<int>(std::ceil((part.x() + part.width()) * scale));
        const auto bottom = static_cast<int>(std::ceil((part.y() + part.height()) * scale));
        rectangles.push_back(
            {static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
             static_cast<std::uint16_t>(right - left), static_cast<std::uint16_t>(bottom - top)});
    }
    return rectangles;
}

/// Where a window takes clicks; everywhere if that is nowhere.
void setInputRegion(
    xcb_connection_t* connection, xcb_window_t window, const QRegion& region, qreal scale)
{
    if (region.isEmpty()) {
        xcb_xfixes_set_window_shape_region(
            connection, window, XCB_SHAPE_SK_INPUT, 0, 0, XCB_XFIXES_REGION_NONE);
        return;
    }
    const auto rectangles = inDevicePixels(region, scale);
    const xcb_xfixes_region_t id = xcb_generate_id(connection);
    xcb_xfixes_create_region(
        connection, id, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    xcb_xfixes_set_window_shape_region(connection, window, XCB_SHAPE_SK_INPUT, 0, 0, id);
    xcb_xfixes_destroy_region(connection, id);
}

} // namespace

X11Cards::X11Cards(std::function<void()> compositedChanged)
    : m_compositedChanged(std::move(compositedChanged))
{
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->connection() == nullptr) {
        return;
    }
    m_connection = x11->connection();
    const int number = screenNumber();
    const xcb_screen_t* const screen = screenOf(m_connection, number);
    const auto* const fixes = xcb_get_extension_data(m_connection, &xcb_xfixes_id);
    if (screen == nullptr || fixes == nullptr || fixes->present == 0) {
        return;
    }
    m_selectionEvent = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    // By what a compositing manager says that it is there.
    const std::string name = "_NET_WM_CM_S" + std::to_string(number);
    const auto manager = requestAtom(m_connection, name);
    const auto extents = requestAtom(m_connection, "_GTK_FRAME_EXTENTS");
    m_manager = atomOf(m_connection, manager);
    m_frameExtents = atomOf(m_connection, extents);
    watchManager(*screen, m_manager);
    qGuiApp->installNativeEventFilter(this);
}

X11Cards::~X11Cards()
{
    if (m_connection != nullptr) {
        qGuiApp->removeNativeEventFilter(this);
    }
}

void X11Cards::watchManager(const xcb_screen_t& screen, xcb_atom_t selection)
{
    // The toolkit selects the same; events that were not asked for again would go.
    xcb_xfixes_select_selection_input(
        m_connection, screen.root, selection,
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(
            m_connection, xcb_get_selection_owner(m_connection, selection), nullptr),
        &std::free);
    m_owner = owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
}

void X11Cards::shape(QWindow& window, const QMargins& shadow, int radius) const
{
    if (m_connection == nullptr) {
        return;
    }
    const QRegion card = roundedRegion(window.size().shrunkBy(shadow), radius);
    if (m_selectionEvent < 0) {
        window.setMask(card);
        return;
    }
    // Without a compositing manager, what is transparent shows black.
    window.setMask(shadow.isNull() ? card : QRegion());
    const auto id = static_cast<xcb_window_t>(window.winId());
    const qreal scale = window.devicePixelRatio();
    setInputRegion(
        m_connection, id,
        shadow.isNull() ? QRegion() : card.translated(shadow.left(), shadow.top()), scale);
    // As the toolkit of many programs tells managers: the window counts without that, and needs no
    // shadow of theirs.
    const auto pixels = [scale](int length) {
        return static_cast<std::uint32_t>(std::lround(length * scale));
    };
    const std::array extents = {
        pixels(shadow.left()), pixels(shadow.right()), pixels(shadow.top()),
        pixels(shadow.bottom())};
    if (shadow.isNull()) {
        xcb_delete_property(m_connection, id, m_frameExtents);
    } else {
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, id, m_frameExtents, XCB_ATOM_CARDINAL, 32,
            static_cast<std::uint32_t>(extents.size()), extents.data());
    }
}

bool X11Cards::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) != m_selectionEvent) {
        return false;
    }
    const auto& notice = *reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event);
    if (notice.selection == m_manager) {
        const bool were = areComposited();
        m_owner = notice.owner;
        if (areComposited() != were) {
            m_compositedChanged();
        }
    }
    return false;
}

} // namespace tessly
