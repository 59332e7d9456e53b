#pragma once

#include "DesktopEntries.h"
#include "FrontHistory.h"
#include "X11EventLoop.h"
#include "X11Window.h"

#include <QFuture>
#include <QRect>

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tessly {

/// Follows which window is in front.
///
/// With a window manager that says so, that is the window it names in _NET_ACTIVE_WINDOW, if the
/// window exists and is not unmapped. Without one it is the application's window that has the input
/// focus; while the focus is with the root window or follows the pointer, nothing is in front.
///
/// All news come as events. A window that was in front stays watched for its destruction as long as
/// anyone holds its `X11Window`.
class X11WindowTracker
{
public:
    struct Front
    {
        /// None when nothing is in front.
        std::shared_ptr<const X11Window> window;
        /// Whether keys go to it or to a window inside it (grabs apart).
        bool hasFocus = false;
    };
    using History = FrontHistory<X11Window>;

    X11WindowTracker(X11EventLoop& loop, DesktopEntries entries);

    /// Any thread. A read of memory.
    [[nodiscard]] Front front() const;
    /// What was in front before that. Any thread; outlives this.
    [[nodiscard]] const std::shared_ptr<History>& history() const { return m_history; }
    /// `changed` is called each time that another window comes to the front, or none is any more:
    /// on the loop thread, and under a lock, so that it must only pass the news on. Replaces the
    /// one given before; empty: nobody is called. Any thread.
    void setFrontChanged(std::function<void()> changed);
    /// Finished once all that the server sent by now is known, and the windows that were in front
    /// at that moment or later have been looked at anew. Also when the server goes away, or the
    /// loop ends. Any thread.
    [[nodiscard]] QFuture<bool> catchUp(History::TimePoint since);
    /// Where the window in front is, in the display's own pixels; none if nothing is in front. Any
    /// thread.
    [[nodiscard]] QFuture<std::optional<QRect>> frontRectangle();
    /// Asks that this window come to the front, also when it is minimised or on another workspace.
    /// Any thread.
    void requestActivation(std::shared_ptr<const X11Window> window);

    // Loop thread:
    void start();
    void handle(const xcb_generic_event_t& event);
    /// The server went away and all windows with it.
    void lost();
    /// Asks the server itself whether keys would go to this window now (grabs apart).
    [[nodiscard]] bool isInFrontNow(const X11Window& window);
    /// Whether the window in front has lost the keyboard to a grab: another program's menu or lock,
    /// or a hot key that is held down.
    [[nodiscard]] bool isKeyboardGrabbed() const { return m_isKeyboardGrabbed; }

private:
    void handleProperty(const xcb_property_notify_event_t& event);
    void handleGone(xcb_window_t window);
    void handleDestroyed(xcb_window_t window);
    void handleMapping(xcb_window_t window);
    void handleFocus(const xcb_focus_in_event_t& event, bool isIn);

    void findWindowManager();
    void refresh();
    void publish(std::shared_ptr<X11Window> window, bool hasFocus);
    /// Asks again whose windows these are: some programs tell it only after they are shown.
    void identifyAgain(const History::Windows& windows);
    void identifyAgain(X11Window& window);
    [[nodiscard]] xcb_window_t candidate();
    [[nodiscard]] std::shared_ptr<X11Window> watched(xcb_window_t window);
    void watch(xcb_window_t window, bool isCandidate);
    /// Null if the window is gone.
    [[nodiscard]] XcbOwned<xcb_get_window_attributes_reply_t> attributes(xcb_window_t window) const;
    [[nodiscard]] xcb_window_t focus() const;
    /// The window and those it is in, outermost last, without the root.
    [[nodiscard]] std::vector<xcb_window_t> lineage(xcb_window_t window) const;
    [[nodiscard]] bool hasFocus(xcb_window_t window) const;
    [[nodiscard]] xcb_window_t applicationWindow(xcb_window_t inner);
    void activate(const X11Window& window, xcb_timestamp_t time);
    void askManager(
        xcb_window_t window, const char* request, std::initializer_list<std::uint32_t> arguments);

    X11EventLoop& m_loop;
    DesktopEntries m_entries;
    /// Owns the timestamps: a change of its property makes the server tell the time.
    xcb_window_t m_clockWindow = XCB_WINDOW_NONE;
    /// The window by which a manager that names the active window shows that it runs.
    xcb_window_t m_manager = XCB_WINDOW_NONE;
    /// What the manager names, or has the focus; perhaps unmapped or gone.
    std::shared_ptr<X11Window> m_candidate;
    std::map<xcb_window_t, std::weak_ptr<X11Window>> m_watched;
    std::vector<std::shared_ptr<const X11Window>> m_toActivate;
    bool m_isKeyboardGrabbed = false;

    mutable std::mutex m_mutex;
    Front m_front;
    std::function<void()> m_frontChanged;
    const std::shared_ptr<History> m_history = std::make_shared<History>();
};

} // namespace tessly
