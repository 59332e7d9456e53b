#pragma once

#include "Workspace.h"

#include <memory>

namespace tessly {

/// A desktop that does not tell which application is in front, or not of all applications: what is
/// not told is the unnamed one.
class UnnamedWorkspace final : public Workspace
{
public:
    /// `told` knows some of the applications and must outlive this; null if there is no such thing.
    explicit UnnamedWorkspace(Workspace* told);
    ~UnnamedWorkspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    /// That the unnamed one was in front is not told; that it is now is.
    [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) override;
    /// Between applications that are not told, nothing is told either.
    void setFrontmostChanged(std::function<void()> changed) override;

private:
    Workspace* m_told;
    std::shared_ptr<RunningApplication> m_unnamed;
};

} // namespace tessly
