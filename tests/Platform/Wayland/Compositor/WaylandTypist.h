#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

#include <cstdint>
#include <memory>
#include <string>

struct wl_seat;
struct xkb_context;
struct xkb_keymap;
struct xkb_state;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace tessly::test {

/// A keyboard with a user at it, on a compositor that has zwp_virtual_keyboard_manager_v1.
class WaylandTypist
{
public:
    /// `display` is the path of the compositor's socket. Throws WaylandError.
    WaylandTypist(const std::string& display, const char* layout, const char* variant = "");
    ~WaylandTypist();
    WaylandTypist(const WaylandTypist&) = delete;
    WaylandTypist& operator=(const WaylandTypist&) = delete;

    void setLayout(const char* layout, const char* variant = "");

    // Keys as in linux/input-event-codes.h. Each returns once the compositor has it.
    void press(std::uint32_t key) { move(key, true); }
    void release(std::uint32_t key) { move(key, false); }
    void type(std::uint32_t key);

private:
    void move(std::uint32_t key, bool isPress);

    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandRegistry> m_registry;
    wl_seat* m_seat = nullptr;
    zwp_virtual_keyboard_manager_v1* m_manager = nullptr;
    zwp_virtual_keyboard_v1* m_keyboard = nullptr;
    xkb_context* m_context;
    xkb_keymap* m_keymap = nullptr;
    xkb_state* m_state = nullptr;
};

} // namespace tessly::test
