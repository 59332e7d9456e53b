#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

struct wl_array;
struct wl_compositor;
struct wl_keyboard;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct xdg_wm_base;

namespace tessly::test {

/// Another program, which shows plain windows and notes the keys that they get. On a connection and
/// a thread of its own.
class WaylandWindows
{
public:
    struct Key
    {
        /// The window's first application id.
        std::string window;
        /// As in linux/input-event-codes.h.
        std::uint32_t code = 0;
        bool isPress = false;
        /// In effect when the key came, as the key map numbers them: Shift is 1, Ctrl 4, Alt 8.
        std::uint32_t modifiers = 0;
        std::uint32_t group = 0;

        bool operator==(const Key&) const = default;
        friend std::ostream& operator<<(std::ostream& stream, const Key& key);
    };

    /// `display` is the path of the compositor's socket. Throws WaylandError.
    explicit WaylandWindows(const std::string& display);
    ~WaylandWindows();
    WaylandWindows(const WaylandWindows&) = delete;
    WaylandWindows& operator=(const WaylandWindows&) = delete;

    /// Shows a window. It appears, and perhaps gets the focus, in time.
    void show(const std::string& appID);
    /// Changes what a window says it is. It goes by its first id here.
    void rename(const std::string& window, const std::string& appID);
    /// Returns once the compositor knows.
    void close(const std::string& window);

    /// Returns once all that the compositor has sent by now has arrived.
    void settle();
    /// All that came so far, and what the compositor has sent by now.
    [[nodiscard]] std::vector<Key> keys();
    void forgetKeys();
    /// The window that has the keyboard.
    [[nodiscard]] std::optional<std::string> focus();
    /// The key map of the keyboard that pressed last.
    [[nodiscard]] std::string keymap();

private:
    class Window;

    template <typename Job>
    auto onLoop(Job job);
    void attachKeyboard(std::uint32_t capabilities);
    void noteKey(std::uint32_t code, std::uint32_t state);
    [[nodiscard]] std::string nameOf(const wl_surface* surface) const;

    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandRegistry> m_registry;
    wl_compositor* m_compositor = nullptr;
    wl_shm* m_shm = nullptr;
    wl_seat* m_seat = nullptr;
    wl_keyboard* m_keyboard = nullptr;
    xdg_wm_base* m_shell = nullptr;
    std::map<std::string, std::unique_ptr<Window>> m_windows;
    std::optional<std::string> m_focus;
    std::uint32_t m_modifiers = 0;
    std::uint32_t m_group = 0;
    std::string m_keymap;
    std::vector<Key> m_keys;
};

} // namespace tessly::test
