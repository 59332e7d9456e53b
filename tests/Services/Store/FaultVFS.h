#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <sqlite3.h>

namespace tessly::test {

/// While it lives, every file that SQLite opens in this process is reached through it: it counts
/// what SQLite asks of the files, and makes a call of the test's choice fail as the kernel would.
/// Connections must be closed before it goes. One thread at a time.
class FaultVFS
{
public:
    FaultVFS();
    ~FaultVFS();
    FaultVFS(const FaultVFS&) = delete;
    FaultVFS& operator=(const FaultVFS&) = delete;

    enum class Call { open, read, write, sync, truncate, shm, lock };
    /// What the kernel answers: EIO, ENOSPC, EROFS.
    enum class Fault { io, noSpace, readOnly };
    enum class Span { once, fromThenOn };

    /// Of the calls of this kind that follow, the `number`-th (from 1) fails, or all from that one
    /// on.
    void fail(Call call, Fault fault, int number, Span span);
    void failNothing() { m_number = 0; }
    /// Whether a call has failed since `fail`.
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

    /// The files that were opened, by their paths; one without a name is "".
    [[nodiscard]] const QByteArrayList& opened() const { return m_opened; }
    /// How long SQLite was asked to wait, in microseconds. It does not, here.
    [[nodiscard]] qint64 slept() const { return m_slept; }
    /// How much was written to all files.
    [[nodiscard]] qint64 bytesWritten() const { return m_bytesWritten; }

private:
    friend struct FaultyFile;

    static int
    open(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags);

    /// Whether this call is one that has to fail.
    bool isDue(Call call);
    [[nodiscard]] int code(Call call) const;

    sqlite3_vfs* m_real;
    sqlite3_vfs m_vfs;
    Call m_call = Call::open;
    Fault m_fault = Fault::io;
    Span m_span = Span::once;
    int m_number = 0;
    bool m_hasFailed = false;
    QByteArrayList m_opened;
    qint64 m_bytesWritten = 0;
    qint64 m_slept = 0;
};

} // namespace tessly::test
