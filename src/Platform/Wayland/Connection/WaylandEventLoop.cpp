#include "WaylandEventLoop.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>
#include <poll.h>
#include <utility>
#include <wayland-client.h>

namespace tessly {

namespace {

// Readings of the socket before files and jobs get their turn, so that a compositor that floods
// starves none of them. One reading takes 4 KB.
constexpr int readingsPerTurn = 64;

} // namespace

WaylandEventLoop::WaylandEventLoop(const std::string& display)
    : m_display(wl_display_connect(display.empty() ? nullptr : display.c_str()))
{
    if (m_display == nullptr || !canWait()) {
        if (m_display != nullptr) {
            wl_display_disconnect(m_display);
        }
        throw WaylandError("Could not connect to the Wayland compositor.");
    }
}

WaylandEventLoop::~WaylandEventLoop()
{
    stop();
    dropRoundTrips();
    wl_display_disconnect(m_display);
}

void WaylandEventLoop::roundTrip(Milliseconds deadline)
{
    // The answer may come after this call has given up.
    const auto isDone = std::make_shared<bool>(false);
    awaitRoundTrip([isDone] { *isDone = true; });
    const auto end = now() + deadline;
    while (!*isDone && !m_isLost) {
        const auto left = std::chrono::ceil<Milliseconds>(end - now());
        if (left <= Milliseconds(0)) {
            throw WaylandError("The Wayland compositor does not answer.");
        }
        turn(static_cast<int>(std::min(left, LoopTimers::longestWait).count()));
    }
    if (!*isDone) {
        throw WaylandError("The Wayland compositor went away.");
    }
}

void WaylandEventLoop::start(const std::string& name, std::function<void()> lost)
{
    m_lost = std::move(lost);
    // It may have gone away already.
    post([this] { noticeLoss(); });
    startThread(name, [this] {
        // Readers of what is offered here go away when they like: an error of write(2), no signal.
        sigset_t brokenPipe;
        sigemptyset(&brokenPipe);
        sigaddset(&brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
        loop();
    });
}

void WaylandEventLoop::stop()
{
    stopThread();
}

WaylandEventLoop::WatchID
WaylandEventLoop::watch(int file, short events, std::function<void(short events)> callback)
{
    const WatchID id = m_nextWatch++;
    m_watches.emplace(id, Watch{file, events, std::move(callback)});
    return id;
}

void WaylandEventLoop::unwatch(WatchID watch)
{
    m_watches.erase(watch);
}

void WaylandEventLoop::awaitRoundTrip(std::function<void()> callback)
{
    static constexpr wl_callback_listener listener = {.done = &WaylandEventLoop::roundTripDone};
    if (wl_callback* const request = m_isLost ? nullptr : wl_display_sync(m_display)) {
        wl_callback_add_listener(request, &listener, this);
        m_roundTrips.emplace(request, std::move(callback));
    }
}

void WaylandEventLoop::awaitOtherPrograms(std::function<void()> callback)
{
    // A compositor takes the programs that ask at the same time in any order; but by the time it
    // answers, it has had the others' requests in its hands, too.
    awaitRoundTrip([this, callback = std::move(callback)] { awaitRoundTrip(callback); });
}

void WaylandEventLoop::roundTripDone(void* data, wl_callback* callback, std::uint32_t)
{
    auto& self = *static_cast<WaylandEventLoop*>(data);
    const auto request = self.m_roundTrips.extract(callback);
    wl_callback_destroy(callback);
    request.mapped()();
}

void WaylandEventLoop::dropRoundTrips()
{
    for (const auto& [callback, done] : std::exchange(m_roundTrips, {})) {
        wl_callback_destroy(callback);
    }
}

void WaylandEventLoop::loop()
{
    for (;;) {
        const bool isLast = isStopping();
        runPostedJobs();
        if (isLast) {
            [[maybe_unused]] const bool isMore = flush();
            return;
        }
        runTimers(turn(waitingTime()));
    }
}

LoopTimers::Arrived WaylandEventLoop::turn(int timeout)
{
    const bool isMoreToSend = flush();
    if (wl_display_get_error(m_display) != 0 && !m_isLossTold) {
        // Found while something was sent: there may be nothing more to wake up for.
        timeout = 0;
    }
    std::vector<pollfd> files = {
        {.fd = m_isLost ? -1 : wl_display_get_fd(m_display),
         .events = static_cast<short>(isMoreToSend ? POLLIN | POLLOUT : POLLIN),
         .revents = 0},
    };
    const std::size_t own = files.size();
    std::vector<std::pair<WatchID, short>> reports;
    for (const auto& [id, watch] : m_watches) {
        files.push_back({.fd = watch.file, .events = watch.events, .revents = 0});
        reports.emplace_back(id, short{0});
    }
    if (wait(files, timeout) < 0) {
        // Only a signal, which is none of this thread's business. What there is, is not known.
        return LoopTimers::Arrived::something;
    }
    for (std::size_t index = 0; index < reports.size(); ++index) {
        reports[index].second = files[own + index].revents;
    }
    const bool isReadable = (files[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
    dispatch(isReadable);
    callWatches(reports);
    const bool isReported =
        std::ranges::any_of(reports, [](const auto& report) { return report.second != 0; });
    return isReadable || isReported ? LoopTimers::Arrived::something : LoopTimers::Arrived::nothing;
}

void WaylandEventLoop::dispatch(bool isReadable)
{
    for (int reading = 0; isReadable && reading < readingsPerTurn; ++reading) {
        while (wl_display_prepare_read(m_display) != 0) {
            wl_display_dispatch_pending(m_display);
        }
        wl_display_read_events(m_display);
        wl_display_dispatch_pending(m_display);
        if (wl_display_get_error(m_display) != 0) {
            break;
        }
        pollfd file = {.fd = wl_display_get_fd(m_display), .events = POLLIN, .revents = 0};
        isReadable = poll(&file, 1, 0) > 0;
    }
    m_isLost = m_isLost || wl_display_get_error(m_display) != 0;
    noticeLoss();
}

void WaylandEventLoop::callWatches(const std::vector<std::pair<WatchID, short>>& reports)
{
    for (const auto& [id, events] : reports) {
        // One that was called before it may have ended it.
        const auto watch = m_watches.find(id);
        if (events != 0 && watch != m_watches.end()) {
            // The callback may end its own watch.
            const auto callback = watch->second.callback;
            callback(events);
        }
    }
}

void WaylandEventLoop::runPostedJobs()
{
    const std::vector<Job> jobs = takeJobs();
    if (!jobs.empty() && !m_isLost) {
        // What the compositor has said since it was last listened to is older than the last of
        // these jobs may be.
        pollfd file = {.fd = wl_display_get_fd(m_display), .events = POLLIN, .revents = 0};
        dispatch(poll(&file, 1, 0) > 0);
    }
    for (const auto& job : jobs) {
        job();
    }
}

bool WaylandEventLoop::flush()
{
    if (m_isLost || wl_display_flush(m_display) >= 0) {
        return false;
    }
    // A broken pipe is left to the reading, which finds what the compositor said before its end.
    return errno == EAGAIN;
}

void WaylandEventLoop::noticeLoss()
{
    if (m_isLost && !m_isLossTold && m_lost) {
        m_isLossTold = true;
        dropRoundTrips();
        m_lost();
    }
}

} // namespace tessly
