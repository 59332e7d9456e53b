#include "PasteChord.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tessly {

namespace {

// Both tables: application ids and window classes in lower case.

/// Shift+Insert pastes, Ctrl+Shift+V does not.
constexpr std::array<std::string_view, 20> xtermKin = {
    "aterm",        "debian-uxterm",
    "debian-xterm", "eterm",
    "koi8rxterm",   "kterm",
    "lxterm",       "mlterm",
    "mrxvt",        "nxterm",
    "pterm",        "rxvt",
    "rxvt-unicode", "rxvt-unicode-256color",
    "rxvt-xterm",   "urxvt",
    "uxterm",       "wterm",
    "xiterm",       "xterm",
};

/// Terminals that paste by Ctrl+Shift+V, for those whose desktop entry is missing or does not say
/// that it is a terminal.
constexpr std::array<std::string_view, 48> terminals = {
    "alacritty",
    "blackbox",
    "com.alacritty.alacritty",
    "com.gexperts.tilix",
    "com.mitchellh.ghostty",
    "com.raggesilver.blackbox",
    "contour",
    "cool-retro-term",
    "deepin-terminal",
    "dev.warp.warp",
    "foot",
    "foot-server",
    "footclient",
    "ghostty",
    "gnome-terminal",
    "gnome-terminal-server",
    "guake",
    "hyper",
    "io.elementary.terminal",
    "kgx",
    "kitty",
    "konsole",
    "lxterminal",
    "mate-terminal",
    "org.codeberg.dnkl.foot",
    "org.contourterminal.contour",
    "org.gnome.console",
    "org.gnome.ptyxis",
    "org.gnome.terminal",
    "org.kde.konsole",
    "org.kde.yakuake",
    "org.wezfurlong.wezterm",
    "org.xfce.terminal",
    "ptyxis",
    "qterminal",
    "rio",
    "roxterm",
    "sakura",
    "st",
    "st-256color",
    "tabby",
    "terminator",
    "terminology",
    "tilda",
    "tilix",
    "wezterm",
    "xfce4-terminal",
    "yakuake",
};

static_assert(std::ranges::is_sorted(xtermKin));
static_assert(std::ranges::is_sorted(terminals));

template <std::size_t count>
bool holds(const std::array<std::string_view, count>& table, const QString& name)
{
    const QByteArray folded = name.toLower().toUtf8();
    return std::ranges::binary_search(
        table, std::string_view(folded.constData(), static_cast<std::size_t>(folded.size())));
}

} // namespace

PasteChord
pasteChord(const QString& applicationID, const QString& windowClass, bool isTerminalEmulator)
{
    // xterm's entry is in the terminals' category as well, so its kin come first.
    if (holds(xtermKin, windowClass) || holds(xtermKin, applicationID)) {
        return PasteChord::shiftInsert;
    }
    if (isTerminalEmulator || holds(terminals, windowClass) || holds(terminals, applicationID)) {
        return PasteChord::controlShiftV;
    }
    return PasteChord::controlV;
}

} // namespace tessly
