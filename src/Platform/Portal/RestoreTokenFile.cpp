#include "RestoreTokenFile.h"

#include "FileError.h"
#include "LoopAnswer.h"
#include "PrivateFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcToken, "com.brackmoor.tessly.RestoreTokenFile")

/// More than any portal's tokens have.
constexpr std::size_t longestToken = 4096;

class File
{
public:
    File(const QString& path, int flags)
        : m_descriptor(::open(
              QFile::encodeName(path).constData(), flags | O_CLOEXEC | O_NOFOLLOW,
              S_IRUSR | S_IWUSR))
    {
    }
    ~File()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Throws FileError.
QString readToken(const QString& path)
{
    // Opening a pipe would otherwise wait for its writer.
    const File file(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return {};
        }
        throw FileError(u"read"_s, path, std::errc(errno));
    }
    if (const std::optional<QString> objection = objectionTo(file.descriptor())) {
        throw FileError(u"read"_s, path, *objection);
    }
    std::array<char, longestToken> bytes = {};
    const ssize_t count = ::read(file.descriptor(), bytes.data(), bytes.size());
    if (count < 0) {
        throw FileError(u"read"_s, path, std::errc(errno));
    }
    return QString::fromUtf8(bytes.data(), count).trimmed();
}

void writeAll(const File& file, const QByteArray& bytes, const QString& path)
{
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(
            file.descriptor(), bytes.constData() + written,
            static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR) {
            throw FileError(u"write"_s, path, std::errc(errno));
        }
        written += std::max<ssize_t>(count, 0);
    }
    if (::fsync(file.descriptor()) != 0) {
        throw FileError(u"write"_s, path, std::errc(errno));
    }
}

/// Makes the names in the folder of `path` outlast a power failure. Throws FileError.
void syncFolder(const QString& path)
{
    const File folder(QFileInfo(path).path(), O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen() || ::fsync(folder.descriptor()) != 0) {
        throw FileError(u"write"_s, path, std::errc(errno));
    }
}

/// Throws FileError, with the old file as it was.
void replaceToken(const QString& path, const QString& token)
{
    const QString newPath = path + u".new"_s;
    const QByteArray newName = QFile::encodeName(newPath);
    // What a program left that was killed while it wrote.
    ::unlink(newName.constData());
    const File file(newPath, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.isOpen()) {
        throw FileError(u"create"_s, newPath, std::errc(errno));
    }
    try {
        writeAll(file, token.toUtf8(), newPath);
        if (::rename(newName.constData(), QFile::encodeName(path).constData()) != 0) {
            throw FileError(u"write"_s, path, std::errc(errno));
        }
    } catch (const FileError&) {
        ::unlink(newName.constData());
        throw;
    }
    syncFolder(path);
}

/// Throws FileError.
void removeToken(const QString& path)
{
    if (::unlink(QFile::encodeName(path).constData()) == 0) {
        syncFolder(path);
    } else if (errno != ENOENT) {
        throw FileError(u"remove"_s, path, std::errc(errno));
    }
}

} // namespace

RestoreTokenFile::RestoreTokenFile(QString path, std::unique_ptr<Executor> executor)
    : m_path(std::move(path))
    , m_executor(std::move(executor))
{
}

RestoreTokenFile::~RestoreTokenFile() = default;

QFuture<QString> RestoreTokenFile::read()
{
    const LoopAnswer<QString> answer({});
    m_executor->enqueue([answer, path = m_path] {
        try {
            answer(readToken(path));
        } catch (const FileError& error) {
            qCWarning(lcToken).noquote() << error.description();
            answer({});
        }
    });
    return answer.future();
}

void RestoreTokenFile::write(const QString& token)
{
    m_executor->enqueue([token, path = m_path] {
        try {
            if (token.isEmpty()) {
                removeToken(path);
            } else {
                replaceToken(path, token);
            }
        } catch (const FileError& error) {
            // The next start asks the user again.
            qCWarning(lcToken).noquote() << error.description();
        }
    });
}

} // namespace tessly
