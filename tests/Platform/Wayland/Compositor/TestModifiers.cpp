#include "TestModifiers.h"

#include "keystate-server-protocol.h"

#include <wayland-server.h>

namespace tessly::test {

/// The requests of clients.
struct TestModifiers::Requests
{
    static TestModifiers& of(wl_resource* resource)
    {
        return *static_cast<TestModifiers*>(wl_resource_get_user_data(resource));
    }

    static void bind(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        static const struct org_kde_kwin_keystate_interface requests = {
            .fetchStates = &fetch, .destroy = &destroy};
        wl_resource* const resource = wl_resource_create(
            client, &org_kde_kwin_keystate_interface, static_cast<int>(version), id);
        auto& self = *static_cast<TestModifiers*>(data);
        wl_resource_set_implementation(resource, &requests, data, [](wl_resource* destroyed) {
            std::erase(of(destroyed).m_resources, destroyed);
        });
        self.m_resources.push_back(resource);
    }

    static void fetch(wl_client*, wl_resource* resource)
    {
        const auto& self = of(resource);
        const std::uint32_t last = self.m_version < 5 ? ORG_KDE_KWIN_KEYSTATE_KEY_SCROLLLOCK
                                                      : ORG_KDE_KWIN_KEYSTATE_KEY_ALTGR;
        for (std::uint32_t key = 0; key <= last; ++key) {
            self.tell(key);
        }
    }

    static void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }
};

TestModifiers::TestModifiers(wl_display* display, std::uint32_t version)
    : m_version(version)
{
    wl_global_create(
        display, &org_kde_kwin_keystate_interface, static_cast<int>(version), this,
        &Requests::bind);
}

void TestModifiers::hold(std::uint32_t key)
{
    m_held.insert(key);
    tell(key);
}

void TestModifiers::letGo(std::uint32_t key)
{
    m_held.erase(key);
    tell(key);
}

void TestModifiers::tell(std::uint32_t key) const
{
    const auto state = m_held.contains(key) ? ORG_KDE_KWIN_KEYSTATE_STATE_PRESSED
                                            : ORG_KDE_KWIN_KEYSTATE_STATE_UNLOCKED;
    for (wl_resource* const resource : m_resources) {
        org_kde_kwin_keystate_send_stateChanged(resource, key, state);
    }
}

} // namespace tessly::test
