#include "ThreadExecutor.h"

#include <pthread.h>

namespace tessly {

ThreadExecutor::ThreadExecutor(const std::string& name)
    : m_thread([this] { loop(); })
{
    pthread_setname_np(m_thread.native_handle(), name.substr(0, 15).c_str());
}

ThreadExecutor::~ThreadExecutor()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void ThreadExecutor::enqueue(std::function<void()> job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_one();
}

void ThreadExecutor::loop()
{
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_isStopping || !m_jobs.empty(); });
            if (m_jobs.empty()) {
                return;
            }
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }
}

} // namespace tessly
