#include "WaylandPasteboard.h"

#include "WaylandClipboard.h"

#include <utility>

namespace tessly {

WaylandPasteboard::WaylandPasteboard()
    : WaylandPasteboard(Options())
{
}

WaylandPasteboard::WaylandPasteboard(const Options& options)
    : LoopPasteboard(options.deadlines.takeover)
    , m_loop(options.display)
    , m_clipboard(std::make_unique<WaylandClipboard>(m_loop, options.deadlines, state()))
{
    start(*m_clipboard, [this](std::function<void()> job) { m_loop.post(std::move(job)); });
    m_loop.start("clipboard", [this] { lost(); });
}

WaylandPasteboard::~WaylandPasteboard()
{
    // What the clipboard has begun refers to the loop: first nothing runs any more, then it goes.
    m_loop.stop();
    m_clipboard.reset();
}

} // namespace tessly
