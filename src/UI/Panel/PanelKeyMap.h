#pragma once

#include <Qt>

#include <optional>

namespace tessly {

enum class PanelAction {
    selectPrevious,
    selectNext,
    paste,
    pastePlainText,
    close,
    togglePin,
    deleteSelected,
    togglePreview,
};

/// What a key does in the panel; none for a key that is left to the search field. `key` is a
/// Qt::Key.
[[nodiscard]] std::optional<PanelAction> panelAction(int key, Qt::KeyboardModifiers modifiers);

/// The position, 1 to 10, whose entry a key pastes from within the panel: the same keys as do
/// everywhere, where the desktop holds them for the program.
[[nodiscard]] std::optional<int> directPastePosition(int key, Qt::KeyboardModifiers modifiers);

} // namespace tessly
