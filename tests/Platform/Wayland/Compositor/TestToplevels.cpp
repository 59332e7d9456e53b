#include "TestToplevels.h"

#include "wlr-foreign-toplevel-management-unstable-v1-server-protocol.h"

#include <memory>
#include <utility>
#include <wayland-server.h>

namespace tessly::test {

/// The requests of clients.
struct TestToplevels::Requests
{
    static void bind(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        static const struct zwlr_foreign_toplevel_manager_v1_interface requests = {
            .stop = [](wl_client*, wl_resource*) {}};
        auto& self = *static_cast<TestToplevels*>(data);
        wl_resource* const manager = wl_resource_create(
            client, &zwlr_foreign_toplevel_manager_v1_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(manager, &requests, data, [](wl_resource* destroyed) {
            std::erase(
                static_cast<TestToplevels*>(wl_resource_get_user_data(destroyed))->m_managers,
                destroyed);
        });
        self.m_managers.push_back(manager);
        for (const auto& entry : self.m_windows) {
            self.announce(manager, entry.first);
        }
    }

    static void activate(wl_client*, wl_resource* resource, wl_resource*)
    {
        const auto& handle = *static_cast<Handle*>(wl_resource_get_user_data(resource));
        handle.toplevels->m_activations.push_back(handle.window);
    }

    static void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

    static void destroyed(wl_resource* resource)
    {
        const std::unique_ptr<Handle> handle(
            static_cast<Handle*>(wl_resource_get_user_data(resource)));
        const auto window = handle->toplevels->m_windows.find(handle->window);
        if (window != handle->toplevels->m_windows.end()) {
            std::erase(window->second.handles, resource);
        }
    }
};

TestToplevels::TestToplevels(wl_display* display)
{
    wl_global_create(
        display, &zwlr_foreign_toplevel_manager_v1_interface, 3, this, &Requests::bind);
}

TestToplevels::WindowID TestToplevels::open(const QByteArray& appID, bool isActivated)
{
    const WindowID id = m_next++;
    m_windows.emplace(id, Window{.appID = appID, .isActivated = isActivated});
    for (wl_resource* const manager : m_managers) {
        announce(manager, id);
    }
    return id;
}

void TestToplevels::announce(wl_resource* manager, WindowID id)
{
    static const struct zwlr_foreign_toplevel_handle_v1_interface requests = {
        .set_maximized = [](wl_client*, wl_resource*) {},
        .unset_maximized = [](wl_client*, wl_resource*) {},
        .set_minimized = [](wl_client*, wl_resource*) {},
        .unset_minimized = [](wl_client*, wl_resource*) {},
        .activate = &Requests::activate,
        .close = [](wl_client*, wl_resource*) {},
        .set_rectangle = [](wl_client*, wl_resource*, wl_resource*, std::int32_t, std::int32_t,
                            std::int32_t, std::int32_t) {},
        .destroy = &Requests::destroy,
        .set_fullscreen = [](wl_client*, wl_resource*, wl_resource*) {},
        .unset_fullscreen = [](wl_client*, wl_resource*) {}};
    wl_resource* const handle = wl_resource_create(
        wl_resource_get_client(manager), &zwlr_foreign_toplevel_handle_v1_interface,
        wl_resource_get_version(manager), 0);
    wl_resource_set_implementation(
        handle, &requests, new Handle{.toplevels = this, .window = id}, &Requests::destroyed);
    Window& window = m_windows.at(id);
    window.handles.push_back(handle);
    zwlr_foreign_toplevel_manager_v1_send_toplevel(manager, handle);
    zwlr_foreign_toplevel_handle_v1_send_title(handle, "what it shows");
    sendAppID(window, handle);
    sendState(window, handle);
    zwlr_foreign_toplevel_handle_v1_send_done(handle);
}

void TestToplevels::setAppID(WindowID id, const QByteArray& appID)
{
    Window& window = m_windows.at(id);
    window.appID = appID;
    for (wl_resource* const handle : window.handles) {
        sendAppID(window, handle);
        zwlr_foreign_toplevel_handle_v1_send_done(handle);
    }
}

void TestToplevels::setActivated(WindowID id, bool isActivated)
{
    Window& window = m_windows.at(id);
    window.isActivated = isActivated;
    for (wl_resource* const handle : window.handles) {
        sendState(window, handle);
        zwlr_foreign_toplevel_handle_v1_send_done(handle);
    }
}

void TestToplevels::close(WindowID id)
{
    const auto window = m_windows.extract(id);
    for (wl_resource* const handle : window.mapped().handles) {
        zwlr_foreign_toplevel_handle_v1_send_closed(handle);
    }
}

void TestToplevels::disconnect()
{
    while (!m_managers.empty()) {
        wl_client_destroy(wl_resource_get_client(m_managers.front()));
    }
}

void TestToplevels::finish()
{
    for (wl_resource* const manager : std::exchange(m_managers, {})) {
        zwlr_foreign_toplevel_manager_v1_send_finished(manager);
    }
}

void TestToplevels::sendAppID(const Window& window, wl_resource* handle)
{
    if (!window.appID.isNull()) {
        zwlr_foreign_toplevel_handle_v1_send_app_id(handle, window.appID.constData());
    }
}

void TestToplevels::sendState(const Window& window, wl_resource* handle)
{
    wl_array states;
    wl_array_init(&states);
    const auto add = [&states](std::uint32_t state) {
        *static_cast<std::uint32_t*>(wl_array_add(&states, sizeof state)) = state;
    };
    add(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MAXIMIZED);
    if (window.isActivated) {
        add(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
    }
    zwlr_foreign_toplevel_handle_v1_send_state(handle, &states);
    wl_array_release(&states);
}

} // namespace tessly::test
