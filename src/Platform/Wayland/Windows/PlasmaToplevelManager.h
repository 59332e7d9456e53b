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
/// Version 13 (KWin 5.22) is the first that announces windows by UUID. Asking for them by number,
/// as earlier ones do, gets windows that are gone from KWin 6, and ends it when they are released.
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

    static void appeared(
        void* data, org_kde_plasma_window_management* object, std::uint32_t id, const char* uuid);
    void closed(Handle* handle);

    org_kde_plasma_window_management* m_object;
    Events m_events;
    std::vector<std::unique_ptr<Handle>> m_handles;
};

} // namespace tessly
