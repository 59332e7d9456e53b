#pragma once

#include "X11EventLoop.h"

#include <cstdint>

namespace tessly {

/// On which of the server's eight modifiers the keys are whose modifier differs from keyboard to
/// keyboard, as masks; 0 where there is none.
struct X11ModifierMap
{
    std::uint8_t alt = 0;
    std::uint8_t super = 0;
    std::uint8_t numLock = 0;
    std::uint8_t scrollLock = 0;

    bool operator==(const X11ModifierMap&) const = default;

    /// Asks the server, which it waits for. Loop thread.
    [[nodiscard]] static X11ModifierMap read(X11EventLoop& loop);
};

} // namespace tessly
