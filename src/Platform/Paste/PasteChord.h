#pragma once

#include <QString>

namespace tessly {

/// The keys by which an application pastes.
enum class PasteChord {
    controlV,
    /// Terminals, to which Ctrl+V is a character.
    controlShiftV,
    /// xterm and its kin, which have no key for the clipboard: this one pastes PRIMARY there. Emacs
    /// and Vim, to which Ctrl+V is a command: the former pastes the clipboard, the latter PRIMARY.
    shiftInsert,
};

/// Which keys an application pastes by. Told from what the application is, never from a window's
/// title, which shows whatever runs inside.
///
/// `applicationID` as `RunningApplication::bundleIdentifier` has it; `windowClass` is WM_CLASS's
/// class, empty where there is none. Letter case does not matter.
[[nodiscard]] PasteChord
pasteChord(const QString& applicationID, const QString& windowClass, bool isTerminalEmulator);

} // namespace tessly
