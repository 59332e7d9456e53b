#pragma once

#include "VFSLayer.h"

#include <QByteArray>
#include <QByteArrayList>

namespace tessly::test {

/// Counts what SQLite asks of its files, and makes a call of the test's choice fail as the kernel
/// would.
class FaultVFS final : public VFSLayer
{
public:
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
    [[nodiscard]] const QByteArrayList& openedFiles() const { return m_opened; }
    /// How long SQLite was asked to wait, in microseconds. It does not, here.
    [[nodiscard]] qint64 slept() const { return m_slept; }
    /// How much was read from all files.
    [[nodiscard]] qint64 bytesRead() const { return m_bytesRead; }
    /// How much was written to all files.
    [[nodiscard]] qint64 bytesWritten() const { return m_bytesWritten; }

protected:
    Answer open(const char* file, int& flags) override;
    Answer read(const char* file, int size) override;
    Answer write(const char* file, const void* bytes, int size, sqlite3_int64 offset) override;
    Answer truncate(const char* file, sqlite3_int64 size) override;
    Answer sync(const char* file) override;
    Answer lock() override;
    Answer mapShared() override;
    void sleep(int microseconds) override { m_slept += microseconds; }

private:
    /// What a call answers if it is one that has to fail.
    Answer answer(Call call);
    bool isDue(Call call);
    [[nodiscard]] int code(Call call) const;

    Call m_call = Call::open;
    Fault m_fault = Fault::io;
    Span m_span = Span::once;
    int m_number = 0;
    bool m_hasFailed = false;
    QByteArrayList m_opened;
    qint64 m_bytesRead = 0;
    qint64 m_bytesWritten = 0;
    qint64 m_slept = 0;
};

} // namespace tessly::test
