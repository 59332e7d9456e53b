#pragma once

#include "LoopPasteboard.h"
#include "WaylandClipboardDeadlines.h"
#include "WaylandEventLoop.h"

#include <memory>
#include <string>

namespace tessly {

class WaylandClipboard;

/// The clipboard of a Wayland compositor that has data control.
///
/// Wayland does not tell an owner that ends half-way through its content from one that has handed
/// it over: what was written by then is read.
class WaylandPasteboard final : public LoopPasteboard
{
public:
    struct Options
    {
        /// As $WAYLAND_DISPLAY names it, or a path; empty: $WAYLAND_DISPLAY itself.
        std::string display;
        WaylandClipboardDeadlines deadlines;
    };

    /// Connects, and waits for the compositor's answer. Throws WaylandError if it cannot be
    /// reached, or lets no program read the clipboard.
    WaylandPasteboard();
    explicit WaylandPasteboard(const Options& options);
    /// What it owns is gone with it. Everything that is still awaited ends as unreadable.
    ~WaylandPasteboard() override;

private:
    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandClipboard> m_clipboard;
};

} // namespace tessly
