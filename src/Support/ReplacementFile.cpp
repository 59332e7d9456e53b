#include "ReplacementFile.h"

#include "FileError.h"

#include <QFile>
#include <QUuid>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString action = u"write"_s;
constexpr mode_t ownerReadsAndWrites = S_IRUSR | S_IWUSR;

struct Free
{
    void operator()(char* text) const { std::free(text); }
};

QString shown(const QByteArray& path)
{
    return QFile::decodeName(path);
}

[[noreturn]] void fail(const QByteArray& path)
{
    throw FileError(action, shown(path), std::errc(errno));
}

QByteArray folderOf(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : path.first(std::max<qsizetype>(slash, 1));
}

QByteArray resolved(const QByteArray& path)
{
    const std::unique_ptr<char, Free> real(::realpath(path.constData(), nullptr));
    return real ? QByteArray(real.get()) : QByteArray();
}

/// Where a file of this path would be.
QByteArray placeOf(const QByteArray& path)
{
    struct stat status = {};
    if (::lstat(path.constData(), &status) == 0) {
        const QByteArray place = resolved(path);
        if (place.isEmpty() || ::stat(place.constData(), &status) != 0) {
            if (S_ISLNK(status.st_mode) && errno == ENOENT) {
                throw FileError(action, shown(path), u"is a symbolic link that leads nowhere"_s);
            }
            fail(path);
        }
        if (S_ISDIR(status.st_mode)) {
            throw FileError(action, shown(path), std::errc::is_a_directory);
        }
        if (!S_ISREG(status.st_mode)) {
            throw FileError(action, shown(path), u"is not an ordinary file"_s);
        }
        return place;
    }
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    if (errno != ENOENT || name.isEmpty()) {
        fail(path);
    }
    const QByteArray folder = resolved(folderOf(path));
    if (folder.isEmpty()) {
        fail(path);
    }
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

} // namespace

ReplacementFile::ReplacementFile(const QByteArray& path, Creation creation)
    : m_path(placeOf(path))
    // Short, whatever the length of the other name.
    , m_temporaryPath(
          folderOf(m_path) + "/.tessly-" +
          QUuid::createUuid().toByteArray(QUuid::WithoutBraces).first(8))
{
    create(creation);
}

ReplacementFile::~ReplacementFile()
{
    if (m_isNamed) {
        ::unlink(m_temporaryPath.constData());
    }
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

QString ReplacementFile::path() const
{
    return shown(m_path);
}

void ReplacementFile::create(Creation creation)
{
    if (creation == Creation::unnamedIfPossible) {
        m_descriptor = ::open(
            folderOf(m_path).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, ownerReadsAndWrites);
    }
    if (m_descriptor < 0) {
        m_descriptor = ::open(
            m_temporaryPath.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC,
            ownerReadsAndWrites);
        m_isNamed = m_descriptor >= 0;
    }
    if (m_descriptor < 0) {
        fail();
    }
}

void ReplacementFile::write(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count =
            ::write(m_descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno != EINTR) {
            fail();
        }
        bytes = bytes.sliced(std::max<ssize_t>(count, 0));
    }
}

void ReplacementFile::commit()
{
    if (::fsync(m_descriptor) != 0) {
        fail();
    }
    name();
    if (std::rename(m_temporaryPath.constData(), m_path.constData()) != 0) {
        fail();
    }
    m_isNamed = false;
    // So that the name outlasts a power failure, too.
    const int folder = ::open(folderOf(m_path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isSynced = folder >= 0 && ::fsync(folder) == 0;
    const int reason = errno;
    if (folder >= 0) {
        ::close(folder);
    }
    // There are file systems that sync no folders.
    if (!isSynced && reason != EINVAL) {
        throw FileError(action, path(), std::errc(reason));
    }
}

/// A link is made where no file is, and so cannot replace one by itself.
void ReplacementFile::name()
{
    if (m_isNamed) {
        return;
    }
    const QByteArray handle = "/proc/self/fd/" + QByteArray::number(m_descriptor);
    if (::linkat(
            AT_FDCWD, handle.constData(), AT_FDCWD, m_temporaryPath.constData(),
            AT_SYMLINK_FOLLOW) != 0) {
        fail();
    }
    m_isNamed = true;
}

void ReplacementFile::fail() const
{
    tessly::fail(m_path);
}

} // namespace tessly
