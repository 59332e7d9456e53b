#include "WlrToplevelManager.h"

#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace tessly {

class WlrToplevelManager::Handle final : public WaylandToplevelHandle
{
public:
    Handle(WlrToplevelManager& manager, zwlr_foreign_toplevel_handle_v1* object)
        : m_manager(manager)
        , m_object(object)
    {
        using Object = zwlr_foreign_toplevel_handle_v1;
        static constexpr zwlr_foreign_toplevel_handle_v1_listener listener = {
            .title = [](void*, Object*, const char*) {},
            .app_id = &Handle::nameChanged,
            .output_enter = [](void*, Object*, wl_output*) {},
            .output_leave = [](void*, Object*, wl_output*) {},
            .state = &Handle::stateChanged,
            .done = &Handle::done,
            .closed = &Handle::closed,
            .parent = [](void*, Object*, Object*) {}};
        zwlr_foreign_toplevel_handle_v1_add_listener(object, &listener, this);
    }
    ~Handle() override { zwlr_foreign_toplevel_handle_v1_destroy(m_object); }

    void activate(wl_seat* seat) override
    {
        if (seat != nullptr) {
            zwlr_foreign_toplevel_handle_v1_activate(m_object, seat);
        }
    }

private:
    static void nameChanged(void* data, zwlr_foreign_toplevel_handle_v1*, const char* appID)
    {
        static_cast<Handle*>(data)->m_next.appID = appID;
    }

    static void stateChanged(void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* array)
    {
        const std::span states(
            static_cast<const std::uint32_t*>(array->data), array->size / sizeof(std::uint32_t));
        static_cast<Handle*>(data)->m_next.isActivated =
            std::ranges::count(states, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) > 0;
    }

    static void done(void* data, zwlr_foreign_toplevel_handle_v1*)
    {
        auto& self = *static_cast<Handle*>(data);
        self.setState(self.m_next);
        self.m_manager.m_events.changed(self);
    }

    static void closed(void* data, zwlr_foreign_toplevel_handle_v1*)
    {
        auto& self = *static_cast<Handle*>(data);
        self.m_manager.closed(&self);
    }

    WlrToplevelManager& m_manager;
    zwlr_foreign_toplevel_handle_v1* m_object;
    /// What holds once the compositor says that this is all.
    State m_next;
};

std::unique_ptr<WlrToplevelManager>
WlrToplevelManager::find(const WaylandRegistry& registry, Events events)
{
    auto* const object = registry.bind<zwlr_foreign_toplevel_manager_v1>(
        registry.find(zwlr_foreign_toplevel_manager_v1_interface.name),
        zwlr_foreign_toplevel_manager_v1_interface, 1);
    return object != nullptr ? std::unique_ptr<WlrToplevelManager>(
                                   new WlrToplevelManager(object, std::move(events)))
                             : nullptr;
}

WlrToplevelManager::WlrToplevelManager(zwlr_foreign_toplevel_manager_v1* object, Events events)
    : m_object(object)
    , m_events(std::move(events))
{
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener = {
        .toplevel = &WlrToplevelManager::appeared, .finished = &WlrToplevelManager::finished};
    zwlr_foreign_toplevel_manager_v1_add_listener(object, &listener, this);
}

WlrToplevelManager::~WlrToplevelManager()
{
    m_handles.clear();
    if (m_object != nullptr) {
        zwlr_foreign_toplevel_manager_v1_stop(m_object);
        zwlr_foreign_toplevel_manager_v1_destroy(m_object);
    }
}

void WlrToplevelManager::appeared(
    void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* toplevel)
{
    auto& self = *static_cast<WlrToplevelManager*>(data);
    self.m_handles.push_back(std::make_unique<Handle>(self, toplevel));
}

void WlrToplevelManager::finished(void* data, zwlr_foreign_toplevel_manager_v1* object)
{
    auto& self = *static_cast<WlrToplevelManager*>(data);
    zwlr_foreign_toplevel_manager_v1_destroy(object);
    self.m_object = nullptr;
    self.m_events.finished();
}

void WlrToplevelManager::closed(Handle* handle)
{
    m_events.closed(*handle);
    std::erase_if(m_handles, [handle](const auto& known) { return known.get() == handle; });
}

} // namespace tessly
