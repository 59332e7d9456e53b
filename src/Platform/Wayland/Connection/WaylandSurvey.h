#pragma once

#include <set>
#include <string>

namespace tessly {

/// The interfaces of all that a compositor offers this program. Asks the one behind `display` (as
/// $WAYLAND_DISPLAY names it, or a path; empty: $WAYLAND_DISPLAY itself) and waits for its answer.
/// Throws WaylandError if it cannot be reached or does not answer within 30 s.
[[nodiscard]] std::set<std::string> compositorInterfaces(const std::string& display = {});

} // namespace tessly
