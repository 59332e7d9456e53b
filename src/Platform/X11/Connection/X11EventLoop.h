#pragma once

#include "EventLoop.h"
#include "XcbReply.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessly {

/// The X server cannot be reached, or lacks what is needed.
class X11Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A connection to the X server and the thread on which it is used. Round trips to the server are
/// made here and nowhere else, so that a slow server never holds the main thread. What must keep
/// its deadlines even so (another client may grab the server) uses `awaitReply` in place of xcb's
/// waiting functions.
///
/// Life: construct; `start` with the callbacks; everything marked "loop thread" is called from the
/// callbacks and from posted jobs only; destroy on the thread that constructed. Jobs and timers run
/// on after the server went away, with a dead connection. What the server has sent is handled
/// before timers that are due, and time during which the thread did not run does not count for
/// them: neither is a reason to give up on another program.
class X11EventLoop final : public EventLoop
{
public:
    struct Handlers
    {
        /// Every event and every error that no one asked for by reply.
        std::function<void(const xcb_generic_event_t&)> event;
        /// The server went away. Called once; no event follows, and every reply is null.
        std::function<void()> lost;
    };

    /// Connects to `display` (as $DISPLAY names it; empty: $DISPLAY itself). Throws X11Error.
    explicit X11EventLoop(const std::string& display = {});
    ~X11EventLoop();

    /// Starts the thread. `name` shows in debuggers; the kernel keeps its first 15 bytes.
    void start(const std::string& name, Handlers handlers);

    /// Stops and joins the thread; jobs that were posted before have run. Safe to call twice. Cuts
    /// the connection if the thread is held up by a server that takes nothing any more.
    void stop();

    // Loop thread, or before `start`:
    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t& screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    /// The atom of a name; made if the server does not know it. Remembered; the first call waits
    /// for the server. XCB_ATOM_NONE if the connection is lost.
    [[nodiscard]] xcb_atom_t atom(const std::string& name);
    /// Learns many atoms in one round trip.
    void learnAtoms(const std::vector<std::string>& names);
    /// The name of an atom, empty if it has none. Remembered; the first call waits for the server.
    [[nodiscard]] std::string atomName(xcb_atom_t atom);

    // Loop thread:

    /// Calls back with the reply to a request that has one, or with null if the server sent an
    /// error or went away. Never from inside this call. All events that the server sent before the
    /// reply have been handled by then.
    template <typename Reply, typename Cookie>
    void awaitReply(Cookie cookie, std::function<void(const Reply* reply)> callback)
    {
        m_awaited.push_back({cookie.sequence, [callback = std::move(callback)](const void* reply) {
                                 callback(static_cast<const Reply*>(reply));
                             }});
    }

    /// As `atomName` for many, without waiting: calls back with the names in the order of the
    /// atoms, at once if all are known.
    void awaitAtomNames(
        const std::vector<xcb_atom_t>& atoms,
        std::function<void(std::vector<std::string>)> callback);

    /// Handles now what the server sent before the reply that was waited for last. Only while the
    /// server is grabbed: other clients may go on to make events otherwise.
    void handleArrived();

private:
    struct AwaitedReply
    {
        unsigned int sequence;
        std::function<void(const void* reply)> callback;
    };

    void loop();
    void sleep();
    [[nodiscard]] bool dispatch();
    [[nodiscard]] bool dispatchReply();
    void noticeLoss();
    void remember(xcb_atom_t atom, const std::string& name);

    xcb_connection_t* m_connection = nullptr;
    const xcb_screen_t* m_screen = nullptr;
    Handlers m_handlers;
    std::map<std::string, xcb_atom_t> m_atoms;
    std::map<xcb_atom_t, std::string> m_atomNames;
    std::deque<AwaitedReply> m_awaited;
    bool m_isLost = false;
};

} // namespace tessly
