#pragma once

#include "TrackedWindow.h"

#include <xcb/xcb.h>

#include <utility>

namespace tessly {

/// A window that is in front or has been. Gone means destroyed: the server may give its id to a new
/// window afterwards.
class X11Window final : public TrackedWindow
{
public:
    X11Window(xcb_window_t id, Owner owner)
        : TrackedWindow(std::move(owner))
        , m_id(id)
    {
    }

    [[nodiscard]] xcb_window_t id() const { return m_id; }

private:
    const xcb_window_t m_id;
};

} // namespace tessly
