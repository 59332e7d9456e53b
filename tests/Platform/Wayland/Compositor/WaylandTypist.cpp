#include "WaylandTypist.h"

#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace tessly::test {

namespace {

constexpr auto timeout = std::chrono::seconds(20);

} // namespace

WaylandTypist::WaylandTypist(const std::string& display, const char* layout, const char* variant)
    : m_loop(display)
    , m_registry(std::make_unique<WaylandRegistry>(m_loop))
    , m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    m_loop.roundTrip(timeout);
    m_seat =
        m_registry->bind<wl_seat>(m_registry->find(wl_seat_interface.name), wl_seat_interface, 1);
    m_manager = m_registry->bind<zwp_virtual_keyboard_manager_v1>(
        m_registry->find(zwp_virtual_keyboard_manager_v1_interface.name),
        zwp_virtual_keyboard_manager_v1_interface, 1);
    if (m_seat == nullptr || m_manager == nullptr) {
        throw WaylandError("there are no virtual keyboards");
    }
    m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_manager, m_seat);
    setLayout(layout, variant);
}

WaylandTypist::~WaylandTypist()
{
    zwp_virtual_keyboard_v1_destroy(m_keyboard);
    zwp_virtual_keyboard_manager_v1_destroy(m_manager);
    wl_seat_destroy(m_seat);
    // What was destroyed is to be known before the connection is.
    wl_display_flush(m_loop.display());
    xkb_state_unref(m_state);
    xkb_keymap_unref(m_keymap);
    xkb_context_unref(m_context);
}

void WaylandTypist::setLayout(const char* layout, const char* variant)
{
    const xkb_rule_names names = {
        .rules = "evdev", .model = "pc105", .layout = layout, .variant = variant, .options = ""};
    xkb_state_unref(m_state);
    xkb_keymap_unref(m_keymap);
    m_keymap = xkb_keymap_new_from_names(m_context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    m_state = xkb_state_new(m_keymap);
    char* const text = xkb_keymap_get_as_string(m_keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const std::size_t size = std::strlen(text) + 1;
    const int file = memfd_create("layout", MFD_CLOEXEC);
    if (file < 0 || write(file, text, size) != static_cast<ssize_t>(size)) {
        throw WaylandError("a keyboard gets no layout");
    }
    zwp_virtual_keyboard_v1_keymap(
        m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file, static_cast<std::uint32_t>(size));
    close(file);
    std::free(text);
    m_loop.roundTrip(timeout);
}

void WaylandTypist::type(std::uint32_t key)
{
    press(key);
    release(key);
}

void WaylandTypist::move(std::uint32_t key, bool isPress)
{
    zwp_virtual_keyboard_v1_key(m_keyboard, 0, key, isPress ? 1 : 0);
    xkb_state_update_key(m_state, key + 8, isPress ? XKB_KEY_DOWN : XKB_KEY_UP);
    zwp_virtual_keyboard_v1_modifiers(
        m_keyboard, xkb_state_serialize_mods(m_state, XKB_STATE_MODS_DEPRESSED),
        xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LATCHED),
        xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED),
        xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_EFFECTIVE));
    m_loop.roundTrip(timeout);
}

} // namespace tessly::test
