#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

struct sqlite3;

namespace tessly {

/// One open SQLite database. Any thread may use it, one at a time. Statements must go before it.
class SQLiteConnection
{
public:
    /// Opens the file for reading and writing and creates it if there is none. Throws SQLiteError
    /// with the message "Unknown SQLite error" where SQLite has no words of its own. A symbolic
    /// link that leads to the file's folder is followed, one in the place of the file or of its
    /// companions is not: see `requireOwnFiles`.
    explicit SQLiteConnection(const QString& path);

    enum class Access {
        readOnly,
        /// Without locks, and without a look at the write-ahead log: for a file that nobody has
        /// open. Creates no file.
        readOnlyUnshared,
    };
    /// Opens an existing file for reading. Throws as above.
    SQLiteConnection(const QString& path, Access access);

    /// Throws SQLiteError ("cannot open", with words that name the file) if what is in the place of
    /// the file or of one of its companions cannot be the program's own: a link would lead SQLite
    /// to another's file, and a pipe would hold it up for good.
    static void requireOwnFiles(const QString& path);

    /// How long a call waits for a lock that another process holds.
    void setBusyTimeout(std::chrono::milliseconds timeout);

    /// Whether the log and what belongs to it stay as they are when the last connection to the file
    /// closes, in place of being copied into the file and deleted. At first they do not.
    void setKeepsLog(bool keeps);

    /// Runs one or more statements to their ends. Throws SQLiteError.
    void execute(const char* sql);

    /// What SQLite says about the last call that failed.
    [[nodiscard]] QString errorMessage() const;

    /// Its extended result code.
    [[nodiscard]] int errorCode() const;

    /// Whether the disk hands over the whole file and its log. Reads them from end to end, unless
    /// `isStopped` says yes amid that: false then.
    [[nodiscard]] bool isReadable(const std::function<bool()>& isStopped = {}) const;

    [[nodiscard]] bool isInTransaction() const;

    /// How many rows the last statement that changes rows has changed, without what its triggers
    /// did.
    [[nodiscard]] qint64 changes() const;

    /// Whether the path that was opened leads to this file no longer.
    [[nodiscard]] bool hasMoved() const;

    [[nodiscard]] sqlite3* handle() const { return m_handle.get(); }

    /// While it lives, every running statement asks `isStopped` now and then, and ends with the
    /// error "interrupted" once it says yes.
    class StopWatch
    {
    public:
        StopWatch(SQLiteConnection& connection, std::function<bool()> isStopped);
        ~StopWatch();
        StopWatch(const StopWatch&) = delete;
        StopWatch& operator=(const StopWatch&) = delete;

    private:
        friend SQLiteConnection;
        SQLiteConnection& m_connection;
        std::function<bool()> m_isStopped;
    };

    /// While it lives, statements run to their ends, whatever the StopWatch says.
    class Unstopped
    {
    public:
        explicit Unstopped(SQLiteConnection& connection);
        ~Unstopped();
        Unstopped(const Unstopped&) = delete;
        Unstopped& operator=(const Unstopped&) = delete;

    private:
        SQLiteConnection& m_connection;
        StopWatch* m_watch;
    };

private:
    void open(const QString& path, const QByteArray& query, int flags);
    void setStopWatch(StopWatch* watch);

    struct Close
    {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> m_handle;
    StopWatch* m_watch = nullptr;
};

} // namespace tessly
