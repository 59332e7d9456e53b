#include "InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

std::unique_ptr<InstanceLock> InstanceLock::acquire(const QString& dataFolder)
{
    const QByteArray path = QFile::encodeName(dataFolder + u"/tessly.lock"_s);
    const int file = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), path.toStdString());
    }
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        close(file);
        if (error == EWOULDBLOCK) {
            return nullptr;
        }
        throw std::system_error(error, std::generic_category(), path.toStdString());
    }
    return std::unique_ptr<InstanceLock>(new InstanceLock(file));
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
