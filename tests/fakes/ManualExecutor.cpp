#include "ManualExecutor.h"

#include <utility>

namespace tessly::test {

ManualExecutor::~ManualExecutor()
{
    while (runOne()) {
    }
}

void ManualExecutor::enqueue(std::function<void()> job)
{
    m_jobs.push_back(std::move(job));
}

bool ManualExecutor::runOne()
{
    if (m_jobs.empty()) {
        return false;
    }
    const auto job = std::move(m_jobs.front());
    m_jobs.pop_front();
    job();
    return true;
}

} // namespace tessly::test
