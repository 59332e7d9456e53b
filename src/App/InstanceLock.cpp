#include "InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QByteArray lockPath(const QString& dataFolder)
{
    return QFile::encodeName(dataFolder + u"/tessly.lock"_s);
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
    const QByteArray path = lockPath(dataFolder);
    const int file = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), path.toStdString());
    }
    struct flock lock = wholeFile();
    if (fcntl(file, F_OFD_SETLK, &lock) != 0) {
        const int error = errno;
        close(file);
        if (error == EAGAIN || error == EACCES) {
            return nullptr;
        }
        throw std::system_error(error, std::generic_category(), path.toStdString());
    }
    return std::unique_ptr<InstanceLock>(new InstanceLock(file));
}

bool InstanceLock::isHeld(const QString& dataFolder)
{
    const int file = open(lockPath(dataFolder).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    struct flock lock = wholeFile();
    const bool isAnswered = fcntl(file, F_OFD_GETLK, &lock) == 0;
    close(file);
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
