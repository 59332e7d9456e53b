#pragma once

#include "ShellApplication.h"
#include "WindowApplications.h"
#include "Workspace.h"

#include <QObject>

#include <memory>

namespace tessly {

/// GNOME's desktop: what the shell's extension tells, and where there is none, what is told without
/// it.
class ShellWorkspace final : public Workspace
{
public:
    /// `fallback` must outlive this, and is told by nobody else whom to call when the front
    /// changes.
    ShellWorkspace(std::weak_ptr<ShellExtension> extension, Workspace& fallback);
    ~ShellWorkspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) override;
    void setFrontmostChanged(std::function<void()> changed) override;

private:
    using Applications = WindowApplications<ShellApplication, ShellWindow, ShellExtension>;

    const std::weak_ptr<ShellExtension> m_extension;
    Workspace& m_fallback;
    /// Gone with this: questions that are under way see that by it.
    std::shared_ptr<Applications> m_applications = std::make_shared<Applications>();
    QMetaObject::Connection m_told;
};

} // namespace tessly
