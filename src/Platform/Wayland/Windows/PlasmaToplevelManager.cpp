#include "PlasmaToplevelManager.h"

#include "plasma-window-management-client-protocol.h"

#include <utility>

namespace tessly {

namespace {

constexpr std::uint32_t version = 13;

} // namespace

class PlasmaToplevelManager::Handle final : public WaylandToplevelHandle
{
public:
    Handle(PlasmaToplevelManager& manager, org_kde_plasma_window* object)
        : m_manager(manager)
        , m_object(object)
    {
        using Object = org_kde_plasma_window;
        static constexpr org_kde_plasma_window_listener listener = {
            .title_changed = &Handle::ignore,
            .app_id_changed = &Handle::nameChanged,
            .state_changed = &Handle::stateChanged,
            .virtual_desktop_changed = [](void*, Object*, std::int32_t) {},
            .themed_icon_name_changed = &Handle::ignore,
            .unmapped = &Handle::unmapped,
            .initial_state = &Handle::initialStateTold,
            .parent_window = [](void*, Object*, Object*) {},
            .geometry = [](void*, Object*, std::int32_t, std::int32_t, std::uint32_t,
                           std::uint32_t) {},
            .icon_changed = [](void*, Object*) {},
            .pid_changed = [](void*, Object*, std::uint32_t) {},
            .virtual_desktop_entered = &Handle::ignore,
            .virtual_desktop_left = &Handle::ignore,
            .application_menu = [](void*, Object*, const char*, const char*) {},
            .activity_entered = &Handle::ignore,
            .activity_left = &Handle::ignore,
            .resource_name_changed = &Handle::ignore,
            .client_geometry = [](void*, Object*, std::int32_t, std::int32_t, std::uint32_t,
                                  std::uint32_t) {}};
        org_kde_plasma_window_add_listener(object, &listener, this);
    }
    ~Handle() override { org_kde_plasma_window_destroy(m_object); }

    void activate(wl_seat*) override
    {
        org_kde_plasma_window_set_state(
            m_object, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE,
            ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
    }

private:
    static void ignore(void*, org_kde_plasma_window*, const char*) {}

    static void nameChanged(void* data, org_kde_plasma_window*, const char* appID)
    {
        static_cast<Handle*>(data)->change([appID](State& state) { state.appID = appID; });
    }

    static void stateChanged(void* data, org_kde_plasma_window*, std::uint32_t flags)
    {
        static_cast<Handle*>(data)->change([flags](State& state) {
            state.isActivated = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
        });
    }

    static void initialStateTold(void* data, org_kde_plasma_window*)
    {
        auto& self = *static_cast<Handle*>(data);
        self.m_isComplete = true;
        self.m_manager.m_events.changed(self);
    }

    static void unmapped(void* data, org_kde_plasma_window*)
    {
        auto& self = *static_cast<Handle*>(data);
        self.m_manager.closed(&self);
    }

    template <typename Change>
    void change(Change change)
    {
        State next = state();
        change(next);
        setState(next);
        if (m_isComplete) {
            m_manager.m_events.changed(*this);
        }
    }

    PlasmaToplevelManager& m_manager;
    org_kde_plasma_window* m_object;
    bool m_isComplete = false;
};

std::unique_ptr<PlasmaToplevelManager>
PlasmaToplevelManager::find(const WaylandRegistry& registry, Events events)
{
    auto* const object = registry.bind<org_kde_plasma_window_management>(
        registry.find(org_kde_plasma_window_management_interface.name),
        org_kde_plasma_window_management_interface, version);
    if (object == nullptr) {
        return nullptr;
    }
    if (org_kde_plasma_window_management_get_version(object) < version) {
        org_kde_plasma_window_management_destroy(object);
        return nullptr;
    }
    return std::unique_ptr<PlasmaToplevelManager>(
        new PlasmaToplevelManager(object, std::move(events)));
}

PlasmaToplevelManager::PlasmaToplevelManager(
    org_kde_plasma_window_management* object, Events events)
    : m_object(object)
    , m_events(std::move(events))
{
    using Object = org_kde_plasma_window_management;
    static constexpr org_kde_plasma_window_management_listener listener = {
        .show_desktop_changed = [](void*, Object*, std::uint32_t) {},
        .window = [](void*, Object*, std::uint32_t) {},
        .stacking_order_changed = [](void*, Object*, wl_array*) {},
        .stacking_order_uuid_changed = [](void*, Object*, const char*) {},
        .window_with_uuid = &PlasmaToplevelManager::appeared,
        .stacking_order_changed_2 = [](void*, Object*) {}};
    org_kde_plasma_window_management_add_listener(object, &listener, this);
}

PlasmaToplevelManager::~PlasmaToplevelManager()
{
    m_handles.clear();
    org_kde_plasma_window_management_destroy(m_object);
}

void PlasmaToplevelManager::appeared(
    void* data, org_kde_plasma_window_management* object, std::uint32_t, const char* uuid)
{
    auto& self = *static_cast<PlasmaToplevelManager*>(data);
    self.m_handles.push_back(std::make_unique<Handle>(
        self, org_kde_plasma_window_management_get_window_by_uuid(object, uuid)));
}

void PlasmaToplevelManager::closed(Handle* handle)
{
    m_events.closed(*handle);
    std::erase_if(m_handles, [handle](const auto& known) { return known.get() == handle; });
}

} // namespace tessly
