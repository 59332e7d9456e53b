#include "X11ClickWatch.h"

#include "X11WindowOwner.h"
#include "XcbReply.h"

#include <QLoggingCategory>

#include <xcb/xinput.h>

#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcClickWatch, "com.brackmoor.tessly.OutsideClickMonitor")

constexpr std::uint32_t leftButton = 1;
constexpr std::uint32_t rightButton = 3;

} // namespace

X11ClickWatch::X11ClickWatch(X11EventLoop& loop)
    : m_loop(loop)
{
}

void X11ClickWatch::start()
{
    auto* const connection = m_loop.connection();
    const auto* extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0) {
        qCWarning(lcClickWatch, "the X server has no input extension: clicks are not noticed");
        return;
    }
    // Before 2.1 raw events are withheld during grabs.
    const auto version = owned(xcb_input_xi_query_version_reply(
        connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    if (!version) {
        qCWarning(lcClickWatch, "the X server's input extension is too old");
        return;
    }
    m_extension = extension->major_opcode;
}

void X11ClickWatch::setHandler(std::function<void()> clicked)
{
    m_clicked = std::move(clicked);
    if (!m_extension) {
        return;
    }
    struct
    {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } const mask = {
        .head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
        .events =
            m_clicked ? static_cast<std::uint32_t>(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS) : 0,
    };
    xcb_input_xi_select_events(m_loop.connection(), m_loop.root(), 1, &mask.head);
}

bool X11ClickWatch::handle(const xcb_generic_event_t& event)
{
    if (event.response_type != XCB_GE_GENERIC || !m_extension) {
        return false;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != *m_extension || generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS) {
        return false;
    }
    const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
    if (m_clicked && (button == leftButton || button == rightButton) && !isPointerInOwnWindow()) {
        m_clicked();
    }
    return true;
}

bool X11ClickWatch::isPointerInOwnWindow()
{
    // Down from the root to the window that the click goes to: the manager's frame, the
    // application's window, its children.
    auto window = m_loop.root();
    for (int depth = 0; window != XCB_WINDOW_NONE && depth < 64; ++depth) {
        if (window != m_loop.root() && isOfThisProcess(window, m_loop)) {
            return true;
        }
        const auto pointer = owned(xcb_query_pointer_reply(
            m_loop.connection(), xcb_query_pointer(m_loop.connection(), window), nullptr));
        window = pointer ? pointer->child : xcb_window_t{XCB_WINDOW_NONE};
    }
    return false;
}

} // namespace tessly
