#include "InstanceLock.h"

#include "FileError.h"
#include "PrivateFiles.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString action = u"open the lock file"_s;

QString lockPath(const QString& dataFolder)
{
    return dataFolder + u"/tessly.lock"_s;
}

/// A descriptor, or -1 with errno. Follows no link and waits for nobody at the end of a pipe.
int openFile(const QString& path, int flags)
{
    return ::open(
        QFile::encodeName(path).constData(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
        S_IRUSR | S_IWUSR);
}

/// The whole file. Locks of this sort belong to an open file, so that they end with it, and can be
/// asked for without being taken.
struct flock wholeFile()
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

std::unique_ptr<InstanceLock> InstanceLock::acquire(const QString& dataFolder)
{
    const QString path = lockPath(dataFolder);
    if (const std::optional<QString> objection = objectionTo(path)) {
        throw FileError(action, path, *objection);
    }
    const int file = openFile(path, O_RDWR | O_CREAT);
    if (file < 0) {
        throw FileError(action, path, std::errc(errno));
    }
    std::unique_ptr<InstanceLock> result(new InstanceLock(file));
    // What was opened may be another file than that which was looked at.
    if (const std::optional<QString> objection = objectionTo(file)) {
        throw FileError(action, path, *objection);
    }
    // Where the file system knows no rights it is as good.
    ::fchmod(file, S_IRUSR | S_IWUSR);
    struct flock lock = wholeFile();
    if (::fcntl(file, F_OFD_SETLK, &lock) != 0) {
        if (errno == EAGAIN || errno == EACCES) {
            return nullptr;
        }
        throw FileError(action, path, std::errc(errno));
    }
    return result;
}

bool InstanceLock::isHeld(const QString& dataFolder)
{
    const QString path = lockPath(dataFolder);
    const int file = objectionTo(path) ? -1 : openFile(path, O_RDONLY);
    if (file < 0) {
        return false;
    }
    struct flock lock = wholeFile();
    const bool isAnswered = ::fcntl(file, F_OFD_GETLK, &lock) == 0;
    ::close(file);
    return isAnswered && lock.l_type != F_UNLCK;
}

InstanceLock::InstanceLock(int file)
    : m_file(file)
{
}

InstanceLock::~InstanceLock()
{
    close(m_file);
}

} // namespace tessly
