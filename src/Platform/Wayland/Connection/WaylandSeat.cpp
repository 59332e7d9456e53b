#include "WaylandSeat.h"

#include <algorithm>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace tessly {

namespace {

/// Key maps are some tens of kilobytes.
constexpr std::uint32_t largestKeymap = 4 << 20;

/// What is in a file of another program; empty if it is not as long as that program says. Reading
/// is safe where mapping would not be: the file may be cut short at any moment.
QByteArray contentOf(int file, std::uint32_t size)
{
    QByteArray content(static_cast<qsizetype>(std::min(size, largestKeymap)), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < content.size()) {
        const auto read = pread(
            file, content.data() + done, static_cast<std::size_t>(content.size() - done), done);
        if (read <= 0) {
            return {};
        }
        done += read;
    }
    return size <= largestKeymap ? content : QByteArray();
}

} // namespace

WaylandSeat::WaylandSeat(WaylandRegistry& registry, Events events)
    : m_registry(registry)
    , m_events(std::move(events))
{
    m_registry.setChanges(
        {.added =
             [this](WaylandRegistry::Name, const std::string& interface) {
                 if (!m_seat && interface == wl_seat_interface.name) {
                     attach();
                 }
             },
         .removed =
             [this](WaylandRegistry::Name name) {
                 if (m_seat && name == m_name) {
                     detach();
                     attach();
                 }
             }});
    attach();
}

WaylandSeat::~WaylandSeat()
{
    m_registry.setChanges({});
}

void WaylandSeat::SeatDeleter::operator()(wl_seat* seat) const
{
    if (wl_seat_get_version(seat) >= WL_SEAT_RELEASE_SINCE_VERSION) {
        wl_seat_release(seat);
    } else {
        wl_seat_destroy(seat);
    }
}

void WaylandSeat::KeyboardDeleter::operator()(wl_keyboard* keyboard) const
{
    if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION) {
        wl_keyboard_release(keyboard);
    } else {
        wl_keyboard_destroy(keyboard);
    }
}

void WaylandSeat::attach()
{
    m_name = m_registry.find(wl_seat_interface.name);
    m_seat.reset(
        m_registry.bind<wl_seat>(m_name, wl_seat_interface, WL_SEAT_RELEASE_SINCE_VERSION));
    if (!m_seat) {
        return;
    }
    static constexpr wl_seat_listener listener = {
        .capabilities = &WaylandSeat::capabilitiesTold,
        .name = [](void*, wl_seat*, const char*) {}};
    wl_seat_add_listener(m_seat.get(), &listener, this);
    m_events.changed(m_seat.get());
}

void WaylandSeat::detach()
{
    m_events.changed(nullptr);
    m_keyboard.reset();
    m_seat.reset();
}

void WaylandSeat::capabilitiesTold(void* data, wl_seat*, std::uint32_t capabilities)
{
    static_cast<WaylandSeat*>(data)->setHasKeyboard(
        (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0);
}

void WaylandSeat::setHasKeyboard(bool hasKeyboard)
{
    if (!hasKeyboard) {
        m_keyboard.reset();
        return;
    }
    if (m_keyboard) {
        return;
    }
    m_keyboard.reset(wl_seat_get_keyboard(m_seat.get()));
    // Without a window there is no focus, and without that no keys are told.
    static constexpr wl_keyboard_listener listener = {
        .keymap = &WaylandSeat::keymapTold,
        .enter = [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
        .leave = [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
        .key = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t,
                  std::uint32_t) {},
        .modifiers = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint32_t, std::uint32_t) {},
        .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {}};
    wl_keyboard_add_listener(m_keyboard.get(), &listener, this);
}

void WaylandSeat::keymapTold(
    void* data, wl_keyboard*, std::uint32_t format, std::int32_t file, std::uint32_t size)
{
    QByteArray keymap;
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        keymap = contentOf(file, size);
    }
    close(file);
    if (!keymap.isEmpty()) {
        static_cast<WaylandSeat*>(data)->m_events.keymapChanged(keymap);
    }
}

} // namespace tessly
