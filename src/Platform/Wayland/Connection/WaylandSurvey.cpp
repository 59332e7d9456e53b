#include "WaylandSurvey.h"

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

namespace tessly {

namespace {

/// Right after the user has logged in, compositors have much else to do, and this is asked once.
constexpr std::chrono::seconds deadline{30};

} // namespace

std::set<std::string> compositorInterfaces(const std::string& display)
{
    WaylandEventLoop loop(display);
    const WaylandRegistry registry(loop);
    loop.roundTrip(deadline);
    return registry.interfaces();
}

} // namespace tessly
