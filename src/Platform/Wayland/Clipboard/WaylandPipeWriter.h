#pragma once

#include "WaylandEventLoop.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <map>

namespace tessly {

/// Writes what this program offers into the pipes of those who want it: any number at a time, each
/// as fast as its reader takes it, and dropped when that vanishes or falls silent. Loop thread
/// only.
class WaylandPipeWriter
{
public:
    /// `stallDeadline` is how long a reader may take over one chunk.
    WaylandPipeWriter(WaylandEventLoop& loop, std::chrono::milliseconds stallDeadline);
    /// Closes every pipe.
    ~WaylandPipeWriter();
    WaylandPipeWriter(const WaylandPipeWriter&) = delete;
    WaylandPipeWriter& operator=(const WaylandPipeWriter&) = delete;

    /// Begins to write into a pipe, a socket or a terminal; any other file is closed as it is,
    /// since writing there could wait for others. The file is closed here in any case. The bytes
    /// are shared until the end.
    void begin(int file, const QByteArray& bytes);

private:
    using WriteID = std::uint64_t;
    struct Write
    {
        int file;
        QByteArray bytes;
        qsizetype written = 0;
        WaylandEventLoop::WatchID watch = 0;
        WaylandEventLoop::TimerID timer = 0;
    };

    void writeChunk(WriteID id);
    void startTimer(WriteID id, Write& write);
    void close(WriteID id);

    WaylandEventLoop& m_loop;
    const std::chrono::milliseconds m_stallDeadline;
    std::map<WriteID, Write> m_writes;
    WriteID m_next = 1;
};

} // namespace tessly
