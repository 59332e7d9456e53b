#pragma once

#include "WaylandToplevelManager.h"

#include <cstdint>
#include <memory>
#include <vector>

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace tessly {

/// The windows of a compositor that has org_kde_plasma_window_management.
///
/// The fourth version is the first that says when everything of a new window has been told, and
/// lets go of one again; later ones only add what is not used here, at the price of more events.
class PlasmaToplevelManager final : public WaylandToplevelManager
{
public:
    /// Null if the compositor does not have it.
    [[nodiscard]] static std::unique_ptr<PlasmaToplevelManager>
    find(const WaylandRegistry& registry, Events events);

    ~PlasmaToplevelManager() override;

private:
    class Handle;

    PlasmaToplevelManager(org_kde_plasma_window_management* object, Events events);

    static void appeared(void* data, org_kde_plasma_window_management* object, std::uint32_t id);
    void closed(Handle* handle);

    org_kde_plasma_window_management* m_object;
    Events m_events;
    std::vector<std::unique_ptr<Handle>> m_handles;
};

} // namespace tessly
