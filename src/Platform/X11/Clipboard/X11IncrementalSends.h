#pragma once

#include "X11EventLoop.h"

#include <QByteArray>

#include <chrono>
#include <map>
#include <utility>

namespace tessly {

/// The incremental transfers to readers of what the program owns: any number at a time, each kept
/// going by its reader, and forgotten when that vanishes or falls silent. Loop thread only.
class X11IncrementalSends
{
public:
    /// `stallDeadline` is how long a reader may take over one chunk.
    X11IncrementalSends(X11EventLoop& loop, std::chrono::milliseconds stallDeadline);

    /// Announces a transfer in the reader's property; false if there are too many already. The
    /// bytes are shared until the transfer ends.
    [[nodiscard]] bool
    begin(xcb_window_t reader, xcb_atom_t property, xcb_atom_t type, const QByteArray& bytes);

    void handle(const xcb_property_notify_event_t& event);
    void handle(const xcb_destroy_notify_event_t& event);

    /// The most that is sent in one piece, in bytes.
    [[nodiscard]] qsizetype chunkSize() const { return m_chunkSize; }

private:
    using Key = std::pair<xcb_window_t, xcb_atom_t>;
    struct Send
    {
        xcb_atom_t type;
        QByteArray bytes;
        qsizetype sent = 0;
        X11EventLoop::TimerID timer;
    };
    using Sends = std::map<Key, Send>;

    void sendChunk(Sends::iterator send);
    void startDeadline(Sends::iterator send);
    void end(Sends::iterator send);

    X11EventLoop& m_loop;
    const std::chrono::milliseconds m_stallDeadline;
    const qsizetype m_chunkSize;
    const xcb_atom_t m_incr;
    Sends m_sends;
};

} // namespace tessly
