#pragma once

#include "WaylandKeymap.h"

#include <QByteArray>

struct wl_seat;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace tessly {

/// A keyboard that the compositor adds to a seat for this program, with a key map and a state of
/// its own: what the user holds down on others does not mix in. A compositor may take the focus
/// from a window and give it back when one appears, so it is made once and kept. Loop thread, or
/// before the loop is started.
class WaylandVirtualKeyboard
{
public:
    WaylandVirtualKeyboard(zwp_virtual_keyboard_manager_v1* manager, wl_seat* seat);
    ~WaylandVirtualKeyboard();
    WaylandVirtualKeyboard(const WaylandVirtualKeyboard&) = delete;
    WaylandVirtualKeyboard& operator=(const WaylandVirtualKeyboard&) = delete;

    /// Gives it this key map if it has another. False if that cannot be done; it has none then.
    [[nodiscard]] bool setKeymap(const WaylandKeymap& keymap);

    /// Moves keys and modifiers; they belong to its key map, which it must have.
    void play(const WaylandKeymap::Steps& steps);

private:
    zwp_virtual_keyboard_v1* m_object;
    QByteArray m_keymapText;
};

} // namespace tessly
