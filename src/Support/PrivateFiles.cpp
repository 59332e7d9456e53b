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
constexpr mode_t allRights = S_IRWXU | S_IRWXG | S_IRWXO;

/// A handle on what is at a path, whatever is put there later. It is none to the kernel's locks,
/// which closing any other would drop, and opens neither pipes nor devices.
class Handle
{
public:
    /// `flags`: O_NOFOLLOW, O_DIRECTORY.
    Handle(const QString& path, int flags)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC | flags))
    {
    }
    ~Handle()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    /// False, with errno, if it cannot be had.
    [[nodiscard]] bool status(struct stat& status) const
    {
        return m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0;
    }
    /// False, with errno, if that is refused.
    [[nodiscard]] bool changeMode(mode_t mode) const
    {
        // fchmod does not take such handles.
        const QByteArray name = "/proc/self/fd/" + QByteArray::number(m_descriptor);
        return m_descriptor >= 0 && ::chmod(name.constData(), mode) == 0;
    }

private:
    int m_descriptor;
};

std::optional<QString> objectionTo(const struct stat& status)
{
    if (S_ISLNK(status.st_mode)) {
        return u"is a symbolic link"_s;
    }
    if (!S_ISREG(status.st_mode)) {
        return u"is not an ordinary file"_s;
    }
    if (status.st_uid != ::geteuid()) {
        return u"belongs to another user"_s;
    }
    return std::nullopt;
}

/// `links`: O_NOFOLLOW, or 0 to follow one in the folder's place.
void makeFolderPrivate(const QString& path, int links)
{
    const Handle folder(path, O_DIRECTORY | links);
    struct stat status = {};
    if (!folder.status(status) ||
        ((status.st_mode & allRights) != ownerEnters && !folder.changeMode(ownerEnters))) {
        throw FileError(u"protect the folder"_s, path, std::errc(errno));
    }
}

} // namespace

std::optional<QString> objectionTo(const QString& path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? objectionTo(status)
                                                                      : std::nullopt;
}

std::optional<QString> objectionTo(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 ? objectionTo(status) : std::nullopt;
}

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
    const Handle file(path, O_NOFOLLOW);
    struct stat status = {};
    if (!file.status(status) || objectionTo(status)) {
        return false;
    }
    return (status.st_mode & allRights) == ownerReadsAndWrites ||
           file.changeMode(ownerReadsAndWrites);
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
    const int refusal = ::mkdir(QFile::encodeName(path).constData(), ownerEnters) == 0 ? 0 : errno;
    if (refusal != 0 && !QFileInfo(path).isDir()) {
        throw FileError(u"create the folder"_s, path, std::errc(refusal));
    }
    // People keep their data on another disk by a link.
    makeFolderPrivate(path, 0);
}

void makeFolderPrivate(const QString& path)
{
    makeFolderPrivate(path, O_NOFOLLOW);
}

} // namespace tessly
