#include "FaultVFS.h"

namespace tessly::test {

FaultVFS::Answer FaultVFS::open(const char* file, int& flags)
{
    m_opened.append(file != nullptr ? QByteArray(file) : QByteArray(""));
    if (!isDue(Call::open)) {
        return {};
    }
    if (m_fault != Fault::readOnly || (flags & SQLITE_OPEN_READWRITE) == 0) {
        return code(Call::open);
    }
    // A read-only file system has its files still, but makes no new ones.
    flags &= ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    flags |= SQLITE_OPEN_READONLY;
    return {};
}

FaultVFS::Answer FaultVFS::read(const char* /*file*/, int size)
{
    const Answer result = answer(Call::read);
    m_bytesRead += result ? 0 : size;
    return result;
}

FaultVFS::Answer
FaultVFS::write(const char* /*file*/, const void* /*bytes*/, int size, sqlite3_int64 /*offset*/)
{
    const Answer result = answer(Call::write);
    m_bytesWritten += result ? 0 : size;
    return result;
}

FaultVFS::Answer FaultVFS::truncate(const char* /*file*/, sqlite3_int64 /*size*/)
{
    return answer(Call::truncate);
}

FaultVFS::Answer FaultVFS::sync(const char* /*file*/)
{
    return answer(Call::sync);
}

FaultVFS::Answer FaultVFS::lock()
{
    return answer(Call::lock);
}

FaultVFS::Answer FaultVFS::mapShared()
{
    return answer(Call::shm);
}

void FaultVFS::fail(Call call, Fault fault, int number, Span span)
{
    m_call = call;
    m_fault = fault;
    m_number = number;
    m_span = span;
    m_hasFailed = false;
}

FaultVFS::Answer FaultVFS::answer(Call call)
{
    return isDue(call) ? Answer(code(call)) : Answer();
}

bool FaultVFS::isDue(Call call)
{
    if (m_number == 0 || call != m_call) {
        return false;
    }
    if (m_number > 1) {
        --m_number;
        return false;
    }
    if (m_span == Span::once) {
        m_number = 0;
    }
    m_hasFailed = true;
    return true;
}

int FaultVFS::code(Call call) const
{
    switch (call) {
    case Call::open:
        return SQLITE_CANTOPEN;
    case Call::read:
        return SQLITE_IOERR_READ;
    case Call::write:
        return m_fault == Fault::noSpace ? SQLITE_FULL : SQLITE_IOERR_WRITE;
    case Call::sync:
        return SQLITE_IOERR_FSYNC;
    case Call::truncate:
        return SQLITE_IOERR_TRUNCATE;
    case Call::shm:
        return m_fault == Fault::io        ? SQLITE_IOERR_SHMMAP
               : m_fault == Fault::noSpace ? SQLITE_IOERR_SHMSIZE
                                           : SQLITE_READONLY_CANTINIT;
    case Call::lock:
        return SQLITE_IOERR_LOCK;
    }
    Q_UNREACHABLE();
}

} // namespace tessly::test
