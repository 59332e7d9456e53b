#pragma once

#include "TrackedWindow.h"
#include "WindowApplication.h"

namespace tessly {

class WaylandToplevels;

/// The application of a window that was in front. It is active while the compositor calls that
/// window activated.
class WaylandRunningApplication final : public WindowApplication<TrackedWindow, WaylandToplevels>
{
public:
    using WindowApplication::WindowApplication;

    [[nodiscard]] bool isActive() const override;
    void activate() override;
};

} // namespace tessly
