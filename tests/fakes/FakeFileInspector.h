#pragma once

#include "FileInspector.h"
#include "Gate.h"

#include <map>
#include <vector>

namespace tessly::test {

/// A file system of a test's own: what was not put there is missing.
class FakeFileInspector final : public FileInspector
{
public:
    void put(const QByteArray& path, FileStatus status) { m_files[path] = status; }
    [[nodiscard]] Gate& gate() { return m_gate; }
    /// What was asked for, in order.
    [[nodiscard]] const std::vector<QByteArrayList>& questions() const { return m_questions; }

    [[nodiscard]] QCoro::Task<std::vector<FileStatus>> inspect(QByteArrayList paths) override
    {
        m_questions.push_back(paths);
        co_await m_gate.pass();
        std::vector<FileStatus> statuses;
        for (const QByteArray& path : paths) {
            const auto found = m_files.find(path);
            statuses.push_back(
                found != m_files.end() ? found->second
                                       : FileStatus{.kind = FileStatus::Kind::missing});
        }
        co_return statuses;
    }

private:
    std::map<QByteArray, FileStatus> m_files;
    std::vector<QByteArrayList> m_questions;
    Gate m_gate;
};

} // namespace tessly::test
