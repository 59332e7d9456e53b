#include "FaultVFS.h"

namespace tessly::test {

/// What SQLite has for a file. The real one stands behind it in the same block of memory.
struct FaultyFile
{
    sqlite3_file base;
    FaultVFS* vfs;

    static FaultyFile& of(sqlite3_file* file) { return *reinterpret_cast<FaultyFile*>(file); }
    static sqlite3_file* real(sqlite3_file* file)
    {
        return reinterpret_cast<sqlite3_file*>(reinterpret_cast<FaultyFile*>(file) + 1);
    }
    static bool isDue(sqlite3_file* file, FaultVFS::Call call) { return of(file).vfs->isDue(call); }

    static int close(sqlite3_file* file)
    {
        sqlite3_file* const other = real(file);
        return other->pMethods != nullptr ? other->pMethods->xClose(other) : SQLITE_OK;
    }
    static int read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset)
    {
        if (isDue(file, FaultVFS::Call::read)) {
            return SQLITE_IOERR_READ;
        }
        return real(file)->pMethods->xRead(real(file), bytes, size, offset);
    }
    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset)
    {
        FaultVFS& vfs = *of(file).vfs;
        if (vfs.isDue(FaultVFS::Call::write)) {
            return vfs.code(FaultVFS::Call::write);
        }
        vfs.m_bytesWritten += size;
        return real(file)->pMethods->xWrite(real(file), bytes, size, offset);
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        if (isDue(file, FaultVFS::Call::truncate)) {
            return SQLITE_IOERR_TRUNCATE;
        }
        return real(file)->pMethods->xTruncate(real(file), size);
    }
    static int sync(sqlite3_file* file, int flags)
    {
        if (isDue(file, FaultVFS::Call::sync)) {
            return SQLITE_IOERR_FSYNC;
        }
        return real(file)->pMethods->xSync(real(file), flags);
    }
    static int fileSize(sqlite3_file* file, sqlite3_int64* size)
    {
        return real(file)->pMethods->xFileSize(real(file), size);
    }
    static int lock(sqlite3_file* file, int level)
    {
        if (isDue(file, FaultVFS::Call::lock)) {
            return SQLITE_IOERR_LOCK;
        }
        return real(file)->pMethods->xLock(real(file), level);
    }
    static int unlock(sqlite3_file* file, int level)
    {
        return real(file)->pMethods->xUnlock(real(file), level);
    }
    static int checkReservedLock(sqlite3_file* file, int* isReserved)
    {
        return real(file)->pMethods->xCheckReservedLock(real(file), isReserved);
    }
    static int fileControl(sqlite3_file* file, int operation, void* argument)
    {
        return real(file)->pMethods->xFileControl(real(file), operation, argument);
    }
    static int sectorSize(sqlite3_file* file)
    {
        return real(file)->pMethods->xSectorSize(real(file));
    }
    static int deviceCharacteristics(sqlite3_file* file)
    {
        return real(file)->pMethods->xDeviceCharacteristics(real(file));
    }
    static int shmMap(sqlite3_file* file, int region, int size, int extend, void volatile** memory)
    {
        FaultVFS& vfs = *of(file).vfs;
        if (vfs.isDue(FaultVFS::Call::shm)) {
            *memory = nullptr;
            return vfs.code(FaultVFS::Call::shm);
        }
        return real(file)->pMethods->xShmMap(real(file), region, size, extend, memory);
    }
    static int shmLock(sqlite3_file* file, int offset, int count, int flags)
    {
        if ((flags & SQLITE_SHM_UNLOCK) == 0 && isDue(file, FaultVFS::Call::lock)) {
            return SQLITE_IOERR_SHMLOCK;
        }
        return real(file)->pMethods->xShmLock(real(file), offset, count, flags);
    }
    static void shmBarrier(sqlite3_file* file) { real(file)->pMethods->xShmBarrier(real(file)); }
    static int shmUnmap(sqlite3_file* file, int deletes)
    {
        return real(file)->pMethods->xShmUnmap(real(file), deletes);
    }
};

