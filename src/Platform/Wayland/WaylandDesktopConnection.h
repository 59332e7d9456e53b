#pragma once

#include "DesktopEntries.h"
#include "KeySender.h"
#include "PlasmaModifiers.h"
#include "TrackedWindow.h"
#include "WaylandEventLoop.h"
#include "WaylandGround.h"
#include "WaylandKeyboard.h"
#include "WaylandRegistry.h"
#include "WaylandSeat.h"
#include "WaylandToplevels.h"

#include <QFuture>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tessly {

/// One connection of WaylandDesktop, with its thread, from its making to its end.
class WaylandDesktopConnection
{
public:
    struct Options
    {
        std::string display = {};
        DesktopEntries entries = {};
        /// For each of the compositor's answers when it is waited for.
        std::chrono::milliseconds deadline{};
        /// For the compositor to get to the keys of a paste.
        std::chrono::milliseconds timeout{};
        /// What was in front lately, on this connection or one before it.
        std::shared_ptr<WaylandToplevels::History> history = {};
        /// Another window has come to the front, or none is any more. On the connection's thread.
        std::function<void()> frontChanged = {};
    };

    /// Connects; does not wait for the compositor. Throws WaylandError.
    explicit WaylandDesktopConnection(const Options& options);
    /// Waits for what runs on its thread.
    ~WaylandDesktopConnection();
    WaylandDesktopConnection(const WaylandDesktopConnection&) = delete;
    WaylandDesktopConnection& operator=(const WaylandDesktopConnection&) = delete;

    /// Waits until what the compositor has is known, and goes on by itself from then. Throws
    /// WaylandError. `ended` is called on its thread, once, when the compositor has ended the
    /// connection, or does not tell of windows any more.
    void start(std::function<void()> ended);
    /// The same without waiting: calls `ready` on its thread once that is known, and the window
    /// that is in front, too.
    void startLater(std::function<void()> ready, std::function<void()> ended);

    // The rest once it is started, or ready:
    [[nodiscard]] const std::shared_ptr<WaylandToplevels>& toplevels() const { return m_toplevels; }
    [[nodiscard]] const WaylandKeyboard& keyboard() const { return *m_keyboard; }
    [[nodiscard]] bool isConnected() const { return m_isConnected; }
    /// As WaylandDesktop's.
    [[nodiscard]] QFuture<KeySender::Sending> press(
        WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target,
        KeySender::IsThere isThere);

    /// As WaylandDesktop's.
    [[nodiscard]] QFuture<bool> modifiersUp();
    /// As WaylandDesktop's.
    [[nodiscard]] QFuture<bool> catchUp();

    /// As WaylandDesktop's; `pressed` is called on its thread.
    [[nodiscard]] QFuture<std::optional<WaylandGround::Pointer>>
    layGround(std::function<void()> pressed);
    void liftGround();

    /// Runs a job on its thread, which goes on after the end of the connection.
    void callAfter(std::chrono::milliseconds delay, std::function<void()> job);

private:
    [[nodiscard]] QFuture<bool>
    askInTime(std::function<void(const std::function<void()>& yes)> ask);
    void makeSeat();
    void makeToplevels();
    void lost();
    void tellEnd();

    const Options m_options;
    WaylandEventLoop m_loop;
    WaylandRegistry m_registry;
    WaylandGround m_ground{m_loop, m_registry};
    std::unique_ptr<WaylandKeyboard> m_keyboard;
    std::unique_ptr<WaylandSeat> m_seat;
    /// Null where the compositor does not tell.
    std::unique_ptr<PlasmaModifiers> m_modifiers;
    std::shared_ptr<WaylandToplevels> m_toplevels;
    std::atomic<bool> m_isConnected = true;
    std::function<void()> m_ended;
};

} // namespace tessly
