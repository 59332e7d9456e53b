#pragma once

#include "CardWindow.h"

#include <QPointF>

#include <functional>
#include <optional>

namespace tessly {

class PanelModel;

/// The panel's window and what is in it. Shows keys to the panel's controller before the focused
/// control gets them.
class PanelWindow final : public CardWindow
{
    Q_OBJECT
    /// Whether the pointer has moved since the panel opened. One that merely lies where the panel
    /// appears selects nothing.
    Q_PROPERTY(bool pointerHasMoved READ pointerHasMoved NOTIFY pointerHasMovedChanged)

public:
    struct Handlers
    {
        /// True if the key was consumed.
        std::function<bool(int key, Qt::KeyboardModifiers modifiers)> keyPressed;
        /// The user told the window manager to close the window.
        std::function<void()> closeRequested;
    };

    /// Loads the panel; `isLoaded` tells whether that worked.
    PanelWindow(const X11Cards& cards, PanelModel& model, Handlers handlers);

    [[nodiscard]] bool pointerHasMoved() const { return m_pointerHasMoved; }
    /// The window is about to be shown.
    void forgetPointer();
    /// The window is hidden, and hears no more of the pointer: nothing stays lit or pressed.
    void releasePointer();

Q_SIGNALS:
    void pointerHasMovedChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void followPointer(const QPointF& place);

    Handlers m_handlers;
    /// Where the pointer was when the window first heard of it.
    std::optional<QPointF> m_pointer;
    bool m_pointerHasMoved = false;
};

} // namespace tessly
