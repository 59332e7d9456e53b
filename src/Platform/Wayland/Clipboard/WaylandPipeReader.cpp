#include "WaylandPipeReader.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

// Who writes on after this much that nobody wants writes without end. It is more than the largest
// item that can be kept.
constexpr qint64 maximumDrain = qint64{256} << 20;

// Pipes open at the same time. Those that nobody waits for any more give way to new ones.
constexpr std::size_t maximumReads = 64;

// A compositor that takes longer than this for a question that it can answer by itself has served
// the writer no better.
constexpr std::chrono::milliseconds promptAnswer(100);

} // namespace

WaylandPipeReader::WaylandPipeReader(WaylandEventLoop& loop)
    : m_loop(loop)
{
}

WaylandPipeReader::~WaylandPipeReader()
{
    while (!m_reads.empty()) {
        close(m_reads.begin()->first);
    }
}

WaylandPipeReader::ReadID WaylandPipeReader::begin(int file, const Bounds& bounds, Done done)
{
    const auto unwanted =
        std::ranges::find_if(m_reads, [](const auto& entry) { return !entry.second.done; });
    if (m_reads.size() >= maximumReads && unwanted != m_reads.end()) {
        close(unwanted->first);
    }
    const ReadID id = m_next++;
    Read& read = m_reads.emplace(id, Read{.file = file, .bounds = bounds, .done = std::move(done)})
                     .first->second;
    read.watch = m_loop.watch(file, POLLIN, [this, id](short) { readable(id); });
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(bounds.deadline - m_loop.now());
    startStallTimer(id, read);
    startOverallTimer(id, read, std::max(left, std::chrono::milliseconds(0)));
    return id;
}

void WaylandPipeReader::giveUp(ReadID read)
{
    answer(read, End::givenUp);
}

void WaylandPipeReader::readable(ReadID id)
{
    const auto found = m_reads.find(id);
    if (found == m_reads.end()) {
        return;
    }
    Read& read = found->second;
    const auto size = ::read(read.file, m_chunk.data(), m_chunk.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (size > 0) {
        take(id, read, size);
        return;
    }
    answer(id, size == 0 ? End::complete : End::timedOut);
    close(id);
}

void WaylandPipeReader::take(ReadID id, Read& read, qsizetype size)
{
    if (!read.done) {
        read.drained += size;
        if (read.drained > maximumDrain) {
            close(id);
        }
        return;
    }
    const qsizetype total = read.bytes.size() + size;
    if (total > read.bounds.byteLimit) {
        read.drained = total;
        answer(id, End::tooLarge);
        return;
    }
    if (total > read.bytes.capacity()) {
        try {
            // Grows by doubling, but to no more than may be held.
            read.bytes.reserve(std::min<qint64>(
                read.bounds.byteLimit, std::max(total, 2 * read.bytes.capacity())));
        } catch (const std::bad_alloc&) {
            read.drained = total;
            answer(id, End::noMemory);
            return;
        }
    }
    read.bytes.append(m_chunk.data(), size);
    m_loop.cancel(read.stallTimer);
    startStallTimer(id, read);
}

void WaylandPipeReader::answer(ReadID id, End end)
{
    const auto found = m_reads.find(id);
    if (found == m_reads.end() || !found->second.done) {
        return;
    }
    Read& read = found->second;
    Result result{.end = end};
    if (end == End::complete) {
        result.bytes = std::move(read.bytes);
        result.bytes.squeeze();
    }
    read.bytes = QByteArray();
    m_loop.cancel(read.stallTimer);
    m_loop.cancel(read.overallTimer);
    startOverallTimer(id, read, read.bounds.drain);
    const Done done = std::exchange(read.done, nullptr);
    done(std::move(result));
}

void WaylandPipeReader::close(ReadID id)
{
    if (const auto read = m_reads.extract(id)) {
        m_loop.unwatch(read.mapped().watch);
        m_loop.cancel(read.mapped().stallTimer);
        m_loop.cancel(read.mapped().overallTimer);
        ::close(read.mapped().file);
    }
}

void WaylandPipeReader::startStallTimer(ReadID id, Read& read)
{
    read.stallTimer = m_loop.callAfter(read.bounds.stall, [this, id] { stalled(id); });
}

void WaylandPipeReader::stalled(ReadID id)
{
    const auto timer = m_reads.at(id).stallTimer;
    // Should the compositor go away instead of answering, whoever asked gives up by himself.
    m_loop.awaitRoundTrip([this, id, timer, asked = m_loop.now()] {
        const auto found = m_reads.find(id);
        // It may have been answered, or its writer have shown itself, meanwhile.
        if (found == m_reads.end() || !found->second.done || found->second.stallTimer != timer) {
            return;
        }
        if (m_loop.now() - asked <= promptAnswer) {
            answer(id, End::timedOut);
        } else {
            startStallTimer(id, found->second);
        }
    });
}

void WaylandPipeReader::startOverallTimer(ReadID id, Read& read, std::chrono::milliseconds delay)
{
    read.overallTimer = m_loop.callAfter(delay, [this, id] {
        const auto found = m_reads.find(id);
        if (found != m_reads.end() && found->second.done) {
            answer(id, End::timedOut);
        } else {
            close(id);
        }
    });
}

} // namespace tessly
