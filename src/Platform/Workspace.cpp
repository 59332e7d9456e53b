#include "Workspace.h"

namespace tessly {

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
Workspace::inFrontDuring(Clock::Duration /*span*/)
{
    co_return {frontmostApplication()};
}

void Workspace::setFrontmostChanged(std::function<void()> /*changed*/) {}

} // namespace tessly
