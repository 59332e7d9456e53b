#include "PasteChord.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace tessly {

namespace {

// In the tables: application ids and window classes, in lower case.

/// Terminals to which Ctrl+Shift+V means nothing.
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

/// Editors to which Ctrl+V is a command of theirs, in windows of their own. In a terminal's window
/// it is the terminal that pastes.
constexpr std::array<std::string_view, 7> commandEditors = {
    // By any of these its menu entries and its windows are known.
    "emacs", "emacsclient", "gview", "gvim", "gvimdiff", "nvim-qt", "xemacs",
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
static_assert(std::ranges::is_sorted(commandEditors));
static_assert(std::ranges::is_sorted(terminals));

struct Family
{
    std::span<const std::string_view> names;
    PasteChord chord;
};

/// What is known by name.
constexpr std::array families = {
    Family{xtermKin, PasteChord::shiftInsert},
    Family{commandEditors, PasteChord::shiftInsert},
    Family{terminals, PasteChord::controlShiftV},
};

bool holds(const Family& family, const QString& name)
{
    const QByteArray folded = name.toLower().toUtf8();
    return std::ranges::binary_search(
        family.names,
        std::string_view(folded.constData(), static_cast<std::size_t>(folded.size())));
}

} // namespace

PasteChord
pasteChord(const QString& applicationID, const QString& windowClass, bool isTerminalEmulator)
{
    // Names come first: xterm's entry is in the terminals' category, too.
    for (const Family& family : families) {
        if (holds(family, windowClass) || holds(family, applicationID)) {
            return family.chord;
        }
    }
    return isTerminalEmulator ? PasteChord::controlShiftV : PasteChord::controlV;
}

} // namespace tessly
