#pragma once

#include "Clock.h"
#include "FileInspector.h"

#include <atomic>
#include <functional>
#include <memory>

namespace tessly {

/// Looks files up on threads that are left behind where a file system does not answer, as a network
/// share that has gone: such a call cannot be ended from outside. Each ends with its last file.
class ThreadFileInspector final : public FileInspector
{
public:
    /// What is not known by then stays unknown.
    static constexpr Clock::Duration timeout = std::chrono::seconds(2);
    /// So many threads at the most; while all of them wait, nothing more is looked up.
    static constexpr int threads = 4;

    /// Any thread.
    using Look = std::function<FileStatus(const QByteArray& path)>;

    explicit ThreadFileInspector(Clock& clock);
    ThreadFileInspector(Clock& clock, Look look);

    [[nodiscard]] QCoro::Task<std::vector<FileStatus>> inspect(QByteArrayList paths) override;

private:
    Clock& m_clock;
    Look m_look;
    std::shared_ptr<std::atomic<int>> m_busy = std::make_shared<std::atomic<int>>(0);
};

} // namespace tessly
