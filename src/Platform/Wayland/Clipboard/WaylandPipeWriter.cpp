#include "WaylandPipeWriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessly {

namespace {

// Readers that ask for more than this at the same time are not readers.
constexpr std::size_t maximumWrites = 256;

// What a pipe holds. Each reader is given this much before it is another's turn.
constexpr qsizetype chunkSize = 65536;

bool canBeNonBlocking(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || S_ISCHR(status.st_mode));
}

bool makeNonBlocking(int file)
{
    const int flags = fcntl(file, F_GETFL);
    return flags >= 0 && fcntl(file, F_SETFL, flags | O_NONBLOCK) == 0;
}

} // namespace

WaylandPipeWriter::WaylandPipeWriter(
    WaylandEventLoop& loop, std::chrono::milliseconds stallDeadline)
    : m_loop(loop)
    , m_stallDeadline(stallDeadline)
{
}

WaylandPipeWriter::~WaylandPipeWriter()
{
    while (!m_writes.empty()) {
        close(m_writes.begin()->first);
    }
}

void WaylandPipeWriter::begin(int file, const QByteArray& bytes)
{
    if (m_writes.size() >= maximumWrites || !canBeNonBlocking(file) || !makeNonBlocking(file)) {
        ::close(file);
        return;
    }
    const WriteID id = m_next++;
    Write& write = m_writes.emplace(id, Write{.file = file, .bytes = bytes}).first->second;
    write.watch = m_loop.watch(file, POLLOUT, [this, id](short) { writeChunk(id); });
    startTimer(id, write);
    writeChunk(id);
}

void WaylandPipeWriter::writeChunk(WriteID id)
{
    const auto found = m_writes.find(id);
    if (found == m_writes.end()) {
        return;
    }
    Write& write = found->second;
    const qsizetype left = write.bytes.size() - write.written;
    if (left > 0) {
        const auto size = ::write(
            write.file, write.bytes.constData() + write.written,
            static_cast<std::size_t>(std::min(left, chunkSize)));
        if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
            return;
        }
        if (size < 0) {
            // The reader is gone, which is its own business.
            close(id);
            return;
        }
        write.written += size;
        m_loop.cancel(write.timer);
        startTimer(id, write);
    }
    if (write.written == write.bytes.size()) {
        close(id);
    }
}

void WaylandPipeWriter::startTimer(WriteID id, Write& write)
{
    write.timer = m_loop.callAfter(m_stallDeadline, [this, id] { close(id); });
}

void WaylandPipeWriter::close(WriteID id)
{
    if (const auto write = m_writes.extract(id)) {
        m_loop.unwatch(write.mapped().watch);
        m_loop.cancel(write.mapped().timer);
        ::close(write.mapped().file);
    }
}

} // namespace tessly
