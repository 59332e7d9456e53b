#include "X11Pasteboard.h"

#include "X11Clipboard.h"

#include <utility>

namespace tessly {

X11Pasteboard::X11Pasteboard()
    : X11Pasteboard(Options())
{
}

X11Pasteboard::X11Pasteboard(const Options& options)
    : LoopPasteboard(options.deadlines.takeover)
    , m_loop(options.display)
    , m_clipboard(std::make_unique<X11Clipboard>(m_loop, options.deadlines, state()))
{
    start(*m_clipboard, [this](std::function<void()> job) { m_loop.post(std::move(job)); });
    m_loop.start(
        "clipboard", {.event = [this](const auto& event) { m_clipboard->handle(event); },
                      .lost = [this] { lost(); }});
}

X11Pasteboard::~X11Pasteboard()
{
    // What the clipboard has begun refers to the loop: first nothing runs any more, then it goes.
    m_loop.stop();
    m_clipboard.reset();
}

xcb_window_t X11Pasteboard::ownerWindow() const
{
    return m_clipboard->window();
}

} // namespace tessly
