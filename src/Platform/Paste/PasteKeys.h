#pragma once

#include "PasteChord.h"

#include <cstdint>
#include <optional>
#include <vector>

struct xkb_keymap;

namespace tessly {

/// The keys of one keyboard that make a chord.
struct PasteKeys
{
    /// As XKB counts keys: eight more than the kernel does. What has no room in eight bits is not a
    /// key of a keyboard.
    using KeyCode = std::uint8_t;
    static constexpr std::uint8_t shiftMask = 1 << 0;
    static constexpr std::uint8_t controlMask = 1 << 2;

    /// Pressed in this order, released in the opposite one.
    std::vector<KeyCode> modifiers;
    /// Modifiers (the masks above) that no key sets here without doing something else as well, as
    /// where Ctrl and Shift together switch layouts: locked while the key is pressed.
    std::uint8_t lockedModifiers = 0;
    KeyCode key = 0;
    /// The group (layout) in which the key has to be pressed.
    std::uint8_t group = 0;

    /// Finds them on a keyboard whose effective group is `group`: the key that bears the letter in
    /// that group; failing that, in the first group that has it. None if no layout has it, as where
    /// Cyrillic or Greek is the only one.
    [[nodiscard]] static std::optional<PasteKeys>
    find(xkb_keymap* keymap, PasteChord chord, std::uint8_t group);

    bool operator==(const PasteKeys&) const = default;
};

} // namespace tessly
