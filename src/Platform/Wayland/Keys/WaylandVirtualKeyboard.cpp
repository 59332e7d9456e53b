#include "WaylandVirtualKeyboard.h"

#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <chrono>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace tessly {

namespace {

/// A file in memory that holds these bytes; negative if there is none to be had.
int fileWith(const char* bytes, std::size_t size)
{
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    std::size_t done = 0;
    while (file >= 0 && done < size) {
        const auto written = write(file, bytes + done, size - done);
        if (written <= 0) {
            close(file);
            return -1;
        }
        done += static_cast<std::size_t>(written);
    }
    return file;
}

/// The compositors' clock, cut off as theirs is.
std::uint32_t timestamp()
{
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

} // namespace

WaylandVirtualKeyboard::WaylandVirtualKeyboard(
    zwp_virtual_keyboard_manager_v1* manager, wl_seat* seat)
    : m_object(zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, seat))
{
}

WaylandVirtualKeyboard::~WaylandVirtualKeyboard()
{
    zwp_virtual_keyboard_v1_destroy(m_object);
}

bool WaylandVirtualKeyboard::setKeymap(const WaylandKeymap& keymap)
{
    const QByteArray& text = keymap.text();
    if (text == m_keymapText) {
        return true;
    }
    // With the zero byte, as compositors expect it.
    const auto size = static_cast<std::size_t>(text.size()) + 1;
    const int file = fileWith(text.constData(), size);
    if (file < 0) {
        return false;
    }
    zwp_virtual_keyboard_v1_keymap(
        m_object, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file, static_cast<std::uint32_t>(size));
    // What is sent is a copy of the descriptor.
    close(file);
    m_keymapText = text;
    return true;
}

void WaylandVirtualKeyboard::play(const WaylandKeymap::Steps& steps)
{
    for (const auto& [key, isPress, modifiers] : steps) {
        if (key != 0) {
            zwp_virtual_keyboard_v1_key(
                m_object, timestamp(), key,
                isPress ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
        }
        zwp_virtual_keyboard_v1_modifiers(
            m_object, modifiers.depressed, modifiers.latched, modifiers.locked, modifiers.group);
    }
}

} // namespace tessly
