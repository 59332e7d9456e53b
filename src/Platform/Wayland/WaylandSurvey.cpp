#include "WaylandSurvey.h"

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

namespace tessly {

namespace {

constexpr std::chrono::seconds deadline{5};

} // namespace

std::set<std::string> compositorInterfaces(const std::string& display)
{
    WaylandEventLoop loop(display);
    const WaylandRegistry registry(loop);
    loop.roundTrip(deadline);
    return registry.interfaces();
}

} // namespace tessly
