#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tessly {

/// The X server cannot be reached, or lacks what is needed.
class X11Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A connection to the X server and the thread on which it is used. Round trips to the server are
/// made here and nowhere else, so that a slow server never holds the main thread.
///
/// Life: construct; `start` with the callbacks; everything marked "loop thread" is called from the
/// callbacks and from posted jobs only; destroy on the thread that constructed.
class X11EventLoop
{
public:
    struct Handlers
    {
        /// Every event and every error that no one asked for by reply.
        std::function<void(const xcb_generic_event_t&)> event;
        /// The server went away. Called once; nothing follows.
        std::function<void()> lost;
    };
    using Milliseconds = std::chrono::milliseconds;
    using TimerID = std::uint64_t;

    /// Connects to `display` (as $DISPLAY names it; empty: $DISPLAY itself). Throws X11Error.
    explicit X11EventLoop(const std::string& display = {});
    ~X11EventLoop();
    X11EventLoop(const X11EventLoop&) = delete;
    X11EventLoop& operator=(const X11EventLoop&) = delete;

    /// Starts the thread. `name` shows in debuggers; the kernel keeps its first 15 bytes.
    void start(const std::string& name, Handlers handlers);

    /// Stops and joins the thread; jobs that were posted before have run. Safe to call twice.
    void stop();

    /// Runs a job on the loop thread. Any thread, also before `start`.
    void post(std::function<void()> job);

    // Loop thread, or before `start`:
    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t& screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    /// The atom of a name; made if the server does not know it. Remembered. XCB_ATOM_NONE if the
    /// connection is lost.
    [[nodiscard]] xcb_atom_t atom(const std::string& name);
    /// The name of an atom, empty if it has none. Remembered.
    [[nodiscard]] std::string atomName(xcb_atom_t atom);

    // Loop thread:
    TimerID callAfter(Milliseconds delay, std::function<void()> callback);
    void cancel(TimerID timer);

private:
    struct Timer
    {
        std::chrono::steady_clock::time_point due;
        std::function<void()> callback;
    };

    void loop();
    void runPostedJobs();
    void runDueTimers();
    [[nodiscard]] int pollTimeout() const;
    bool dispatchEvents();
    void wake() const;

    xcb_connection_t* m_connection = nullptr;
    const xcb_screen_t* m_screen = nullptr;
    int m_wakeFD = -1;
    Handlers m_handlers;
    std::map<std::string, xcb_atom_t> m_atoms;
    std::map<xcb_atom_t, std::string> m_atomNames;
    std::map<TimerID, Timer> m_timers;
    TimerID m_nextTimer = 1;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_posted;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};

} // namespace tessly
