#include "X11ViewWindow.h"

#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

using namespace std::chrono_literals;

namespace tessly {

namespace {

// Window managers take the focus to a window by way of others; what settles within this time was
// not lost.
constexpr auto focusSettles = 60ms;

// "The source of the request is a pager or the like": the user's own wish, which window managers
// grant without weighing it against what the user does elsewhere.
constexpr std::uint32_t sourceIsUser = 2;

// What to do with a state of the window.
constexpr std::uint32_t addState = 1;

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

bool comesFromGrab(const xcb_focus_in_event_t& event)
{
    return event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB;
}

} // namespace

X11ViewWindow::X11ViewWindow(QWindow& window, std::function<void()> focusLost)
    : m_window(window)
{
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->connection() == nullptr) {
        return;
    }
    m_connection = x11->connection();
    const std::array<std::pair<xcb_atom_t*, std::string_view>, 6> names = {{
        {&m_wmState, "_NET_WM_STATE"},
        {&m_above, "_NET_WM_STATE_ABOVE"},
        {&m_skipTaskbar, "_NET_WM_STATE_SKIP_TASKBAR"},
        {&m_skipPager, "_NET_WM_STATE_SKIP_PAGER"},
        {&m_activeWindow, "_NET_ACTIVE_WINDOW"},
        {&m_timestamp, "_TESSLY_TIMESTAMP"},
    }};
    std::array<xcb_intern_atom_cookie_t, names.size()> cookies = {};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string_view name = names[i].second;
        cookies[i] =
            xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Owned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, cookies[i], nullptr), &std::free);
        if (reply) {
            *names[i].first = reply->atom;
        }
    }
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, id()), nullptr),
        &std::free);
    if (geometry) {
        m_root = geometry->root;
    }

    m_focusLost.setSingleShot(true);
    m_focusLost.setInterval(focusSettles);
    m_focusLost.callOnTimeout(std::move(focusLost));
    qGuiApp->installNativeEventFilter(this);
}

X11ViewWindow::~X11ViewWindow()
{
    if (m_connection != nullptr) {
        qGuiApp->removeNativeEventFilter(this);
    }
}

void X11ViewWindow::prepareToShow()
{
    if (m_connection == nullptr) {
        return;
    }
    m_focusLost.stop();
    m_isPrepared = true;
    // The toolkit adds its own states to these.
    const std::array states = {m_skipTaskbar, m_skipPager};
    const auto cookie = xcb_change_property(
        m_connection, XCB_PROP_MODE_REPLACE, id(), m_wmState, XCB_ATOM_ATOM, 32,
        static_cast<std::uint32_t>(states.size()), states.data());
    m_firstRequest = cookie.sequence;
}

bool X11ViewWindow::isOfThisShowing(const xcb_generic_event_t& event) const
{
    // Numbers of requests go round.
    return static_cast<std::int32_t>(event.full_sequence - m_firstRequest) >= 0;
}

void X11ViewWindow::activate()
{
    m_window.requestActivate();
    if (m_connection == nullptr) {
        return;
    }
    if (std::exchange(m_isPrepared, false)) {
        // A window manager clears the states of a window that was hidden. Where the window is shown
        // again before it got to that, it clears what the window is shown with.
        askManager(m_wmState, {addState, m_skipTaskbar, m_skipPager, sourceIsUser});
        if (m_window.flags().testFlag(Qt::WindowStaysOnTopHint)) {
            askManager(m_wmState, {addState, m_above, XCB_ATOM_NONE, sourceIsUser});
        }
    }
    // The request above bears the time of the last event that the toolkit saw, which may be long
    // ago: the key or the click that opened the panel went elsewhere. A change of a property tells
    // the server's time.
    m_isAwaitingTimestamp = true;
    xcb_change_property(
        m_connection, XCB_PROP_MODE_APPEND, id(), m_timestamp, XCB_ATOM_INTEGER, 32, 0, nullptr);
    xcb_flush(m_connection);
}

bool X11ViewWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t" || m_window.handle() == nullptr) {
        return false;
    }
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & ~0x80) {
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT: {
        const auto& focus = *reinterpret_cast<const xcb_focus_in_event_t*>(event);
        if (focus.event != id() || focus.detail == XCB_NOTIFY_DETAIL_POINTER ||
            !isOfThisShowing(*event)) {
            return false;
        }
        if (comesFromGrab(focus)) {
            // Another program holds the keyboard for a moment, as for a hot key; the focus stays
            // where it is. The toolkit would take it for lost.
            return true;
        }
        if ((event->response_type & ~0x80) == XCB_FOCUS_IN) {
            m_focusLost.stop();
        } else if (focus.detail != XCB_NOTIFY_DETAIL_INFERIOR && m_window.isVisible()) {
            m_focusLost.start();
        }
        return false;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& property = *reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (property.window == id() && property.atom == m_timestamp) {
            handleTimestamp(property.time);
        }
        return false;
    }
    default:
        return false;
    }
}

void X11ViewWindow::handleTimestamp(xcb_timestamp_t time)
{
    if (!std::exchange(m_isAwaitingTimestamp, false) || !m_window.isVisible()) {
        return;
    }
    askManager(m_activeWindow, {sourceIsUser, time});
    xcb_flush(m_connection);
}

void X11ViewWindow::askManager(
    xcb_atom_t request, std::initializer_list<std::uint32_t> arguments) const
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = id();
    message.type = request;
    std::ranges::copy(arguments, message.data.data32);
    xcb_send_event(
        m_connection, 0, m_root,
        XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
}

} // namespace tessly
