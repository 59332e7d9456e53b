#pragma once

#include "ViewWindow.h"

#include <functional>

namespace tessly {

class PanelModel;

/// The panel's window and what is in it. Shows keys to the panel's controller before the focused
/// control gets them.
class PanelWindow final : public ViewWindow
{
    Q_OBJECT

public:
    struct Handlers
    {
        /// True if the key was consumed.
        std::function<bool(int key, Qt::KeyboardModifiers modifiers)> keyPressed;
        /// The user told the window manager to close the window.
        std::function<void()> closeRequested;
    };

    /// Loads the panel; `isLoaded` tells whether that worked.
    PanelWindow(PanelModel& model, Handlers handlers);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    Handlers m_handlers;
};

} // namespace tessly
