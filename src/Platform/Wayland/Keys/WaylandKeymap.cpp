#include "WaylandKeymap.h"

#include "PasteKeys.h"

#include <algorithm>
#include <cstdlib>
#include <linux/input-event-codes.h>
#include <memory>
#include <ranges>
#include <xkbcommon/xkbcommon.h>

namespace tessly {

namespace {

/// What XKB's numbers of keys are above the kernel's.
constexpr std::uint32_t firstXkbKey = 8;

constexpr std::array allChords = {
    PasteChord::controlV, PasteChord::controlShiftV, PasteChord::shiftInsert};

struct XkbDeleter
{
    void operator()(xkb_context* context) const noexcept { xkb_context_unref(context); }
    void operator()(xkb_keymap* keymap) const noexcept { xkb_keymap_unref(keymap); }
    void operator()(xkb_state* state) const noexcept { xkb_state_unref(state); }
    void operator()(char* text) const noexcept { std::free(text); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, XkbDeleter>;

Owned<xkb_context> makeContext()
{
    Owned<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context) {
        // It would write on standard error what is wrong with another program's key map.
        xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    }
    return context;
}

/// Whether no layout has another character of ASCII on the key of a chord than the one the chord is
/// named for. Toolkits look for the letters of commands in the layout in effect first, and in
/// others only if it is not a Latin one.
bool meansTheSameInAllLayouts(xkb_keymap* keymap, const PasteKeys& keys)
{
    const auto symbolIn = [keymap, &keys](xkb_layout_index_t group) {
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap, keys.key, group, 0, &symbols);
        return count == 1 ? *symbols : xkb_keysym_t{XKB_KEY_NoSymbol};
    };
    const auto isCharacter = [](xkb_keysym_t symbol) {
        const std::uint32_t character = xkb_keysym_to_utf32(symbol);
        return character > ' ' && character <= '~';
    };
    const xkb_layout_index_t groups = xkb_keymap_num_layouts_for_key(keymap, keys.key);
    const auto meant = symbolIn(keys.group < groups ? keys.group : 0);
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        const auto symbol = symbolIn(group);
        if (symbol != meant && isCharacter(symbol)) {
            return false;
        }
    }
    return true;
}

QByteArray symbolName(xkb_keysym_t symbol)
{
    // The longest that there are have 27 characters.
    std::array<char, 64> name{};
    const int length = xkb_keysym_get_name(symbol, name.data(), name.size());
    return symbol == XKB_KEY_NoSymbol || length < 0 ? QByteArray() : QByteArray(name.data());
}

KeyStrokes strokesOf(const WaylandKeymap::Steps& steps)
{
    KeyStrokes strokes;
    for (const auto& step : steps) {
        if (step.key != 0) {
            strokes.push_back({.key = step.key, .isPress = step.isPress});
        }
    }
    return strokes;
}

/// Follows the state of a keyboard while a chord is made on it.
class ChordMaker
{
public:
    ChordMaker(xkb_keymap* keymap, const PasteKeys& keys)
        : m_keys(keys)
        , m_state(xkb_state_new(keymap))
    {
        xkb_state_update_mask(m_state.get(), 0, 0, 0, 0, 0, keys.group);
    }

    [[nodiscard]] WaylandKeymap::Steps make()
    {
        m_steps = {{.modifiers = modifiers()}};
        for (const auto modifier : m_keys.modifiers) {
            change(modifier, XKB_KEY_DOWN);
        }
        // Not before the modifiers: they may be those that switch layouts when they meet.
        setLocked(m_keys.lockedModifiers);
        change(m_keys.key, XKB_KEY_DOWN);
        change(m_keys.key, XKB_KEY_UP);
        setLocked(0);
        for (const auto modifier : std::views::reverse(m_keys.modifiers)) {
            change(modifier, XKB_KEY_UP);
        }
        m_steps.push_back({});
        return m_steps;
    }

private:
    void change(xkb_keycode_t key, xkb_key_direction direction)
    {
        xkb_state_update_key(m_state.get(), key, direction);
        m_steps.push_back(
            {.key = key - firstXkbKey,
             .isPress = direction == XKB_KEY_DOWN,
             .modifiers = modifiers()});
    }

