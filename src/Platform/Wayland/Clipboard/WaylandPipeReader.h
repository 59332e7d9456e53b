#pragma once

#include "WaylandEventLoop.h"

#include <QByteArray>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

namespace tessly {

/// Reads what other programs write into pipes: any number at a time, each answered once and within
/// its deadlines, whatever the writer does. Loop thread only.
///
/// Of each, `byteLimit` bytes are held and one chunk of 64 KiB at the most. What comes after the
/// answer is taken and thrown away for a while: to close the pipe at once would end programs that
/// do not expect that.
class WaylandPipeReader
{
public:
    enum class End {
        /// The writer has closed the pipe.
        complete,
        /// More bytes than `byteLimit`.
        tooLarge,
        /// More than there is memory for just now.
        noMemory,
        /// A deadline passed, or the pipe cannot be read.
        timedOut,
        /// Given up by the asker.
        givenUp,
    };
    /// `bytes` are empty unless `end` is `complete`.
    struct Result
    {
        End end;
        QByteArray bytes = {};
    };
    using Done = std::function<void(Result)>;

    struct Bounds
    {
        qint64 byteLimit;
        /// The longest wait for the writer's next sign of life. Does not pass while the compositor
        /// does nothing: it may not have passed the question on.
        std::chrono::milliseconds stall;
        /// When all of it must be over, whoever is to blame; in the loop's time.
        LoopTimers::Time deadline;
        /// How long the rest is taken of what nobody wants any more.
        std::chrono::milliseconds drain;
    };
    using ReadID = std::uint64_t;

    explicit WaylandPipeReader(WaylandEventLoop& loop);
    /// Closes every pipe; answers nothing any more.
    ~WaylandPipeReader();
    WaylandPipeReader(const WaylandPipeReader&) = delete;
    WaylandPipeReader& operator=(const WaylandPipeReader&) = delete;

    /// Begins to read a pipe, which is non-blocking and closed here. Never answers from inside this
    /// call.
    ReadID begin(int file, const Bounds& bounds, Done done);
    /// Answers now, if not yet answered.
    void giveUp(ReadID read);

private:
    struct Read
    {
        int file;
        Bounds bounds;
        /// None once it is answered.
        Done done;
        QByteArray bytes = {};
        qint64 drained = 0;
        WaylandEventLoop::WatchID watch = 0;
        WaylandEventLoop::TimerID stallTimer = 0;
        WaylandEventLoop::TimerID overallTimer = 0;
    };

    void readable(ReadID id);
    void take(ReadID id, Read& read, qsizetype size);
    void answer(ReadID id, End end);
    void close(ReadID id);
    void startStallTimer(ReadID id, Read& read);
    void stalled(ReadID id);
    void startOverallTimer(ReadID id, Read& read, std::chrono::milliseconds delay);

    WaylandEventLoop& m_loop;
    std::map<ReadID, Read> m_reads;
    ReadID m_next = 1;
    std::array<char, 65536> m_chunk = {};
};

} // namespace tessly
