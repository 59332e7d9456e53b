#include "UnnamedWorkspace.h"

#include "UnnamedApplication.h"

#include <utility>

namespace tessly {

UnnamedWorkspace::UnnamedWorkspace(Workspace* told)
    : m_told(told)
    , m_unnamed(std::make_shared<UnnamedApplication>())
{
}

UnnamedWorkspace::~UnnamedWorkspace() = default;

std::shared_ptr<RunningApplication> UnnamedWorkspace::frontmostApplication() const
{
    auto told = m_told != nullptr ? m_told->frontmostApplication() : nullptr;
    return told ? told : m_unnamed;
}

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
UnnamedWorkspace::inFrontDuring(Clock::Duration span)
{
    // This object may go meanwhile.
    const auto unnamed = m_unnamed;
    std::vector<std::shared_ptr<RunningApplication>> inFront;
    if (m_told != nullptr) {
        inFront = co_await m_told->inFrontDuring(span);
    }
    if (inFront.empty()) {
        inFront.push_back(unnamed);
    } else if (!inFront.back()) {
        inFront.back() = unnamed;
    }
    co_return inFront;
}

void UnnamedWorkspace::setFrontmostChanged(std::function<void()> changed)
{
    if (m_told != nullptr) {
        m_told->setFrontmostChanged(std::move(changed));
    }
}

} // namespace tessly
