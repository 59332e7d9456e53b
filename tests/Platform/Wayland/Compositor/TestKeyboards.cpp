#include "TestKeyboards.h"

#include "virtual-keyboard-unstable-v1-server-protocol.h"

#include <unistd.h>
#include <wayland-server.h>

namespace tessly::test {

/// The requests of clients.
struct TestKeyboards::Requests
{
    static TestKeyboards& of(wl_resource* resource)
    {
        return *static_cast<TestKeyboards*>(wl_resource_get_user_data(resource));
    }

    static void bind(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        static const struct zwp_virtual_keyboard_manager_v1_interface requests = {
            .create_virtual_keyboard = &create};
        wl_resource* const manager = wl_resource_create(
            client, &zwp_virtual_keyboard_manager_v1_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(manager, &requests, data, nullptr);
    }

    static void create(wl_client* client, wl_resource* manager, wl_resource*, std::uint32_t id)
    {
        static const struct zwp_virtual_keyboard_v1_interface requests = {
            .keymap = &keymap, .key = &key, .modifiers = &modifiers, .destroy = &destroy};
        wl_resource* const keyboard =
            wl_resource_create(client, &zwp_virtual_keyboard_v1_interface, 1, id);
        auto& self = of(manager);
        wl_resource_set_implementation(
            keyboard, &requests, &self, [](wl_resource* destroyed) { --of(destroyed).m_alive; });
        ++self.m_made;
        ++self.m_alive;
    }

    static void
    keymap(wl_client*, wl_resource* keyboard, std::uint32_t, std::int32_t file, std::uint32_t size)
    {
        QByteArray text(static_cast<qsizetype>(size), 'x');
        [[maybe_unused]] const auto length = pread(file, text.data(), size, 0);
        close(file);
        of(keyboard).m_keymaps.push_back(text);
    }

    static void
    key(wl_client*, wl_resource* keyboard, std::uint32_t, std::uint32_t code, std::uint32_t state)
    {
        auto& self = of(keyboard);
        if (self.m_keymaps.empty()) {
            wl_resource_post_error(
                keyboard, ZWP_VIRTUAL_KEYBOARD_V1_ERROR_NO_KEYMAP, "there is no key map");
        }
        self.m_keys.push_back({.code = code, .isPress = state != 0, .modifiers = self.m_modifiers});
    }

    static void modifiers(
        wl_client*, wl_resource* keyboard, std::uint32_t depressed, std::uint32_t latched,
        std::uint32_t locked, std::uint32_t)
    {
        of(keyboard).m_modifiers = depressed | latched | locked;
    }

    static void destroy(wl_client*, wl_resource* keyboard) { wl_resource_destroy(keyboard); }
};

TestKeyboards::TestKeyboards(wl_display* display)
{
    wl_global_create(display, &zwp_virtual_keyboard_manager_v1_interface, 1, this, &Requests::bind);
}

} // namespace tessly::test
