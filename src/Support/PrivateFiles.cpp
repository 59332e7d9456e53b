#include "PrivateFiles.h"

#include "FileError.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr mode_t ownerReadsAndWrites = S_IRUSR | S_IWUSR;
constexpr mode_t ownerEnters = S_IRWXU;

} // namespace

void createPrivateFile(const QString& path)
{
    // Never opens a file that exists: closing it would drop the locks that this process holds on
    // it.
    const int file = ::open(
        QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC,
        ownerReadsAndWrites);
    if (file >= 0) {
        ::close(file);
    }
}

bool makeFilePrivate(const QString& path)
{
    return ::chmod(QFile::encodeName(path).constData(), ownerReadsAndWrites) == 0;
}

void createPrivateFolder(const QString& path)
{
    if (::mkdir(QFile::encodeName(path).constData(), ownerEnters) != 0) {
        throw FileError(u"create the folder"_s, path, std::errc(errno));
    }
}

void preparePrivateFolder(const QString& path, Parents parents)
{
    const QFileInfo parent(QFileInfo(path).absolutePath());
    if (parents == Parents::create && !parent.exists()) {
        preparePrivateFolder(parent.filePath(), Parents::create);
    }
    const QByteArray name = QFile::encodeName(path);
    const int refusal = ::mkdir(name.constData(), ownerEnters) == 0 ? 0 : errno;
    if (refusal != 0 && !QFileInfo(path).isDir()) {
        throw FileError(u"create the folder"_s, path, std::errc(refusal));
    }
    if (::chmod(name.constData(), ownerEnters) != 0) {
        throw FileError(u"protect the folder"_s, path, std::errc(errno));
    }
}

} // namespace tessly
