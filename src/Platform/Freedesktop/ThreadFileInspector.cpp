#include "ThreadFileInspector.h"

#include <QCoroFuture>
#include <QPromise>

#include <cerrno>
#include <mutex>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

namespace tessly {

namespace {

FileStatus statusOf(const QByteArray& path)
{
    if (!path.startsWith('/')) {
        // It would be looked for where the program was started.
        return {};
    }
    struct stat found = {};
    if (::stat(path.constData(), &found) != 0) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        return {.kind = isMissing ? FileStatus::Kind::missing : FileStatus::Kind::unknown};
    }
    if (S_ISDIR(found.st_mode)) {
        return {.kind = FileStatus::Kind::folder};
    }
    if (S_ISREG(found.st_mode)) {
        return {.kind = FileStatus::Kind::file, .bytes = found.st_size};
    }
    return {.kind = FileStatus::Kind::other};
}

/// What has been found out so far; shared by the thread that looks and the one that waits.
class Findings
{
public:
    explicit Findings(qsizetype count)
        : m_found(static_cast<std::size_t>(count))
    {
        m_promise.start();
    }

    [[nodiscard]] QFuture<std::vector<FileStatus>> future() const { return m_promise.future(); }

    /// False if it is not waited for any more.
    bool add(std::size_t index, FileStatus status)
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_isDone) {
            m_found[index] = status;
        }
        return !m_isDone;
    }

    /// Whoever comes first ends the wait.
    void finish()
    {
        const std::scoped_lock lock(m_mutex);
        if (!std::exchange(m_isDone, true)) {
            m_promise.addResult(m_found);
            m_promise.finish();
        }
    }

private:
    std::mutex m_mutex;
    bool m_isDone = false;
    std::vector<FileStatus> m_found;
    QPromise<std::vector<FileStatus>> m_promise;
};

} // namespace

ThreadFileInspector::ThreadFileInspector(Clock& clock)
    : ThreadFileInspector(clock, statusOf)
{
}

ThreadFileInspector::ThreadFileInspector(Clock& clock, Look look)
    : m_clock(clock)
    , m_look(std::move(look))
{
}

QCoro::Task<std::vector<FileStatus>> ThreadFileInspector::inspect(QByteArrayList paths)
{
    const auto findings = std::make_shared<Findings>(paths.size());
    const auto future = findings->future();
    const auto busy = m_busy;
    const auto lookAll = [findings, busy, paths, look = m_look] {
        for (qsizetype i = 0; i < paths.size(); ++i) {
            if (!findings->add(static_cast<std::size_t>(i), look(paths.at(i)))) {
                break;
            }
        }
        findings->finish();
        --*busy;
    };
    if (++*busy > threads) {
        --*busy;
        co_return std::vector(
            static_cast<std::size_t>(paths.size()),
            FileStatus{.kind = FileStatus::Kind::notLookedUp});
    } else {
        try {
            std::thread(lookAll).detach();
        } catch (const std::system_error&) {
            // No thread can be had.
            --*busy;
            findings->finish();
        }
    }
    const auto deadline = m_clock.after(timeout, [findings] { findings->finish(); });
    co_return co_await future;
}

} // namespace tessly
