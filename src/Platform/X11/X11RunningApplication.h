#pragma once

#include "WindowApplication.h"
#include "X11Window.h"

namespace tessly {

class X11WindowTracker;

/// The application of a window that was in front. It is active while that window has the keyboard.
class X11RunningApplication final : public WindowApplication<X11Window, X11WindowTracker>
{
public:
    using WindowApplication::WindowApplication;

    [[nodiscard]] bool isActive() const override;
    void activate() override;
};

} // namespace tessly
