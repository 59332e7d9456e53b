#pragma once

#include "KeySender.h"
#include "KeyStroke.h"
#include "PasteChord.h"
#include "WaylandEventLoop.h"
#include "WaylandKeymap.h"
#include "WaylandRegistry.h"

#include <QByteArray>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

struct org_kde_kwin_fake_input;
struct wl_seat;
struct zwp_virtual_keyboard_manager_v1;

namespace tessly {

class WaylandVirtualKeyboard;

/// What a compositor has to press keys with, on its first seat. Loop thread, or before the loop is
/// started, but for what says otherwise.
class WaylandKeyboard
{
public:
    enum class Way {
        /// zwp_virtual_keyboard_manager_v1: a keyboard of the program's own.
        virtualKeyboard,
        /// org_kde_kwin_fake_input: keys on the one keyboard that there is for all.
        fakeInput,
    };
    /// Called once, or dropped if the compositor goes away.
    using Done = std::function<void(KeySender::Sending sending)>;

    /// Once what the compositor has is known.
    WaylandKeyboard(WaylandEventLoop& loop, const WaylandRegistry& registry);
    ~WaylandKeyboard();
    WaylandKeyboard(const WaylandKeyboard&) = delete;
    WaylandKeyboard& operator=(const WaylandKeyboard&) = delete;

    /// Whether the compositor has had it at the start. Any thread.
    [[nodiscard]] bool has(Way way) const;
    /// As WaylandKeymap's, of the user's key map; an American one's where none is told. Any thread.
    [[nodiscard]] std::optional<KeyStrokes> strokes(PasteChord chord) const;
    /// As WaylandKeymap's, of the same key map. Any thread.
    [[nodiscard]] QByteArray symbolWithShift(std::uint32_t key) const;

    /// The seat there is now; null if there is none.
    void setSeat(wl_seat* seat);
    /// The key map of the seat's keyboards.
    void setKeymap(const QByteArray& text);
    /// Makes the virtual keyboard, once seat and key map are known as far as they are.
    void start();

    /// Presses and releases the keys of a chord. Answers once the compositor has all of them, or
    /// that it gets none.
    void press(Way way, PasteChord chord, Done done);

private:
    struct Deleter
    {
        void operator()(org_kde_kwin_fake_input* object) const;
        void operator()(zwp_virtual_keyboard_manager_v1* object) const;
    };

    struct Told
    {
        QByteArray text;
        WaylandKeymap keymap;
    };

    void makeVirtualKeyboard();
    [[nodiscard]] KeySender::Sending pressVirtually(PasteChord chord);
    [[nodiscard]] KeySender::Sending fake(PasteChord chord);
    void fakeKey(std::uint32_t key, bool isPress);
    /// The user's key map if all chords can be made on it, else an American one.
    [[nodiscard]] const WaylandKeymap* usableKeymap();
    [[nodiscard]] const WaylandKeymap* american();
    void publishKeymap();

    WaylandEventLoop& m_loop;
    std::unique_ptr<zwp_virtual_keyboard_manager_v1, Deleter> m_virtualKeyboards;
    std::unique_ptr<org_kde_kwin_fake_input, Deleter> m_fakeInput;
    wl_seat* m_seat = nullptr;
    std::unique_ptr<WaylandVirtualKeyboard> m_virtualKeyboard;
    /// The key maps told last, the latest first.
    std::deque<Told> m_told;
    /// Made when it is needed.
    std::optional<WaylandKeymap> m_american;
    bool m_isStarted = false;
    mutable std::mutex m_mutex;
    /// The one told last, or the American one; none before the start, or where there is neither.
    std::optional<WaylandKeymap> m_published;
};

} // namespace tessly