    void setLocked(std::uint32_t modifiers)
    {
        if (m_keys.lockedModifiers != 0) {
            m_locked = modifiers;
            m_steps.push_back({.modifiers = this->modifiers()});
        }
    }

    [[nodiscard]] WaylandKeymap::Modifiers modifiers() const
    {
        const auto serialized = [this](xkb_state_component component) {
            return xkb_state_serialize_mods(m_state.get(), component);
        };
        return {
            .depressed = serialized(XKB_STATE_MODS_DEPRESSED),
            .latched = serialized(XKB_STATE_MODS_LATCHED),
            .locked = m_locked,
            .group = xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_EFFECTIVE)};
    }

    const PasteKeys& m_keys;
    Owned<xkb_state> m_state;
    std::uint32_t m_locked = 0;
    WaylandKeymap::Steps m_steps;
};

} // namespace

WaylandKeymap::WaylandKeymap(xkb_keymap* keymap)
{
    if (const Owned<char> text(xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1)); text) {
        m_text = text.get();
    }
    for (const PasteChord chord : allChords) {
        const auto index = static_cast<std::size_t>(chord);
        if (const auto keys = PasteKeys::find(keymap, chord, 0)) {
            m_steps.at(index) = ChordMaker(keymap, *keys).make();
            if (keys->lockedModifiers == 0 && meansTheSameInAllLayouts(keymap, *keys)) {
                m_strokes.at(index) = strokesOf(m_steps.at(index));
            }
        }
    }
    findSymbolsWithShift(keymap);
}

void WaylandKeymap::findSymbolsWithShift(xkb_keymap* keymap)
{
    const Owned<xkb_state> state(xkb_state_new(keymap));
    const auto shift = xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
    if (!state || shift == XKB_MOD_INVALID) {
        return;
    }
    xkb_state_update_mask(state.get(), xkb_mod_mask_t{1} << shift, 0, 0, 0, 0, 0);
    for (std::uint32_t key = KEY_1; key <= KEY_0; ++key) {
        m_symbolsWithShift.at(key - KEY_1) =
            symbolName(xkb_state_key_get_one_sym(state.get(), key + firstXkbKey));
    }
}

std::optional<WaylandKeymap> WaylandKeymap::fromText(const QByteArray& text)
{
    const auto context = makeContext();
    // Some senders count the zero byte at the end.
    const Owned<xkb_keymap> keymap(
        context ? xkb_keymap_new_from_buffer(
                      context.get(), text.constData(),
                      qstrnlen(text.constData(), static_cast<std::size_t>(text.size())),
                      XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS)
                : nullptr);
    return keymap ? std::optional(WaylandKeymap(keymap.get())) : std::nullopt;
}

std::optional<WaylandKeymap> WaylandKeymap::american()
{
    const xkb_rule_names names = {
        .rules = "evdev", .model = "pc105", .layout = "us", .variant = "", .options = ""};
    const auto context = makeContext();
    const Owned<xkb_keymap> keymap(
        context ? xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS)
                : nullptr);
    return keymap ? std::optional(WaylandKeymap(keymap.get())) : std::nullopt;
}

const WaylandKeymap::Steps& WaylandKeymap::steps(PasteChord chord) const
{
    return m_steps.at(static_cast<std::size_t>(chord));
}

const std::optional<KeyStrokes>& WaylandKeymap::strokes(PasteChord chord) const
{
    return m_strokes.at(static_cast<std::size_t>(chord));
}

QByteArray WaylandKeymap::symbolWithShift(std::uint32_t key) const
{
    return key >= KEY_1 && key <= KEY_0 ? m_symbolsWithShift.at(key - KEY_1) : QByteArray();
}

bool WaylandKeymap::canMakeAll() const
{
    return !m_text.isEmpty() &&
           std::ranges::none_of(m_steps, [](const Steps& steps) { return steps.empty(); });
}

} // namespace tessly
