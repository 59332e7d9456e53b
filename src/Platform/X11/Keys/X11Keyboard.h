#pragma once

#include "PasteChord.h"
#include "X11EventLoop.h"
#include "X11Window.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

struct xkb_context;
struct xkb_keymap;

namespace tessly {

class X11WindowTracker;

/// Presses paste keys by the XTEST extension. Loop thread.
///
/// One paste after the other, each so: wait until the user holds no key and no grab keeps the
/// keyboard away, both bounded; release by XTEST what is still held (it is never pressed again:
/// nobody could tell whether the user still holds it); then, while the server serves no one else,
/// make sure that the target has the keyboard and that the content is what was
/// written for it, and press.
class X11Keyboard
{
public:
    using Milliseconds = std::chrono::milliseconds;
    /// How a paste ended. No keys were pressed unless it was `posted`.
    enum class Result {
        posted,
        targetNotInFront,
        /// Something else is to be pasted by now.
        contentReplaced,
        /// No layout of the keyboard has the chord's letter.
        noLetter,
        failed,
    };
    /// Told exactly once how it ended, on the loop thread or where the last holder goes: a paste
    /// that comes to no end has failed.
    class Completion
    {
    public:
        explicit Completion(std::function<void(Result)> told)
            : m_told(std::move(told))
        {
        }
        ~Completion() { tell(Result::failed); }
        Completion(const Completion&) = delete;
        Completion& operator=(const Completion&) = delete;

        void tell(Result result)
        {
            if (const auto told = std::exchange(m_told, nullptr)) {
                told(result);
            }
        }

    private:
        std::function<void(Result)> m_told;
    };

    struct Paste
    {
        PasteChord chord = PasteChord::controlV;
        std::shared_ptr<const X11Window> target;
        std::shared_ptr<Completion> completion;
        /// The window that has to own the selections which the chord pastes when the keys are
        /// pressed.
        xcb_window_t owner = XCB_WINDOW_NONE;
        /// Whether what that window offers is still what is to be pasted. Asked on the loop thread.
        std::function<bool()> isThere;
        /// How long to wait for the user to let go.
        Milliseconds releaseWait{1000};
    };

    X11Keyboard(X11EventLoop& loop, X11WindowTracker& windows);
    ~X11Keyboard();
    X11Keyboard(const X11Keyboard&) = delete;
    X11Keyboard& operator=(const X11Keyboard&) = delete;

    void start();
    void post(Paste paste);
    /// The server went away: what is under way has failed.
    void lost();

private:
    enum class Phase { waitingForRelease, waitingForGrabsEnd };
    struct KeymapDeleter
    {
        void operator()(xkb_keymap* keymap) const noexcept;
    };
    struct ContextDeleter
    {
        void operator()(xkb_context* context) const noexcept;
    };
    using Keymap = std::unique_ptr<xkb_keymap, KeymapDeleter>;
    class State;

    void begin();
    void step();
    void finish(Result result);
    /// None if the keyboard has been grabbed meanwhile.
    [[nodiscard]] std::optional<Result> press();
    [[nodiscard]] bool isContentThere(const Paste& paste) const;
    [[nodiscard]] xcb_window_t selectionOwner(xcb_atom_t selection) const;
    /// The layout in effect; none if the server is gone.
    [[nodiscard]] std::optional<std::uint8_t> group() const;
    [[nodiscard]] std::vector<xcb_keycode_t> heldKeys() const;
    void lift(const std::vector<xcb_keycode_t>& keys);
    void fake(std::uint8_t type, xcb_keycode_t key);
    [[nodiscard]] Keymap keymap() const;
    [[nodiscard]] int testDevice() const;

    X11EventLoop& m_loop;
    X11WindowTracker& m_windows;
    xcb_atom_t m_clipboard = XCB_ATOM_NONE;
    bool m_isUsable = false;
    std::deque<Paste> m_pastes;
    Phase m_phase = Phase::waitingForRelease;
    std::chrono::steady_clock::time_point m_deadline;
};

} // namespace tessly
