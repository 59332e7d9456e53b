#pragma once

#include "ShellWindow.h"
#include "WindowApplication.h"

namespace tessly {

class ShellExtension;

/// The application of a window that was in front, as GNOME Shell tells it.
class ShellApplication final : public WindowApplication<ShellWindow, ShellExtension>
{
public:
    using WindowApplication::WindowApplication;

    [[nodiscard]] bool isActive() const override;
    void activate() override;
};

} // namespace tessly
