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
    explicit UnnamedWorkspace(const Workspace* told);
    ~UnnamedWorkspace() override;

    [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool openURL(const QUrl& url) override;

private:
    const Workspace* m_told;
    std::shared_ptr<RunningApplication> m_unnamed;
};

} // namespace tessly
