#include "IniUserDefaults.h"

#include "IniFile.h"
#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <glib.h>
#include <glib/gstdio.h>

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(logCategory, "com.brackmoor.tessly.IniUserDefaults")

constexpr int folderMode = 0700;
constexpr int fileMode = 0600;

[[noreturn]] void fail(const QString& what)
{
    throw std::runtime_error(what.toStdString());
}

/// Throws std::runtime_error unless it is an ordinary file that the user or the system has made.
void requireSettings(const QString& path, const struct stat& status)
{
    if (!S_ISREG(status.st_mode)) {
        fail(path + u" is not a file"_s);
    }
    if (status.st_uid != ::geteuid() && status.st_uid != 0) {
        fail(path + u" belongs to another user"_s);
    }
}

/// Whether the path, or a folder on its way, is a link to what is not there (yet): the disk with
/// the settings may not be mounted.
bool leadsNowhere(const QString& path)
{
    for (QString part = QDir::cleanPath(path); !part.isEmpty();
         part = part.left(part.lastIndexOf(u'/'))) {
        const QByteArray name = QFile::encodeName(part);
        struct stat status = {};
        if (::lstat(name.constData(), &status) == 0) {
            return S_ISLNK(status.st_mode) && ::stat(name.constData(), &status) != 0;
        }
    }
    return false;
}

/// The file's bytes; none if there is no file. Throws std::runtime_error.
std::optional<QByteArray> contents(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::stat(name.constData(), &status) != 0) {
        const int error = errno;
        if (leadsNowhere(path)) {
            fail(path + u" leads to no file"_s);
        }
        if (error == ENOENT || error == ENOTDIR) {
            return std::nullopt;
        }
        errno = error;
        fail(u"cannot read "_s + path + u": "_s + qt_error_string(errno));
    }
    // Before it is opened, which would wait for a pipe's writer, and once more when it is.
    requireSettings(path, status);
    const int descriptor = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    QFile file;
    if (descriptor < 0 ||
        !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        fail(u"cannot read "_s + path + u": "_s + qt_error_string(errno));
    }
    if (::fstat(descriptor, &status) == 0) {
        requireSettings(path, status);
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        fail(u"cannot read "_s + path + u": "_s + file.errorString());
    }
    return bytes;
}

/// Puts a new file in the place of the one at `path`. Throws std::runtime_error, with the old one
/// as it was.
void replaceContents(const QString& path, const QByteArray& bytes)
{
    const QFileInfo info(path);
    if (g_mkdir_with_parents(QFile::encodeName(info.path()).constData(), folderMode) != 0) {
        fail(u"cannot make "_s + info.path() + u": "_s + qt_error_string(errno));
    }
    // Through a link, so that a settings file that is kept elsewhere stays there.
    const QString target = info.exists() ? info.canonicalFilePath() : path;
    if (const std::optional<QString> objection = objectionTo(target)) {
        fail(target + u' ' + *objection);
    }
    if (info.exists()) {
        // Newer GLib gives the new file the mode of the old one. Some file systems have no modes.
        static_cast<void>(QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner));
    }
    GError* error = nullptr;
    if (!g_file_set_contents_full(
            QFile::encodeName(target).constData(), bytes.constData(),
            static_cast<gssize>(bytes.size()), G_FILE_SET_CONTENTS_CONSISTENT, fileMode, &error)) {
        const QString message = QString::fromUtf8(error->message);
        g_error_free(error);
        fail(message);
    }
}

} // namespace

/// The executor's half.
class IniUserDefaults::Writer
{
public:
    explicit Writer(QString path)
        : m_path(std::move(path))
    {
    }

    /// Any thread. A removed key has no value.
    void add(const QString& key, const std::optional<QString>& value)
    {
        const std::scoped_lock lock(m_mutex);
        m_added.insert(key, value);
    }

    /// One thread at a time.
    void write()
    {
        if (!takeAdded()) {
            // An earlier call has written it along with its own.
            return;
        }
        try {
            IniFile file(contents(m_path).value_or(QByteArray()));
            for (const auto& [key, value] : m_unwritten.asKeyValueRange()) {
                if (value) {
                    file.setValue(key, *value);
                } else {
                    file.removeValue(key);
                }
            }
            replaceContents(m_path, file.text());
            m_unwritten.clear();
            m_hasLoggedFailure = false;
        } catch (const std::runtime_error& error) {
            if (!std::exchange(m_hasLoggedFailure, true)) {
                qCWarning(logCategory, "Settings cannot be saved: %s", error.what());
            }
        }
    }

private:
    bool takeAdded()
    {
        const std::scoped_lock lock(m_mutex);
        m_unwritten.insert(m_added);
        return !std::exchange(m_added, {}).isEmpty();
    }

    const QString m_path;
    std::mutex m_mutex;
    QHash<QString, std::optional<QString>> m_added;
    /// What the file does not have yet.
    QHash<QString, std::optional<QString>> m_unwritten;
    bool m_hasLoggedFailure = false;
};

IniUserDefaults::IniUserDefaults(const QString& path, std::unique_ptr<Executor> executor)
    : m_writer(std::make_shared<Writer>(path))
    , m_executor(std::move(executor))
{
    try {
        if (const std::optional<QByteArray> bytes = contents(path)) {
            m_values = IniFile(*bytes).values();
        }
    } catch (const std::runtime_error& error) {
        m_couldBeRead = false;
        qCWarning(logCategory, "Settings start from their defaults: %s", error.what());
    }
}

IniUserDefaults::~IniUserDefaults() = default;

void IniUserDefaults::registerDefaults(const QVariantMap& defaults)
{
    m_defaults.insert(defaults);
}

qint64 IniUserDefaults::integer(const QString& key) const
{
    const std::optional<QString> text = string(key);
    return text ? text->toLongLong() : 0;
}

bool IniUserDefaults::boolean(const QString& key) const
{
    const std::optional<QString> text = string(key);
    return text && (text->compare("true"_L1, Qt::CaseInsensitive) == 0 || text->toDouble() != 0);
}

std::optional<QString> IniUserDefaults::string(const QString& key) const
{
    if (const auto stored = m_values.constFind(key); stored != m_values.cend()) {
        return *stored;
    }
    if (const auto registered = m_defaults.constFind(key); registered != m_defaults.cend()) {
        return registered->toString();
    }
    return std::nullopt;
}

void IniUserDefaults::setInteger(const QString& key, qint64 value)
{
    set(key, QString::number(value));
}

void IniUserDefaults::setBoolean(const QString& key, bool value)
{
    set(key, value ? u"true"_s : u"false"_s);
}

void IniUserDefaults::setString(const QString& key, const QString& value)
{
    set(key, value);
}

void IniUserDefaults::remove(const QString& key)
{
    m_values.remove(key);
    change(key, std::nullopt);
}

void IniUserDefaults::set(const QString& key, const QString& value)
{
    m_values.insert(key, value);
    change(key, value);
}

void IniUserDefaults::change(const QString& key, const std::optional<QString>& value)
{
    m_writer->add(key, value);
    m_executor->enqueue([writer = m_writer] { writer->write(); });
}

} // namespace tessly