namespace {

const sqlite3_io_methods methods = [] {
    sqlite3_io_methods table{};
    // Without the calls that map the file itself: every read is a call.
    table.iVersion = 2;
    table.xClose = FaultyFile::close;
    table.xRead = FaultyFile::read;
    table.xWrite = FaultyFile::write;
    table.xTruncate = FaultyFile::truncate;
    table.xSync = FaultyFile::sync;
    table.xFileSize = FaultyFile::fileSize;
    table.xLock = FaultyFile::lock;
    table.xUnlock = FaultyFile::unlock;
    table.xCheckReservedLock = FaultyFile::checkReservedLock;
    table.xFileControl = FaultyFile::fileControl;
    table.xSectorSize = FaultyFile::sectorSize;
    table.xDeviceCharacteristics = FaultyFile::deviceCharacteristics;
    table.xShmMap = FaultyFile::shmMap;
    table.xShmLock = FaultyFile::shmLock;
    table.xShmBarrier = FaultyFile::shmBarrier;
    table.xShmUnmap = FaultyFile::shmUnmap;
    return table;
}();

} // namespace

FaultVFS::FaultVFS()
    : m_real(sqlite3_vfs_find(nullptr))
    , m_vfs(*m_real)
{
    // What it does not replace goes to the real one's functions, which make no use of the pointer
    // to themselves but for this.
    m_vfs.zName = "faulty";
    m_vfs.szOsFile = static_cast<int>(sizeof(FaultyFile)) + m_real->szOsFile;
    m_vfs.pNext = nullptr;
    m_vfs.pAppData = this;
    m_vfs.xOpen = open;
    // Called with this table, of which the real ones read their own data: they get the real table.
    m_vfs.xDelete = [](sqlite3_vfs* vfs, const char* name, int sync) {
        sqlite3_vfs* const real = static_cast<FaultVFS*>(vfs->pAppData)->m_real;
        return real->xDelete(real, name, sync);
    };
    m_vfs.xAccess = [](sqlite3_vfs* vfs, const char* name, int flags, int* result) {
        sqlite3_vfs* const real = static_cast<FaultVFS*>(vfs->pAppData)->m_real;
        return real->xAccess(real, name, flags, result);
    };
    m_vfs.xFullPathname = [](sqlite3_vfs* vfs, const char* name, int size, char* path) {
        sqlite3_vfs* const real = static_cast<FaultVFS*>(vfs->pAppData)->m_real;
        return real->xFullPathname(real, name, size, path);
    };
    m_vfs.xSleep = [](sqlite3_vfs* vfs, int microseconds) {
        static_cast<FaultVFS*>(vfs->pAppData)->m_slept += microseconds;
        return microseconds;
    };
    sqlite3_vfs_register(&m_vfs, 1);
}

FaultVFS::~FaultVFS()
{
    sqlite3_vfs_unregister(&m_vfs);
    sqlite3_vfs_register(m_real, 1);
}

void FaultVFS::fail(Call call, Fault fault, int number, Span span)
{
    m_call = call;
    m_fault = fault;
    m_number = number;
    m_span = span;
    m_hasFailed = false;
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

int FaultVFS::open(
    sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    FaultVFS& self = *static_cast<FaultVFS*>(vfs->pAppData);
    self.m_opened.append(name != nullptr ? QByteArray(name) : QByteArray(""));
    FaultyFile::of(file).base.pMethods = nullptr;
    FaultyFile::of(file).vfs = &self;
    int opening = flags;
    if (self.isDue(Call::open)) {
        if (self.m_fault != Fault::readOnly || (flags & SQLITE_OPEN_READWRITE) == 0) {
            return self.code(Call::open);
        }
        // A read-only file system has its files still, but makes no new ones.
        opening &= ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        opening |= SQLITE_OPEN_READONLY;
    }
    const int result =
        self.m_real->xOpen(self.m_real, name, FaultyFile::real(file), opening, outFlags);
    if (FaultyFile::real(file)->pMethods != nullptr) {
        FaultyFile::of(file).base.pMethods = &methods;
    }
    return result;
}

} // namespace tessly::test
