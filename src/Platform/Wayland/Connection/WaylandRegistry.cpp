#include "WaylandRegistry.h"

#include <algorithm>
#include <wayland-client.h>

namespace tessly {

WaylandRegistry::WaylandRegistry(WaylandEventLoop& loop)
    : m_registry(wl_display_get_registry(loop.display()))
{
    static constexpr wl_registry_listener listener = {
        .global = &WaylandRegistry::added, .global_remove = &WaylandRegistry::removed};
    wl_registry_add_listener(m_registry, &listener, this);
}

WaylandRegistry::~WaylandRegistry()
{
    wl_registry_destroy(m_registry);
}

WaylandRegistry::Name WaylandRegistry::find(const std::string& interface) const
{
    const auto found = std::ranges::find_if(
        m_globals, [&interface](const auto& entry) { return entry.second.interface == interface; });
    return found != m_globals.end() ? found->first : 0;
}

std::vector<WaylandRegistry::Name> WaylandRegistry::findAll(const std::string& interface) const
{
    std::vector<Name> found;
    for (const auto& [name, global] : m_globals) {
        if (global.interface == interface) {
            found.push_back(name);
        }
    }
    return found;
}

std::set<std::string> WaylandRegistry::interfaces() const
{
    std::set<std::string> interfaces;
    for (const auto& [name, global] : m_globals) {
        interfaces.insert(global.interface);
    }
    return interfaces;
}

void* WaylandRegistry::bindAny(Name name, const wl_interface& interface, std::uint32_t newest) const
{
    const auto global = m_globals.find(name);
    if (global == m_globals.end()) {
        return nullptr;
    }
    return wl_registry_bind(m_registry, name, &interface, std::min(global->second.version, newest));
}

void WaylandRegistry::added(
    void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version)
{
    auto& self = *static_cast<WaylandRegistry*>(data);
    const auto& global = self.m_globals.insert_or_assign(name, Global{interface, version}).first;
    if (self.m_changes.added) {
        self.m_changes.added(name, global->second.interface);
    }
}

void WaylandRegistry::removed(void* data, wl_registry*, std::uint32_t name)
{
    auto& self = *static_cast<WaylandRegistry*>(data);
    if (self.m_globals.erase(name) > 0 && self.m_changes.removed) {
        self.m_changes.removed(name);
    }
}

} // namespace tessly
