#include "PanelKeyMap.h"

namespace tessly {

namespace {

/// The keypad's mark and the like say where a key sits, not what is held down with it.
Qt::KeyboardModifiers heldOf(Qt::KeyboardModifiers modifiers)
{
    return modifiers &
           (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

} // namespace

std::optional<int> directPastePosition(int key, Qt::KeyboardModifiers modifiers)
{
    if (heldOf(modifiers) != (Qt::AltModifier | Qt::ShiftModifier) || key < Qt::Key_0 ||
        key > Qt::Key_9 || modifiers.testFlag(Qt::KeypadModifier)) {
        return std::nullopt;
    }
    return key == Qt::Key_0 ? 10 : key - Qt::Key_0;
}

std::optional<PanelAction> panelAction(int key, Qt::KeyboardModifiers modifiers)
{
    const auto held = heldOf(modifiers);
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
    case Qt::Key_Space:
        if (held == Qt::ControlModifier) {
            return PanelAction::togglePreview;
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace tessly
