#pragma once

#include <QByteArray>

#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <memory>

namespace tessly::test {

/// What a compositor tells of a keyboard, as the rules of xkeyboard-config make it.
inline QByteArray keymapText(const char* layout, const char* variant = "", const char* options = "")
{
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref);
    const xkb_rule_names names = {
        .rules = "evdev",
        .model = "pc105",
        .layout = layout,
        .variant = variant,
        .options = options};
    const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
        xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS),
        &xkb_keymap_unref);
    const std::unique_ptr<char, decltype(&std::free)> text(
        xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
    return text.get();
}

} // namespace tessly::test
