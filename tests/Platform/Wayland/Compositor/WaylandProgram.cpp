#include "WaylandProgram.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace tessly::test {

namespace {

constexpr auto timeout = std::chrono::seconds(20);

QByteArray readToTheEnd(int file)
{
    QByteArray bytes;
    std::array<char, 65536> chunk = {};
    for (;;) {
        pollfd poll = {.fd = file, .events = POLLIN, .revents = 0};
        const int ready = ::poll(&poll, 1, std::chrono::milliseconds(timeout).count());
        const auto size = ready > 0 ? read(file, chunk.data(), chunk.size()) : -1;
        if (size <= 0) {
            close(file);
            if (size < 0) {
                throw std::runtime_error("nothing more came to be pasted");
            }
            return bytes;
        }
        bytes.append(chunk.data(), size);
    }
}

} // namespace

WaylandProgram::WaylandProgram(const std::string& display)
    : m_loop(display)
    , m_registry(std::make_unique<WaylandRegistry>(m_loop))
{
    m_loop.roundTrip(timeout);
    m_control = WaylandDataControl::find(*m_registry);
    m_seat =
        m_registry->bind<wl_seat>(m_registry->find(wl_seat_interface.name), wl_seat_interface, 1);
    if (!m_control || m_seat == nullptr) {
        throw WaylandError("there is no data control");
    }
    m_writer = std::make_unique<WaylandPipeWriter>(m_loop, timeout);
    m_device = m_control->device(
        m_seat, {.selection = [this](auto selection) { m_selection = std::move(selection); },
                 .primarySelection = [this](auto primary) { m_primary = std::move(primary); },
                 .finished = [] {}});
    m_loop.roundTrip(timeout);
    m_loop.start("program", {});
}

WaylandProgram::~WaylandProgram()
{
    leave();
}

template <typename Job>
auto WaylandProgram::onLoop(Job job)
{
    std::packaged_task<decltype(job())()> task(std::move(job));
    m_loop.post([&task] { task(); });
    return task.get_future().get();
}

void WaylandProgram::settle()
{
    std::promise<void> done;
    m_loop.post([&] { m_loop.awaitRoundTrip([&] { done.set_value(); }); });
    if (done.get_future().wait_for(timeout) != std::future_status::ready) {
        // It refers to this call.
        std::terminate();
    }
}

void WaylandProgram::copy(const std::vector<Offered>& offered, Life life)
{
    onLoop([&] { offer(offered, life); });
    settle();
}

void WaylandProgram::replace(const std::vector<Offered>& offered)
{
    onLoop([&] {
        m_source.reset();
        offer(offered, Life::stays);
    });
    settle();
}

void WaylandProgram::offer(const std::vector<Offered>& offered, Life life)
{
    QByteArrayList types;
    for (const Offered& one : offered) {
        types.append(one.type);
    }
    auto next = m_control->source(
        types, {.send =
                    [this, offered, life](const QByteArray& type, int file) {
                        m_isGivenNonBlocking = (fcntl(file, F_GETFL) & O_NONBLOCK) != 0;
                        ++m_sends;
                        const auto one = std::ranges::find(offered, type, &Offered::type);
                        if (one == offered.end()) {
                            close(file);
                            return;
                        }
                        send(*one, file);
                        if (life == Life::leavesAfterOneRead) {
                            m_loop.post([this] { m_source.reset(); });
                        }
                    },
                .cancelled = [] {}});
    m_device->setSelection(next.get());
    m_source = std::move(next);
}

void WaylandProgram::send(const Offered& offered, int file)
{
    switch (offered.manner) {
    case Manner::serves:
        m_writer->begin(file, offered.bytes);
        return;
    case Manner::refuses:
        close(file);
        return;
    case Manner::hangs:
        m_held.push_back(file);
        return;
    case Manner::stalls:
        m_writer->begin(dup(file), offered.bytes);
        m_held.push_back(file);
        return;
    case Manner::dribbles:
        dribble(file, offered.bytes, 0);
        return;
    case Manner::neverEnds:
        fcntl(file, F_SETFL, O_NONBLOCK);
        writeWithoutEnd(file, offered.bytes);
        return;
    }
    Q_UNREACHABLE();
}

void WaylandProgram::dribble(int file, const QByteArray& bytes, qsizetype index)
{
    m_loop.callAfter(m_pause, [this, file, bytes, index] {
        if (write(file, bytes.constData() + index, 1) != 1) {
            m_isCutOff = true;
            close(file);
            return;
        }
        ++m_written;
        if (index + 1 == bytes.size()) {
            close(file);
        } else {
            dribble(file, bytes, index + 1);
        }
    });
}

void WaylandProgram::writeWithoutEnd(int file, const QByteArray& bytes)
{
    const auto watch = std::make_shared<WaylandEventLoop::WatchID>();
    *watch = m_loop.watch(file, POLLOUT, [this, file, bytes, watch](short) {
        const auto size = write(file, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (size > 0) {
            m_written += size;
        } else if (size < 0 && errno != EAGAIN) {
            m_isCutOff = true;
            m_loop.unwatch(*watch);
            close(file);
        }
    });
}

void WaylandProgram::takeBack()
{
    onLoop([this] { m_source.reset(); });
    settle();
}

void WaylandProgram::closePipes()
{
    onLoop([this] {
        for (const int file : std::exchange(m_held, {})) {
            close(file);
        }
    });
}

void WaylandProgram::leave()
{
    m_loop.stop();
    if (m_control) {
        m_writer.reset();
        m_source.reset();
        m_primarySource.reset();
        m_selection.reset();
        m_primary.reset();
        m_device.reset();
        wl_seat_destroy(m_seat);
        m_control.reset();
        // What was destroyed is to be known before the connection is.
        wl_display_flush(m_loop.display());
    }
    for (const int file : std::exchange(m_held, {})) {
        close(file);
    }
}

QByteArrayList WaylandProgram::types()
{
    settle();
    return onLoop([this] { return m_selection ? m_selection->types() : QByteArrayList(); });
}

std::optional<QByteArray> WaylandProgram::paste(const QByteArray& type)
{
    if (!types().contains(type)) {
        return std::nullopt;
    }
    std::array<int, 2> pipe = {};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    receive(type, pipe[1]);
    return readToTheEnd(pipe[0]);
}

std::optional<QByteArray> WaylandProgram::pastePrimary(const QByteArray& type)
{
    settle();
    std::array<int, 2> pipe = {};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const bool isAsked = onLoop([&] {
        const bool isOffered = m_primary && m_primary->types().contains(type);
        if (isOffered) {
            m_primary->receive(type, pipe[1]);
        }
        close(pipe[1]);
        return isOffered;
    });
    auto bytes = readToTheEnd(pipe[0]);
    return isAsked ? std::optional(std::move(bytes)) : std::nullopt;
}

void WaylandProgram::copyAsPrimary(const QByteArray& text)
{
    onLoop([&] {
        auto next = m_control->source(
            {"UTF8_STRING"},
            {.send = [this, text](const QByteArray&, int file) { m_writer->begin(file, text); },
             .cancelled = [] {}});
        m_device->setPrimarySelection(next.get());
        m_primarySource = std::move(next);
    });
    settle();
}

void WaylandProgram::receive(const QByteArray& type, int file)
{
    onLoop([&] {
        if (m_selection) {
            m_selection->receive(type, file);
        }
        close(file);
    });
}

} // namespace tessly::test
