#pragma once

#include "Workspace.h"

#include <memory>

namespace tessly {

class WaylandDesktop;
class WaylandRunningApplication;

/// The desktop of a Wayland session whose compositor tells of windows.
class WaylandWorkspace final : public Workspace
{
public:
    /// `desktop` must outlive this.
    explicit WaylandWorkspace(const WaylandDesktop& desktop);
    ~WaylandWorkspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool openURL(const QUrl& url) override;

private:
    const WaylandDesktop& m_desktop;
    /// What was in front when last asked. It is asked for three times a second and seldom changes.
    mutable std::shared_ptr<WaylandRunningApplication> m_last;
};

} // namespace tessly
