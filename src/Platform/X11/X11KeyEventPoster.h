#pragma once

#include "KeyEventPoster.h"
#include "PasteChord.h"
#include "PasteClipboard.h"
#include "X11Keyboard.h"

#include <chrono>
#include <memory>

namespace tessly {

class X11Desktop;

/// Presses keys by the X server's XTEST extension, which asks for no permission.
class X11KeyEventPoster final : public KeyEventPoster
{
public:
    using Clipboard = PasteClipboard;

    struct Options
    {
        /// How long to wait for the user to let go of held keys before they are released for them.
        std::chrono::milliseconds releaseWait{1000};
    };

    /// `owner` is the window that owns the selections for the program.
    X11KeyEventPoster(
        X11Desktop& desktop, Clipboard clipboard, xcb_window_t owner, Options options);
    X11KeyEventPoster(X11Desktop& desktop, Clipboard clipboard, xcb_window_t owner);

    [[nodiscard]] bool isAllowed() const override { return true; }
    [[nodiscard]] bool requestAccess() override { return true; }
    [[nodiscard]] QCoro::Task<PostResult>
    postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content) override;

private:
    [[nodiscard]] QCoro::Task<X11Keyboard::Result>
    press(PasteChord chord, std::shared_ptr<const X11Window> target, WriteTicket content);

    X11Desktop& m_desktop;
    Clipboard m_clipboard;
    xcb_window_t m_owner;
    Options m_options;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly
