#pragma once

#include "X11EventLoop.h"

#include <functional>
#include <optional>

namespace tessly {

/// Hears of the left and the right button being pressed in windows of other programs, also while
/// someone has grabbed the pointer. Loop thread.
class X11ClickWatch
{
public:
    explicit X11ClickWatch(X11EventLoop& loop);

    void start();
    /// The server is asked for clicks only while there is a handler.
    void setHandler(std::function<void()> clicked);
    /// Whether the event was one of these.
    bool handle(const xcb_generic_event_t& event);

private:
    [[nodiscard]] bool isPointerInOwnWindow();

    X11EventLoop& m_loop;
    std::function<void()> m_clicked;
    /// How the extension's events are marked; none where the server lacks it.
    std::optional<std::uint8_t> m_extension;
};

} // namespace tessly
