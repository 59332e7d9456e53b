#pragma once

#include "DesktopEntries.h"
#include "FrontHistory.h"
#include "TrackedWindow.h"
#include "WaylandEventLoop.h"
#include "WaylandToplevelManager.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tessly {

class WaylandSeat;

/// Follows which window is in front: the one that the compositor calls activated. All news come as
/// events.
class WaylandToplevels
{
public:
    /// What has been in front keeps its record for as long as it is open.
    using Window = std::shared_ptr<const TrackedWindow>;
    using History = FrontHistory<TrackedWindow>;

    struct Events
    {
        /// Another window has come to the front, or none is any more.
        std::function<void()> frontChanged;
        /// The compositor does not tell of windows any more.
        std::function<void()> ended;
    };

    /// Loop thread, or before the loop is started. The windows are told of once it is. What was in
    /// front is noted in `history`. The events come on the loop thread. References live longer.
    WaylandToplevels(
        WaylandEventLoop& loop, const WaylandRegistry& registry, const WaylandSeat& seat,
        DesktopEntries entries, std::shared_ptr<History> history, Events events);
    ~WaylandToplevels();
    WaylandToplevels(const WaylandToplevels&) = delete;
    WaylandToplevels& operator=(const WaylandToplevels&) = delete;

    /// Whether the compositor tells of windows. Any thread.
    [[nodiscard]] bool isTold() const { return m_isTold; }
    /// None when nothing is in front. Stays as it was when nothing is told any more. Any thread; a
    /// read of memory.
    [[nodiscard]] Window front() const;
    /// Asks that this window come to the front. Any thread.
    void requestActivation(Window window);

    /// The compositor went away: no window is known any more. Loop thread.
    void lost();

private:
    struct Known
    {
        std::shared_ptr<TrackedWindow> window = {};
        /// By which the window's owner was found out.
        QByteArray appID = {};
    };

    void changed(WaylandToplevelHandle& handle);
    void closed(WaylandToplevelHandle& handle);
    void finished();
    void follow(Known& known, const QByteArray& appID);
    [[nodiscard]] TrackedWindow::Owner ownerOf(const QByteArray& appID);
    void publish();

    WaylandEventLoop& m_loop;
    const WaylandSeat& m_seat;
    DesktopEntries m_entries;
    const std::shared_ptr<History> m_history;
    const Events m_events;
    std::atomic<bool> m_isTold = false;
    /// Those that are in front or have been.
    std::map<WaylandToplevelHandle*, Known> m_known;
    /// Those that are activated, the latest last. One is, but for moments in between.
    std::vector<WaylandToplevelHandle*> m_activated;
    std::unique_ptr<WaylandToplevelManager> m_manager;

    mutable std::mutex m_mutex;
    Window m_front;
};

} // namespace tessly
