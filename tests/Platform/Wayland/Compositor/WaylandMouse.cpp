#include "WaylandMouse.h"

#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

#include <chrono>
#include <linux/input-event-codes.h>
#include <wayland-client.h>

namespace tessly::test {

namespace {

constexpr auto timeout = std::chrono::seconds(20);

} // namespace

WaylandMouse::WaylandMouse(const std::string& display)
    : m_loop(display)
    , m_registry(m_loop)
{
    m_loop.roundTrip(timeout);
    m_manager = m_registry.bind<zwlr_virtual_pointer_manager_v1>(
        m_registry.find(zwlr_virtual_pointer_manager_v1_interface.name),
        zwlr_virtual_pointer_manager_v1_interface, 1);
    if (m_manager == nullptr) {
        throw WaylandError("there are no virtual pointers");
    }
    m_pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(m_manager, nullptr);
    m_loop.roundTrip(timeout);
}

WaylandMouse::~WaylandMouse()
{
    zwlr_virtual_pointer_v1_destroy(m_pointer);
    zwlr_virtual_pointer_manager_v1_destroy(m_manager);
    // What was destroyed is to be known before the connection is.
    wl_display_flush(m_loop.display());
}

void WaylandMouse::move(std::uint32_t x, std::uint32_t y)
{
    zwlr_virtual_pointer_v1_motion_absolute(m_pointer, 0, x, y, 1000, 1000);
    done();
}

void WaylandMouse::click()
{
    for (const auto state : {WL_POINTER_BUTTON_STATE_PRESSED, WL_POINTER_BUTTON_STATE_RELEASED}) {
        zwlr_virtual_pointer_v1_button(m_pointer, 0, BTN_LEFT, state);
        done();
    }
}

void WaylandMouse::done()
{
    zwlr_virtual_pointer_v1_frame(m_pointer);
    m_loop.roundTrip(timeout);
}

} // namespace tessly::test
