#pragma once

#include "DesktopEntries.h"
#include "KeySender.h"
#include "TrackedWindow.h"
#include "WaylandEventLoop.h"
#include "WaylandKeyboard.h"
#include "WaylandRegistry.h"
#include "WaylandSeat.h"

#include <QFuture>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tessly {

class WaylandToplevels;

/// The connection to the compositor over which windows and keys go, and its thread. It can be made
/// wherever there is a compositor; what that lets a program do is asked afterwards. If the
/// compositor ends the connection, nothing is in front from then on, and no keys can be pressed.
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
        /// For each of the compositor's answers when the connection is made.
        std::chrono::milliseconds deadline{5000};
        /// For the compositor to get to the keys of a paste: what it gets to later is not expected
        /// any more.
        std::chrono::milliseconds patience{3000};
    };

    /// Connects, and waits for the compositor's answers. Throws WaylandError if it cannot be
    /// reached.
    WaylandDesktop();
    explicit WaylandDesktop(Options options);
    ~WaylandDesktop();
    WaylandDesktop(const WaylandDesktop&) = delete;
    WaylandDesktop& operator=(const WaylandDesktop&) = delete;

    /// Whether the compositor tells of other programs' windows.
    [[nodiscard]] bool hasToplevels() const;
    /// Whether keys can be pressed in this way, as long as the compositor is there.
    [[nodiscard]] bool canPress(WaylandKeyboard::Way way) const;
    [[nodiscard]] bool hasVirtualKeyboard() const;
    [[nodiscard]] bool hasFakeInput() const;

    /// The keys of a chord on the user's keyboard for those who can move keys and nothing else;
    /// none if there are no keys that mean the same whatever layout is in effect. An American
    /// keyboard's where none is known. A read of memory.
    [[nodiscard]] std::optional<KeyStrokes> strokes(PasteChord chord) const;
    /// The key of the user's keyboard that bears a Latin "v", of the first layout that has it, as
    /// in linux/input-event-codes.h; the usual one where none does, or no keyboard is known. Any
    /// thread; a read of memory.
    [[nodiscard]] quint32 letterVKey() const;

    /// Presses and releases the keys of a chord, if the compositor says in time that this window is
    /// in front (null: that no window is, as far as it tells of any).
    [[nodiscard]] QFuture<KeySender::Sending>
    press(WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target);

    [[nodiscard]] const std::shared_ptr<WaylandToplevels>& toplevels() const { return m_toplevels; }

private:
    void lost();

    const std::chrono::milliseconds m_patience;
    WaylandEventLoop m_loop;
    WaylandRegistry m_registry;
    std::unique_ptr<WaylandKeyboard> m_keyboard;
    std::unique_ptr<WaylandSeat> m_seat;
    std::shared_ptr<WaylandToplevels> m_toplevels;
    /// The compositor is there.
    std::atomic<bool> m_isConnected = true;
};

} // namespace tessly
