#include "PasteKeys.h"

#include <xkbcommon/xkbcommon.h>

#include <initializer_list>
#include <memory>

namespace tessly {

namespace {

struct StateDeleter
{
    void operator()(xkb_state* state) const noexcept { xkb_state_unref(state); }
};

/// What a chord is made of, in keysyms.
struct Parts
{
    bool hasControl = false;
    bool hasShift = false;
    xkb_keysym_t symbol = XKB_KEY_NoSymbol;
};

Parts partsOf(PasteChord chord)
{
    switch (chord) {
    case PasteChord::controlV:
        return {.hasControl = true, .hasShift = false, .symbol = XKB_KEY_v};
    case PasteChord::controlShiftV:
        return {.hasControl = true, .hasShift = true, .symbol = XKB_KEY_v};
    case PasteChord::shiftInsert:
        return {.hasControl = false, .hasShift = true, .symbol = XKB_KEY_Insert};
    }
    return {};
}

class Keyboard
{
public:
    explicit Keyboard(xkb_keymap* keymap)
        : m_keymap(keymap)
    {
    }

    /// The key that gives the symbol in this group with no modifier held; of several the one where
    /// V is on most keyboards, then the first.
    [[nodiscard]] std::optional<PasteKeys::KeyCode>
    keyOf(xkb_keysym_t symbol, xkb_layout_index_t group) const
    {
        if (const auto usual = usualKeyOfV(); usual && has(*usual, symbol, group)) {
            return usual;
        }
        return firstKey([&](xkb_keycode_t key) { return has(key, symbol, group); });
    }

    /// "AB04" is the fourth key of the lowest row of letters in every XKB key map.
    [[nodiscard]] std::optional<PasteKeys::KeyCode> usualKeyOfV() const
    {
        const auto key = xkb_keymap_key_by_name(m_keymap, "AB04");
        return key == XKB_KEYCODE_INVALID ? std::nullopt : fitting(key);
    }

    [[nodiscard]] xkb_layout_index_t groups() const { return xkb_keymap_num_layouts(m_keymap); }

    /// A key that sets exactly this modifier while it is held in this group together with `held`,
    /// preferring those that bear one of the symbols. Options like "Ctrl+Shift switches layouts"
    /// give the usual keys another meaning, so what the key does counts, not its name.
    [[nodiscard]] std::optional<PasteKeys::KeyCode> modifierKey(
        const char* modifier, std::initializer_list<xkb_keysym_t> symbols, xkb_layout_index_t group,
        const std::vector<PasteKeys::KeyCode>& held) const
    {
        for (const auto symbol : symbols) {
            const auto key = firstKey([&](xkb_keycode_t candidate) {
                return has(candidate, symbol, group) && sets(candidate, modifier, group, held);
            });
            if (key) {
                return key;
            }
        }
        return firstKey(
            [&](xkb_keycode_t candidate) { return sets(candidate, modifier, group, held); });
    }

private:
    static std::optional<PasteKeys::KeyCode> fitting(xkb_keycode_t key)
    {
        // Keyboards have no others; a key map may name more.
        return key <= 255 ? std::optional(static_cast<PasteKeys::KeyCode>(key)) : std::nullopt;
    }

    template <typename Predicate>
    [[nodiscard]] std::optional<PasteKeys::KeyCode> firstKey(Predicate predicate) const
    {
        const auto last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(m_keymap), 255);
        for (auto key = xkb_keymap_min_keycode(m_keymap); key <= last; ++key) {
            if (predicate(key)) {
                return fitting(key);
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool has(xkb_keycode_t key, xkb_keysym_t symbol, xkb_layout_index_t group) const
    {
        // Keys that are the same in all layouts have but one group, which stands for every other.
        const auto count = xkb_keymap_num_layouts_for_key(m_keymap, key);
        if (count == 0) {
            return false;
        }
        const xkb_keysym_t* symbols = nullptr;
        const int found =
            xkb_keymap_key_get_syms_by_level(m_keymap, key, group < count ? group : 0, 0, &symbols);
        return found == 1 && *symbols == symbol;
    }

    [[nodiscard]] bool sets(
        xkb_keycode_t key, const char* modifier, xkb_layout_index_t group,
        const std::vector<PasteKeys::KeyCode>& held) const
    {
        const std::unique_ptr<xkb_state, StateDeleter> state(xkb_state_new(m_keymap));
        xkb_state_update_mask(state.get(), 0, 0, 0, 0, 0, group);
        for (const auto other : held) {
            xkb_state_update_key(state.get(), other, XKB_KEY_DOWN);
        }
        const auto modifiers = [&state] {
            return xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_EFFECTIVE);
        };
        const auto before = modifiers();
        xkb_state_update_key(state.get(), key, XKB_KEY_DOWN);
        const auto index = xkb_keymap_mod_get_index(m_keymap, modifier);
        if (index == XKB_MOD_INVALID || (modifiers() & ~before) != (xkb_mod_mask_t{1} << index) ||
            xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE) != group) {
            return false;
        }
        // Nothing may stay behind, as it would with a lock.
        xkb_state_update_key(state.get(), key, XKB_KEY_UP);
        return modifiers() == before &&
               xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE) == group;
    }

    xkb_keymap* m_keymap;
};

bool findKey(const Keyboard& keyboard, xkb_keysym_t symbol, std::uint8_t group, PasteKeys& keys)
{
    const auto take = [&keys](std::optional<PasteKeys::KeyCode> key, xkb_layout_index_t inGroup) {
        keys.key = key.value_or(0);
        keys.group = static_cast<std::uint8_t>(inGroup);
        return key.has_value();
    };
    if (take(keyboard.keyOf(symbol, group), group)) {
        return true;
    }
    for (xkb_layout_index_t other = 0; other < keyboard.groups(); ++other) {
        if (take(keyboard.keyOf(symbol, other), other)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<PasteKeys> PasteKeys::find(xkb_keymap* keymap, PasteChord chord, std::uint8_t group)
{
    const Keyboard keyboard(keymap);
    const Parts parts = partsOf(chord);
    PasteKeys keys;
    if (!findKey(keyboard, parts.symbol, group, keys)) {
        return std::nullopt;
    }
    const auto hold = [&](const char* modifier, std::uint8_t mask,
                          std::initializer_list<xkb_keysym_t> symbols) {
        if (const auto key = keyboard.modifierKey(modifier, symbols, keys.group, keys.modifiers)) {
            keys.modifiers.push_back(*key);
        } else {
            keys.lockedModifiers |= mask;
        }
    };
    if (parts.hasControl) {
        hold(XKB_MOD_NAME_CTRL, PasteKeys::controlMask, {XKB_KEY_Control_L, XKB_KEY_Control_R});
    }
    if (parts.hasShift) {
        hold(XKB_MOD_NAME_SHIFT, PasteKeys::shiftMask, {XKB_KEY_Shift_L, XKB_KEY_Shift_R});
    }
    return keys;
}

} // namespace tessly
