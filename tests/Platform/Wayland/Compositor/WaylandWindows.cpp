#include "WaylandWindows.h"

#include "xdg-shell-client-protocol.h"

#include <chrono>
#include <exception>
#include <future>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace tessly::test {

namespace {

constexpr auto timeout = std::chrono::seconds(20);
constexpr int side = 64;
constexpr int bytesPerPixel = 4;

} // namespace

std::ostream& operator<<(std::ostream& stream, const WaylandWindows::Key& key)
{
    return stream << key.window << (key.isPress ? '+' : '-') << key.code << '/' << key.modifiers
                  << '/' << key.group;
}

/// One window, white or whatever memory is at first.
class WaylandWindows::Window
{
public:
    Window(WaylandWindows& program, const std::string& appID)
        : m_surface(wl_compositor_create_surface(program.m_compositor))
        , m_xdgSurface(xdg_wm_base_get_xdg_surface(program.m_shell, m_surface))
        , m_toplevel(xdg_surface_get_toplevel(m_xdgSurface))
        , m_buffer(picture(program.m_shm))
    {
        static constexpr xdg_surface_listener surfaceListener = {.configure = &Window::configure};
        xdg_surface_add_listener(m_xdgSurface, &surfaceListener, this);
        static constexpr xdg_toplevel_listener toplevelListener = {
            .configure = [](void*, xdg_toplevel*, std::int32_t, std::int32_t, wl_array*) {},
            .close = [](void*, xdg_toplevel*) {}};
        xdg_toplevel_add_listener(m_toplevel, &toplevelListener, this);
        rename(appID);
        wl_surface_commit(m_surface);
    }
    ~Window()
    {
        xdg_toplevel_destroy(m_toplevel);
        xdg_surface_destroy(m_xdgSurface);
        wl_surface_destroy(m_surface);
        wl_buffer_destroy(m_buffer);
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void rename(const std::string& appID)
    {
        if (!appID.empty()) {
            xdg_toplevel_set_app_id(m_toplevel, appID.c_str());
        }
    }

    [[nodiscard]] const wl_surface* surface() const { return m_surface; }

private:
    static wl_buffer* picture(wl_shm* shm)
    {
        constexpr int size = side * side * bytesPerPixel;
        const int file = memfd_create("picture", MFD_CLOEXEC);
        if (file < 0 || ftruncate(file, size) != 0) {
            throw WaylandError("a window gets no picture");
        }
        wl_shm_pool* const pool = wl_shm_create_pool(shm, file, size);
        wl_buffer* const buffer = wl_shm_pool_create_buffer(
            pool, 0, side, side, side * bytesPerPixel, WL_SHM_FORMAT_XRGB8888);
        wl_shm_pool_destroy(pool);
        ::close(file);
        return buffer;
    }

    static void configure(void* data, xdg_surface* surface, std::uint32_t serial)
    {
        const auto& self = *static_cast<Window*>(data);
        xdg_surface_ack_configure(surface, serial);
        wl_surface_attach(self.m_surface, self.m_buffer, 0, 0);
        wl_surface_damage(self.m_surface, 0, 0, side, side);
        wl_surface_commit(self.m_surface);
    }

    wl_surface* m_surface;
    xdg_surface* m_xdgSurface;
    xdg_toplevel* m_toplevel;
    wl_buffer* m_buffer;
};

WaylandWindows::WaylandWindows(const std::string& display)
    : m_loop(display)
    , m_registry(std::make_unique<WaylandRegistry>(m_loop))
{
    m_loop.roundTrip(timeout);
    const auto bind = [this]<typename Object>(Object*& object, const wl_interface& interface) {
        object = m_registry->bind<Object>(m_registry->find(interface.name), interface, 1);
        if (object == nullptr) {
            throw WaylandError(std::string("there is no ") + interface.name);
        }
    };
    bind(m_compositor, wl_compositor_interface);
    bind(m_shm, wl_shm_interface);
    bind(m_seat, wl_seat_interface);
    bind(m_shell, xdg_wm_base_interface);
    static constexpr xdg_wm_base_listener shellListener = {
        .ping = [](void*, xdg_wm_base* shell, std::uint32_t serial) {
            xdg_wm_base_pong(shell, serial);
        }};
    xdg_wm_base_add_listener(m_shell, &shellListener, this);
    static constexpr wl_seat_listener seatListener = {
        .capabilities =
            [](void* data, wl_seat*, std::uint32_t capabilities) {
                static_cast<WaylandWindows*>(data)->attachKeyboard(capabilities);
            },
        .name = [](void*, wl_seat*, const char*) {}};
    wl_seat_add_listener(m_seat, &seatListener, this);
    m_loop.roundTrip(timeout);
    m_loop.start("windows", {});
}

WaylandWindows::~WaylandWindows()
{
    m_loop.stop();
    m_windows.clear();
    if (m_keyboard != nullptr) {
        wl_keyboard_destroy(m_keyboard);
    }
    xdg_wm_base_destroy(m_shell);
    wl_seat_destroy(m_seat);
    wl_shm_destroy(m_shm);
    wl_compositor_destroy(m_compositor);
    // What was destroyed is to be known before the connection is.
    wl_display_flush(m_loop.display());
}

template <typename Job>
auto WaylandWindows::onLoop(Job job)
{
    std::packaged_task<decltype(job())()> task(std::move(job));
    m_loop.post([&task] { task(); });
    return task.get_future().get();
}

void WaylandWindows::show(const std::string& appID)
{
    onLoop([&] { m_windows.insert_or_assign(appID, std::make_unique<Window>(*this, appID)); });
}

void WaylandWindows::rename(const std::string& window, const std::string& appID)
{
    onLoop([&] { m_windows.at(window)->rename(appID); });
    settle();
}

void WaylandWindows::close(const std::string& window)
{
    onLoop([&] { m_windows.erase(window); });
    settle();
}

void WaylandWindows::settle()
{
    std::promise<void> done;
    m_loop.post([&] { m_loop.awaitRoundTrip([&] { done.set_value(); }); });
    if (done.get_future().wait_for(timeout) != std::future_status::ready) {
        // It refers to this call.
        std::terminate();
    }
}

std::vector<WaylandWindows::Key> WaylandWindows::keys()
{
    settle();
    return onLoop([this] { return m_keys; });
}

void WaylandWindows::forgetKeys()
{
    settle();
    onLoop([this] { m_keys.clear(); });
}

std::optional<std::string> WaylandWindows::focus()
{
    settle();
    return onLoop([this] { return m_focus; });
}

std::string WaylandWindows::keymap()
{
    settle();
    return onLoop([this] { return m_keymap; });
}

void WaylandWindows::attachKeyboard(std::uint32_t capabilities)
{
    // A keyboard that has gone is silent; one that comes back speaks through the same object.
    if (m_keyboard != nullptr || (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0) {
        return;
    }
    m_keyboard = wl_seat_get_keyboard(m_seat);
    static constexpr wl_keyboard_listener listener = {
        .keymap =
            [](void* data, wl_keyboard*, std::uint32_t, std::int32_t file, std::uint32_t size) {
                std::string text(size, '\0');
                const auto length = pread(file, text.data(), size, 0);
                ::close(file);
                text.resize(length > 0 ? static_cast<std::size_t>(length) - 1 : 0);
                static_cast<WaylandWindows*>(data)->m_keymap = std::move(text);
            },
        .enter =
            [](void* data, wl_keyboard*, std::uint32_t, wl_surface* surface, wl_array*) {
                auto& self = *static_cast<WaylandWindows*>(data);
                self.m_focus = self.nameOf(surface);
            },
        .leave = [](void* data, wl_keyboard*, std::uint32_t,
                    wl_surface*) { static_cast<WaylandWindows*>(data)->m_focus.reset(); },
        .key =
            [](void* data, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t code,
               std::uint32_t state) { static_cast<WaylandWindows*>(data)->noteKey(code, state); },
        .modifiers =
            [](void* data, wl_keyboard*, std::uint32_t, std::uint32_t depressed,
               std::uint32_t latched, std::uint32_t locked, std::uint32_t group) {
                auto& self = *static_cast<WaylandWindows*>(data);
                self.m_modifiers = depressed | latched | locked;
                self.m_group = group;
            },
        .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {}};
    wl_keyboard_add_listener(m_keyboard, &listener, this);
}

void WaylandWindows::noteKey(std::uint32_t code, std::uint32_t state)
{
    m_keys.push_back(
        {.window = m_focus.value_or(std::string()),
         .code = code,
         .isPress = state == WL_KEYBOARD_KEY_STATE_PRESSED,
         .modifiers = m_modifiers,
         .group = m_group});
}

std::string WaylandWindows::nameOf(const wl_surface* surface) const
{
    for (const auto& [name, window] : m_windows) {
        if (window->surface() == surface) {
            return name;
        }
    }
    return {};
}

} // namespace tessly::test
