#pragma once

#include "WaylandRegistry.h"

#include <QByteArray>

#include <functional>
#include <memory>

struct wl_seat;

namespace tessly {

// What a compositor tells of other programs' windows to those that show or switch them. Two
// protocols do it; this is what is used of both. Loop thread, or before the loop is started.

/// A window as the compositor tells of it. Its title is never looked at: titles show content.
class WaylandToplevelHandle
{
public:
    struct State
    {
        /// Empty until the window says so.
        QByteArray appID = {};
        /// Whether it is the one that has the keyboard, or would have it but for a menu or panel.
        bool isActivated = false;
    };

    WaylandToplevelHandle() = default;
    WaylandToplevelHandle(const WaylandToplevelHandle&) = delete;
    WaylandToplevelHandle& operator=(const WaylandToplevelHandle&) = delete;
    virtual ~WaylandToplevelHandle() = default;

    [[nodiscard]] const State& state() const { return m_state; }

    /// Asks that it come to the front. Without a seat (null), not all compositors can be asked.
    virtual void activate(wl_seat* seat) = 0;

protected:
    void setState(const State& state) { m_state = state; }

private:
    State m_state;
};

/// All windows there are.
class WaylandToplevelManager
{
public:
    struct Events
    {
        /// A window is there, or has changed. Also for those that there are at first.
        std::function<void(WaylandToplevelHandle& window)> changed;
        /// A window has closed; its handle goes after this. It may not have been told of before.
        std::function<void(WaylandToplevelHandle& window)> closed;
        /// The compositor will tell of no further windows.
        std::function<void()> finished;
    };

    /// By zwlr_foreign_toplevel_manager_v1 where there is that, else by
    /// org_kde_plasma_window_management; null if there is neither.
    [[nodiscard]] static std::unique_ptr<WaylandToplevelManager>
    find(const WaylandRegistry& registry, Events events);

    WaylandToplevelManager() = default;
    WaylandToplevelManager(const WaylandToplevelManager&) = delete;
    WaylandToplevelManager& operator=(const WaylandToplevelManager&) = delete;
    virtual ~WaylandToplevelManager() = default;
};

} // namespace tessly
