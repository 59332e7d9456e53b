#include "PanelKeyMap.h"

namespace tessly {

std::optional<PanelAction> panelAction(int key, Qt::KeyboardModifiers modifiers)
{
    // The keypad's mark and the like say where a key sits, not what is held down with it.
    const auto held =
        modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    switch (key) {
    case Qt::Key_Up:
        return PanelAction::selectPrevious;
    case Qt::Key_Down:
        return PanelAction::selectNext;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return held == Qt::ShiftModifier ? PanelAction::pastePlainText : PanelAction::paste;
    case Qt::Key_Escape:
        return PanelAction::close;
    case Qt::Key_P:
        if (held == Qt::ControlModifier) {
            return PanelAction::togglePin;
        }
        return std::nullopt;
    case Qt::Key_Backspace:
        if (held == Qt::ControlModifier) {
            return PanelAction::deleteSelected;
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace tessly
