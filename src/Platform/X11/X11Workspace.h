#pragma once

#include "MainThreadCall.h"
#include "WindowApplications.h"
#include "Workspace.h"
#include "X11RunningApplication.h"
#include "X11Window.h"

#include <memory>

namespace tessly {

class X11Desktop;
class X11WindowTracker;

/// The desktop of an X11 session.
class X11Workspace final : public Workspace
{
public:
    explicit X11Workspace(const X11Desktop& desktop);
    ~X11Workspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) override;
    void setFrontmostChanged(std::function<void()> changed) override;

private:
    using Applications = WindowApplications<X11RunningApplication, X11Window, X11WindowTracker>;

    std::weak_ptr<X11WindowTracker> m_windows;
    /// Questions that are under way keep it.
    std::shared_ptr<Applications> m_applications = std::make_shared<Applications>();
    MainThreadCall m_frontmostChanged;
};

} // namespace tessly
