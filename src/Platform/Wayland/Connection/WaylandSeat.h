#pragma once

#include "WaylandRegistry.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>

struct wl_keyboard;
struct wl_seat;

namespace tessly {

/// The first seat, as it comes and goes, and the key map of its keyboards, which a compositor tells
/// without the focus. Loop thread, or before the loop is started.
class WaylandSeat
{
public:
    struct Events
    {
        /// There is another seat now, or none any more (null). The one before goes after this.
        std::function<void(wl_seat* seat)> changed = {};
        /// The key map that holds from now on, in the text format of XKB. Unchecked.
        std::function<void(const QByteArray& keymap)> keymapChanged = {};
    };

    /// Once what the compositor has is known; hears of its changes from now on. The seat's keyboard
    /// is known after one round trip, its key map after another.
    WaylandSeat(WaylandRegistry& registry, Events events);
    ~WaylandSeat();
    WaylandSeat(const WaylandSeat&) = delete;
    WaylandSeat& operator=(const WaylandSeat&) = delete;

    /// Null while there is none.
    [[nodiscard]] wl_seat* get() const { return m_seat.get(); }

private:
    struct SeatDeleter
    {
        void operator()(wl_seat* seat) const;
    };
    struct KeyboardDeleter
    {
        void operator()(wl_keyboard* keyboard) const;
    };

    void attach();
    void detach();
    void setHasKeyboard(bool hasKeyboard);
    static void capabilitiesTold(void* data, wl_seat* seat, std::uint32_t capabilities);
    static void keymapTold(
        void* data, wl_keyboard* keyboard, std::uint32_t format, std::int32_t file,
        std::uint32_t size);

    WaylandRegistry& m_registry;
    Events m_events;
    WaylandRegistry::Name m_name = 0;
    std::unique_ptr<wl_seat, SeatDeleter> m_seat;
    std::unique_ptr<wl_keyboard, KeyboardDeleter> m_keyboard;
};

} // namespace tessly
