#pragma once

#include "TrackedWindow.h"
#include "WaylandRunningApplication.h"
#include "WindowApplications.h"
#include "Workspace.h"

#include <memory>

namespace tessly {

class WaylandDesktop;
class WaylandToplevels;

/// The desktop of a Wayland session whose compositor tells of windows.
class WaylandWorkspace final : public Workspace
{
public:
    /// `desktop` must outlive this, and is told by nobody else whom to call when the front changes.
    explicit WaylandWorkspace(WaylandDesktop& desktop);
    ~WaylandWorkspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) override;
    void setFrontmostChanged(std::function<void()> changed) override;

private:
    using Applications =
        WindowApplications<WaylandRunningApplication, TrackedWindow, WaylandToplevels>;

    WaylandDesktop& m_desktop;
    /// Gone with this: questions that are under way see that by it.
    std::shared_ptr<Applications> m_applications = std::make_shared<Applications>();
};

} // namespace tessly
