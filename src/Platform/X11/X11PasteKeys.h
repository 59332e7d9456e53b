#pragma once

#include "PasteChord.h"

#include <xcb/xproto.h>

#include <cstdint>
#include <optional>
#include <vector>

struct xkb_keymap;

namespace tessly {

/// The keys of one keyboard that make a chord.
struct X11PasteKeys
{
    /// Pressed in this order, released in the opposite one.
    std::vector<xcb_keycode_t> modifiers;
    /// Modifiers (XCB_MOD_MASK_…) that no key sets here without doing something else as well, as
    /// where Ctrl and Shift together switch layouts: locked while the key is pressed.
    std::uint8_t lockedModifiers = 0;
    xcb_keycode_t key = 0;
    /// The group (layout) in which the key has to be pressed.
    std::uint8_t group = 0;

    /// Finds them on a keyboard whose effective group is `group`: the key that bears the letter in
    /// that group; failing that, in the first group that has it. None if no layout has it, as where
    /// Cyrillic or Greek is the only one.
    [[nodiscard]] static std::optional<X11PasteKeys>
    find(xkb_keymap* keymap, PasteChord chord, std::uint8_t group);

    bool operator==(const X11PasteKeys&) const = default;
};

} // namespace tessly
