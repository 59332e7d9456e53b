#pragma once

#include "Workspace.h"

#include <memory>

namespace tessly {

class X11Desktop;
class X11RunningApplication;
class X11WindowTracker;

/// The desktop of an X11 session.
class X11Workspace final : public Workspace
{
public:
    explicit X11Workspace(const X11Desktop& desktop);
    ~X11Workspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool openURL(const QUrl& url) override;

private:
    std::weak_ptr<X11WindowTracker> m_windows;
    /// What was in front when last asked. It is asked for three times a second and seldom changes.
    mutable std::shared_ptr<X11RunningApplication> m_last;
};

} // namespace tessly
