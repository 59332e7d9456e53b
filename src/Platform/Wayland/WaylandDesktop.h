#pragma once

#include "DesktopEntries.h"
#include "KeySender.h"
#include "KeyStroke.h"
#include "MainThreadCall.h"
#include "TrackedWindow.h"
#include "WaylandEventLoop.h"
#include "WaylandGround.h"
#include "WaylandKeyboard.h"
#include "WaylandToplevels.h"

#include <QFuture>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class QObject;

namespace tessly {

class WaylandDesktopConnection;

/// The connection to the compositor over which windows and keys go, and its thread. It can be made
/// wherever there is a compositor; what that lets a program do is asked afterwards.
///
/// Compositors cut a connection that does not keep up with what it is told. It is made again then,
/// without holding the main thread, for as long as it takes. Until it is back, the window that was
/// in front last counts as the one that is, so that what is copied is not taken for nobody's; but
/// it counts as gone, so that nothing is pasted into it.
///
/// Lives on the main thread, longer than the objects that are made upon it and shorter than the
/// QCoreApplication.
class WaylandDesktop
{
public:
    struct Options
    {
        /// As $WAYLAND_DISPLAY names it, or a path; empty: $WAYLAND_DISPLAY itself.
        std::string display = {};
        DesktopEntries entries = {};
        /// For each of the compositor's answers when the connection is made at first.
        std::chrono::milliseconds deadline{5000};
        /// For the compositor to get to the keys of a paste, or to tell what is in front: what it
        /// gets to later is not expected any more.
        std::chrono::milliseconds timeout{3000};
        /// Before the connection is made again; doubled each time it fails or does not last, up to
        /// a bound.
        std::chrono::milliseconds firstDelay{10};
        std::chrono::milliseconds longestDelay{60000};
    };

    /// Connects, and waits for the compositor's answers. Throws WaylandError if it cannot be
    /// reached.
    WaylandDesktop();
    explicit WaylandDesktop(const Options& options);
    ~WaylandDesktop();
    WaylandDesktop(const WaylandDesktop&) = delete;
    WaylandDesktop& operator=(const WaylandDesktop&) = delete;

    /// Whether the compositor tells of other programs' windows now.
    [[nodiscard]] bool hasToplevels() const;
    /// Whether keys can be pressed in this way now.
    [[nodiscard]] bool canPress(WaylandKeyboard::Way way) const;
    [[nodiscard]] bool hasVirtualKeyboard() const;
    [[nodiscard]] bool hasFakeInput() const;

    /// The keys of a chord on the user's keyboard for those who can move keys and nothing else;
    /// none if there are no keys that mean the same whatever layout is in effect. An American
    /// keyboard's where none is known. A read of memory.
    [[nodiscard]] std::optional<KeyStrokes> strokes(PasteChord chord) const;
    /// XKB's name ("exclam") of what a key of the upper row types with Shift in the first layout of
    /// the user's keyboard; empty for other keys. A read of memory.
    [[nodiscard]] QByteArray symbolWithShift(std::uint32_t key) const;

    /// Presses and releases the keys of a chord, if the compositor says in time that this window is
    /// in front (null: that no window is, as far as it tells of any), and if `isThere` says then
    /// that what is to be pasted still is.
    [[nodiscard]] QFuture<KeySender::Sending> press(
        WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target,
        KeySender::IsThere isThere);

    /// True once no modifier is held down any more, as far as the compositor tells of that; false
    /// if it does not come to that in time.
    [[nodiscard]] QFuture<bool> modifiersUp();

    /// Lays a ground for the panel to stand on (see WaylandGround). Finished once it is there, or
    /// cannot be. `pressed` is called, on any thread, at each press of a button on it.
    [[nodiscard]] QFuture<std::optional<WaylandGround::Pointer>>
    layGround(std::function<void()> pressed);
    void liftGround();

    /// Those of the connection that there is now.
    [[nodiscard]] std::shared_ptr<WaylandToplevels> toplevels() const;
    /// What was in front lately, on any connection.
    [[nodiscard]] std::shared_ptr<const WaylandToplevels::History> history() const
    {
        return m_history;
    }
    /// Finished once it is known what the user and other programs did by now, as far as the
    /// compositor tells; also when it does not in time, or the connection ends.
    [[nodiscard]] QFuture<bool> catchUp();
    /// `changed` is called on the main thread each time that another window comes to the front, or
    /// none is any more. Replaces the one given before; empty: nobody is called.
    void setFrontChanged(std::function<void()> changed);

private:
    using Connection = std::shared_ptr<WaylandDesktopConnection>;

    /// Connects. Any thread. Throws WaylandError.
    [[nodiscard]] Connection connect() const;
    void connectLater();
    void connected(Connection next);
    void ready(const WaylandDesktopConnection* connection);
    void ended(const WaylandDesktopConnection* connection);
    /// Any thread. What was done before is seen by the job.
    void postToMainThread(std::function<void()> job);
    void runJobs();

    const Options m_options;
    /// Lives on the main thread; what is posted to it is dropped when it goes.
    std::unique_ptr<QObject> m_mainThread;
    std::mutex m_mutex;
    /// For the main thread; guarded by the mutex.
    std::vector<std::function<void()>> m_jobs;
    const std::shared_ptr<WaylandToplevels::History> m_history =
        std::make_shared<WaylandToplevels::History>();
    MainThreadCall m_frontChanged;
    Connection m_connection;
    /// Whether the first one told of windows.
    bool m_hasToplevels = false;
    /// When it was made.
    std::chrono::steady_clock::time_point m_since;
    /// The last one before it was made again; zero if it has not been.
    std::chrono::milliseconds m_delay{};
    /// The one that takes its place once it is ready.
    Connection m_next;
};

} // namespace tessly
