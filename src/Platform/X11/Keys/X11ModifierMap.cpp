#include "X11ModifierMap.h"

#include "XcbReply.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <initializer_list>
#include <span>

namespace tessly {

namespace {

constexpr unsigned firstFreeModifier = XCB_MAP_INDEX_1;
constexpr unsigned lastFreeModifier = XCB_MAP_INDEX_5;

/// The keys of each modifier, and what is printed on them.
class Keyboard
{
public:
    explicit Keyboard(X11EventLoop& loop)
        : m_firstKey(xcb_get_setup(loop.connection())->min_keycode)
    {
        auto* const connection = loop.connection();
        const auto* setup = xcb_get_setup(connection);
        const auto keyCount = static_cast<std::uint8_t>(setup->max_keycode - m_firstKey + 1);
        const auto modifiersCookie = xcb_get_modifier_mapping(connection);
        const auto symbolsCookie = xcb_get_keyboard_mapping(connection, m_firstKey, keyCount);
        m_modifiers = owned(xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));
        m_symbols = owned(xcb_get_keyboard_mapping_reply(connection, symbolsCookie, nullptr));
    }

    /// The mask of the first modifier that has a key with this symbol, the earlier symbols first.
    [[nodiscard]] std::uint8_t modifierWith(std::initializer_list<xcb_keysym_t> symbols) const
    {
        for (const auto symbol : symbols) {
            for (unsigned modifier = firstFreeModifier; modifier <= lastFreeModifier; ++modifier) {
                const auto keys = keysOf(modifier);
                if (std::ranges::any_of(keys, [&](auto key) { return hasSymbol(key, symbol); })) {
                    return static_cast<std::uint8_t>(1U << modifier);
                }
            }
        }
        return 0;
    }

private:
    [[nodiscard]] std::span<const xcb_keycode_t> keysOf(unsigned modifier) const
    {
        if (!m_modifiers) {
            return {};
        }
        const std::span all(
            xcb_get_modifier_mapping_keycodes(m_modifiers.get()),
            static_cast<std::size_t>(xcb_get_modifier_mapping_keycodes_length(m_modifiers.get())));
        const std::size_t count = m_modifiers->keycodes_per_modifier;
        return (modifier + 1) * count <= all.size() ? all.subspan(modifier * count, count)
                                                    : std::span<const xcb_keycode_t>();
    }

    [[nodiscard]] bool hasSymbol(xcb_keycode_t key, xcb_keysym_t symbol) const
    {
        // 0 fills the places that are not used.
        if (!m_symbols || key < m_firstKey) {
            return false;
        }
        const std::span all(
            xcb_get_keyboard_mapping_keysyms(m_symbols.get()),
            static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(m_symbols.get())));
        const std::size_t count = m_symbols->keysyms_per_keycode;
        const std::size_t first = static_cast<std::size_t>(key - m_firstKey) * count;
        return first + count <= all.size() &&
               std::ranges::count(all.subspan(first, count), symbol) > 0;
    }

    xcb_keycode_t m_firstKey;
    XcbOwned<xcb_get_modifier_mapping_reply_t> m_modifiers;
    XcbOwned<xcb_get_keyboard_mapping_reply_t> m_symbols;
};

} // namespace

X11ModifierMap X11ModifierMap::read(X11EventLoop& loop)
{
    const Keyboard keyboard(loop);
    return {
        // The right Alt key last: where it is AltGr, it is on a modifier of its own.
        .alt = keyboard.modifierWith({XKB_KEY_Alt_L, XKB_KEY_Meta_L, XKB_KEY_Alt_R}),
        .super = keyboard.modifierWith({XKB_KEY_Super_L, XKB_KEY_Super_R}),
        .numLock = keyboard.modifierWith({XKB_KEY_Num_Lock}),
        .scrollLock = keyboard.modifierWith({XKB_KEY_Scroll_Lock}),
    };
}

} // namespace tessly
