#include "WaylandToplevelManager.h"

#include "PlasmaToplevelManager.h"
#include "WlrToplevelManager.h"

#include <utility>

namespace tessly {

std::unique_ptr<WaylandToplevelManager>
WaylandToplevelManager::find(const WaylandRegistry& registry, Events events)
{
    if (auto manager = WlrToplevelManager::find(registry, events)) {
        return manager;
    }
    return PlasmaToplevelManager::find(registry, std::move(events));
}

} // namespace tessly
