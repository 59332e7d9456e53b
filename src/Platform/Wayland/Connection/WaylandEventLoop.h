#pragma once

#include "EventLoop.h"

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

struct wl_callback;
struct wl_display;

namespace tessly {

/// The compositor cannot be reached, or lacks what is needed.
class WaylandError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A connection to the compositor and the thread on which it is used. Nothing here waits for the
/// compositor, or for any other program, once the loop has started: everything is told by callback.
///
/// Life: construct; ask for what is needed and `roundTrip`; `start`; everything marked "loop
/// thread" is called from callbacks and from posted jobs only; destroy on the thread that
/// constructed. Jobs, timers and files are served on after the compositor went away. Within one
/// turn of the loop, what the compositor has sent is handled before files and jobs are, so that a
/// job sees the news from before it was posted. What has arrived, also in files, comes before
/// timers that are due, and time during which the thread did not run does not count for them:
/// neither is a reason to give up on another program.
class WaylandEventLoop final : public EventLoop
{
public:
    using WatchID = std::uint64_t;

    /// Connects to `display` (as $WAYLAND_DISPLAY names it, or a path; empty: $WAYLAND_DISPLAY
    /// itself). Throws WaylandError.
    explicit WaylandEventLoop(const std::string& display = {});
    ~WaylandEventLoop();

    /// Before `start`: waits until the compositor has answered everything that was asked of it.
    /// Throws WaylandError if it has not by the deadline.
    void roundTrip(Milliseconds deadline);

    /// Starts the thread. `name` shows in debuggers; the kernel keeps its first 15 bytes. `lost` is
    /// called once, when the compositor has gone away; no event follows.
    void start(const std::string& name, std::function<void()> lost);

    /// Stops and joins the thread; jobs that were posted before have run. Safe to call twice.
    void stop();

    /// Loop thread, or before `start`. What is sent goes out by itself.
    [[nodiscard]] wl_display* display() const { return m_display; }

    // Loop thread:

    /// Calls back with what poll(2) reports of an open file, each time it reports something, until
    /// `unwatch`. Unwatch before closing.
    WatchID watch(int file, short events, std::function<void(short events)> callback);
    void unwatch(WatchID watch);

    /// Calls back once the compositor has handled everything that was asked of it, and all that it
    /// sent before has been handled here. Dropped if it goes away first.
    void awaitRoundTrip(std::function<void()> callback);

    /// As `awaitRoundTrip`, but also what other programs had asked of the compositor by now has
    /// been handled, and its effects are known here.
    void awaitOtherPrograms(std::function<void()> callback);

private:
    struct Watch
    {
        int file;
        short events;
        std::function<void(short events)> callback;
    };

    static void roundTripDone(void* data, wl_callback* callback, std::uint32_t serial);

    void loop();
    /// Waits for what arrives, and handles it.
    LoopTimers::Arrived turn(int timeout);
    void dispatch(bool isReadable);
    void callWatches(const std::vector<std::pair<WatchID, short>>& reports);
    void runPostedJobs();
    /// Sends what is to be sent; whether there is more than the socket takes now.
    [[nodiscard]] bool flush();
    void noticeLoss();
    void dropRoundTrips();

    wl_display* m_display = nullptr;
    std::function<void()> m_lost;
    std::map<WatchID, Watch> m_watches;
    WatchID m_nextWatch = 1;
    std::map<wl_callback*, std::function<void()>> m_roundTrips;
    bool m_isLost = false;
    bool m_isLossTold = false;
};

} // namespace tessly
