#include "X11IncrementalSends.h"

#include <algorithm>
#include <limits>

namespace tessly {

namespace {

// Readers that ask for more than this at the same time are not readers.
constexpr std::size_t maximumSends = 256;

// The fields of a ChangeProperty request, in bytes.
constexpr qsizetype requestOverhead = 32;

} // namespace

X11IncrementalSends::X11IncrementalSends(
    X11EventLoop& loop, std::chrono::milliseconds stallDeadline)
    : m_loop(loop)
    , m_stallDeadline(stallDeadline)
    // The core protocol's limit (256 KB), also where the server would take more: one reader's
    // chunk then never keeps the connection busy for long.
    , m_chunkSize(
          qsizetype{xcb_get_setup(loop.connection())->maximum_request_length} * 4 - requestOverhead)
    , m_incr(loop.atom("INCR"))
{
}

bool X11IncrementalSends::begin(
    xcb_window_t reader, xcb_atom_t property, xcb_atom_t type, const QByteArray& bytes)
{
    const Key key(reader, property);
    if (const auto earlier = m_sends.find(key); earlier != m_sends.end()) {
        end(earlier);
    }
    if (m_sends.size() >= maximumSends) {
        return false;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_loop.connection(), reader, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(
        std::min<qint64>(bytes.size(), std::numeric_limits<std::uint32_t>::max()));
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_REPLACE, reader, property, m_incr, 32, 1, &size);
    const auto send = m_sends.emplace(key, Send{type, bytes, 0, 0}).first;
    startDeadline(send);
    return true;
}

void X11IncrementalSends::handle(const xcb_property_notify_event_t& event)
{
    if (event.state != XCB_PROPERTY_DELETE) {
        return;
    }
    if (const auto send = m_sends.find({event.window, event.atom}); send != m_sends.end()) {
        sendChunk(send);
    }
}

void X11IncrementalSends::handle(const xcb_destroy_notify_event_t& event)
{
    auto send = m_sends.lower_bound({event.window, 0});
    while (send != m_sends.end() && send->first.first == event.window) {
        end(send++);
    }
}

void X11IncrementalSends::sendChunk(Sends::iterator send)
{
    auto& [key, state] = *send;
    const qsizetype size = std::min(m_chunkSize, state.bytes.size() - state.sent);
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_REPLACE, key.first, key.second, state.type, 8,
        static_cast<std::uint32_t>(size), state.bytes.constData() + state.sent);
    state.sent += size;
    if (size == 0) {
        // An empty chunk ends the transfer.
        end(send);
        return;
    }
    m_loop.cancel(state.timer);
    startDeadline(send);
}

void X11IncrementalSends::startDeadline(Sends::iterator send)
{
    send->second.timer = m_loop.callAfter(m_stallDeadline, [this, send] { end(send); });
}

void X11IncrementalSends::end(Sends::iterator send)
{
    const xcb_window_t reader = send->first.first;
    m_loop.cancel(send->second.timer);
    m_sends.erase(send);
    const auto other = m_sends.lower_bound({reader, 0});
    if (other == m_sends.end() || other->first.first != reader) {
        const std::uint32_t events = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(m_loop.connection(), reader, XCB_CW_EVENT_MASK, &events);
    }
}

} // namespace tessly
