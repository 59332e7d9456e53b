#pragma once

#include <QByteArray>

#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <memory>

namespace tessly::test {

using OwnedKeymap = std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)>;

inline QByteArray textOf(const OwnedKeymap& keymap)
{
    const std::unique_ptr<char, decltype(&std::free)> text(
        xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
    return text.get();
}

/// What a compositor tells of a keyboard, as the rules of xkeyboard-config make it.
inline QByteArray keymapText(const char* layout, const char* variant = "", const char* options = "")
{
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref);
    // Version 1.7 cuts long names of symbols off, and complains of them when it reads them again.
    xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    const xkb_rule_names names = {
        .rules = "evdev",
        .model = "pc105",
        .layout = layout,
        .variant = variant,
        .options = options};
    const OwnedKeymap keymap(
        xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS),
        &xkb_keymap_unref);
    // As it is once it has been read, so that it is the same however often it is.
    const OwnedKeymap read(
        xkb_keymap_new_from_string(
            context.get(), textOf(keymap).constData(), XKB_KEYMAP_FORMAT_TEXT_V1,
            XKB_KEYMAP_COMPILE_NO_FLAGS),
        &xkb_keymap_unref);
    return textOf(read);
}

} // namespace tessly::test
