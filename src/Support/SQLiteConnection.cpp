#include "SQLiteConnection.h"

#include "PrivateFiles.h"
#include "SQLiteError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// Often enough to end a scan within a fraction of a millisecond, seldom enough to cost nothing.
constexpr int instructionsBetweenLooks = 1000;

} // namespace

void SQLiteConnection::Close::operator()(sqlite3* handle) const
{
    sqlite3_close(handle);
}

SQLiteConnection::SQLiteConnection(const QString& path)
{
    open(path, {}, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

SQLiteConnection::SQLiteConnection(const QString& path, Access access)
{
    open(path, access == Access::readOnlyUnshared ? "immutable=1" : "", SQLITE_OPEN_READONLY);
}

void SQLiteConnection::requireOwnFiles(const QString& path)
{
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s, u"-journal"_s}) {
        const QString file = path + companion;
        if (const std::optional<QString> objection = objectionTo(file)) {
            throw SQLiteError(u"“%1” %2"_s.arg(file, *objection), SQLITE_CANTOPEN);
        }
    }
}

void SQLiteConnection::open(const QString& path, const QByteArray& query, int flags)
{
    requireOwnFiles(path);
    // Told not to follow links, SQLite takes none on the whole way.
    const QFileInfo file(path);
    const QString folder = file.dir().canonicalPath();
    const QByteArray name =
        QFile::encodeName(folder.isEmpty() ? path : QDir(folder).filePath(file.fileName()));
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(
        (query.isEmpty() ? name : "file:" + name.toPercentEncoding("/") + '?' + query).constData(),
        &handle,
        flags | (query.isEmpty() ? 0 : SQLITE_OPEN_URI) | SQLITE_OPEN_NOFOLLOW |
            SQLITE_OPEN_FULLMUTEX,
        nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK) {
        const QString message = handle != nullptr ? errorMessage() : QString();
        throw SQLiteError(message.isEmpty() ? u"Unknown SQLite error"_s : message, result);
    }
}

void SQLiteConnection::setBusyTimeout(std::chrono::milliseconds timeout)
{
    sqlite3_busy_timeout(m_handle.get(), static_cast<int>(timeout.count()));
}

void SQLiteConnection::setKeepsLog(bool keeps)
{
    sqlite3_db_config(
        m_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keeps ? 1 : 0,
        static_cast<int*>(nullptr));
}

void SQLiteConnection::execute(const char* sql)
{
    char* text = nullptr;
    const int result = sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, &text);
    const std::unique_ptr<char, decltype(&sqlite3_free)> message(text, sqlite3_free);
    if (result != SQLITE_OK) {
        throw SQLiteError(message ? QString::fromUtf8(message.get()) : errorMessage(), errorCode());
    }
}

QString SQLiteConnection::errorMessage() const
{
    return QString::fromUtf8(sqlite3_errmsg(m_handle.get()));
}

int SQLiteConnection::errorCode() const
{
    return sqlite3_extended_errcode(m_handle.get());
}

bool SQLiteConnection::isReadable(const std::function<bool()>& isStopped) const
{
    QByteArray bytes(1024 * 1024, Qt::Uninitialized);
    for (const int which : {SQLITE_FCNTL_FILE_POINTER, SQLITE_FCNTL_JOURNAL_POINTER}) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(m_handle.get(), "main", which, static_cast<void*>(&file));
        if (file == nullptr || file->pMethods == nullptr) {
            continue;
        }
        sqlite3_int64 size = 0;
        if (file->pMethods->xFileSize(file, &size) != SQLITE_OK) {
            return false;
        }
        for (sqlite3_int64 offset = 0; offset < size; offset += bytes.size()) {
            if (isStopped && isStopped()) {
                return false;
            }
            const auto length = std::min<sqlite3_int64>(bytes.size(), size - offset);
            const int result =
                file->pMethods->xRead(file, bytes.data(), static_cast<int>(length), offset);
            if (result != SQLITE_OK && result != SQLITE_IOERR_SHORT_READ) {
                return false;
            }
        }
    }
    return true;
}

bool SQLiteConnection::isInTransaction() const
{
    return sqlite3_get_autocommit(m_handle.get()) == 0;
}

qint64 SQLiteConnection::changes() const
{
    return sqlite3_changes64(m_handle.get());
}

bool SQLiteConnection::hasMoved() const
{
    int moved = 0;
    return sqlite3_file_control(m_handle.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) ==
               SQLITE_OK &&
           moved != 0;
}

SQLiteConnection::StopWatch::StopWatch(
    SQLiteConnection& connection, std::function<bool()> isStopped)
    : m_connection(connection)
    , m_isStopped(std::move(isStopped))
{
    connection.setStopWatch(this);
}

SQLiteConnection::StopWatch::~StopWatch()
{
    m_connection.setStopWatch(nullptr);
}

SQLiteConnection::Unstopped::Unstopped(SQLiteConnection& connection)
    : m_connection(connection)
    , m_watch(connection.m_watch)
{
    m_connection.setStopWatch(nullptr);
}

SQLiteConnection::Unstopped::~Unstopped()
{
    m_connection.setStopWatch(m_watch);
}

void SQLiteConnection::setStopWatch(StopWatch* watch)
{
    const auto look = [](void* asked) {
        return static_cast<StopWatch*>(asked)->m_isStopped() ? 1 : 0;
    };
    m_watch = watch;
    sqlite3_progress_handler(
        handle(), watch != nullptr ? instructionsBetweenLooks : 0,
        watch != nullptr ? +look : nullptr, watch);
}

} // namespace tessly
