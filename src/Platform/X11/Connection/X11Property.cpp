#include "X11Property.h"

#include <utility>

namespace tessly {

X11Property::X11Property(
    X11EventLoop& loop, xcb_window_t window, const std::string& name, std::uint32_t byteLimit)
    : m_connection(loop.connection())
    , m_cookie(xcb_get_property(
          m_connection, 0, window, loop.atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, byteLimit / 4))
{
}

X11Property::~X11Property()
{
    if (m_cookie) {
        xcb_discard_reply(m_connection, m_cookie->sequence);
    }
}

std::string X11Property::bytes()
{
    const auto answer = reply();
    if (!answer || answer->format != 8) {
        return {};
    }
    const auto* begin = static_cast<const char*>(xcb_get_property_value(answer.get()));
    return {begin, static_cast<std::size_t>(xcb_get_property_value_length(answer.get()))};
}

std::optional<std::uint32_t> X11Property::value()
{
    const auto all = values();
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::vector<std::uint32_t> X11Property::values()
{
    const auto answer = reply();
    if (!answer || answer->format != 32) {
        return {};
    }
    const auto* begin = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
    return {begin, begin + xcb_get_property_value_length(answer.get()) / 4};
}

XcbOwned<xcb_get_property_reply_t> X11Property::reply()
{
    const auto cookie = std::exchange(m_cookie, std::nullopt);
    // An error says that the window is gone, which an empty answer says as well.
    return cookie ? owned(xcb_get_property_reply(m_connection, *cookie, nullptr)) : nullptr;
}

} // namespace tessly
