#pragma once

#include "X11EventLoop.h"
#include "XcbReply.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessly {

/// Reads properties of windows, several in one round trip: ask for all, then take the answers.
///
/// The windows are other programs': they vanish at any moment and hold what they please, so every
/// answer may be empty, and none is longer than what was asked for. Loop thread.
class X11Property
{
public:
    /// Asks for at most `byteLimit` bytes of the property.
    X11Property(
        X11EventLoop& loop, xcb_window_t window, const std::string& name,
        std::uint32_t byteLimit = 1024);
    /// An answer that nobody takes is dropped.
    ~X11Property();
    X11Property(const X11Property&) = delete;
    X11Property& operator=(const X11Property&) = delete;

    // One of these, once. They wait for the server.

    /// The bytes of a property of format 8, whatever its type.
    [[nodiscard]] std::string bytes();
    /// The first value of a property of format 32 (a cardinal, a window, an atom).
    [[nodiscard]] std::optional<std::uint32_t> value();
    /// All values of a property of format 32.
    [[nodiscard]] std::vector<std::uint32_t> values();

private:
    [[nodiscard]] XcbOwned<xcb_get_property_reply_t> reply();

    xcb_connection_t* m_connection;
    std::optional<xcb_get_property_cookie_t> m_cookie;
};

} // namespace tessly
