#pragma once

#include "LoopPasteboard.h"
#include "X11ClipboardDeadlines.h"
#include "X11EventLoop.h"

#include <memory>
#include <string>

namespace tessly {

class X11Clipboard;

/// The clipboard of an X server (the CLIPBOARD selection).
class X11Pasteboard final : public LoopPasteboard
{
public:
    struct Options
    {
        /// As $DISPLAY names it; empty: $DISPLAY itself.
        std::string display;
        X11ClipboardDeadlines deadlines;
    };

    /// Connects. Throws X11Error if the server cannot be reached, or lacks XFIXES.
    X11Pasteboard();
    explicit X11Pasteboard(const Options& options);
    /// What it owns is gone with it. Everything that is still awaited ends as unreadable.
    ~X11Pasteboard() override;

    /// What owns CLIPBOARD and PRIMARY while the program does.
    [[nodiscard]] xcb_window_t ownerWindow() const;

private:
    X11EventLoop m_loop;
    std::unique_ptr<X11Clipboard> m_clipboard;
};

} // namespace tessly
