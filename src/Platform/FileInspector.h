#pragma once

#include <QByteArrayList>
#include <QCoroTask>

#include <vector>

namespace tessly {

/// What is at a path.
struct FileStatus
{
    enum class Kind {
        /// Not found out: the file system does not answer in time, or not to this user.
        unknown,
        /// Not looked up: too many others do not answer.
        notLookedUp,
        /// Nothing any more.
        missing,
        file,
        folder,
        /// A device, a pipe or the like.
        other,
    };
    Kind kind = Kind::unknown;
    /// Of a file.
    qint64 bytes = 0;

    bool operator==(const FileStatus&) const = default;
};

/// Looks files up. Main thread only; a file system that hangs holds nobody up.
class FileInspector
{
public:
    FileInspector() = default;
    FileInspector(const FileInspector&) = delete;
    FileInspector& operator=(const FileInspector&) = delete;
    virtual ~FileInspector() = default;

    /// Of each path, in their order; links are followed. What is no absolute path stays unknown.
    [[nodiscard]] virtual QCoro::Task<std::vector<FileStatus>> inspect(QByteArrayList paths) = 0;
};

} // namespace tessly
