#include "VFSLayer.h"

namespace tessly::test {

/// What SQLite has for a file. The real one stands behind it in the same block of memory.
struct LayeredFile
{
    sqlite3_file base;
    VFSLayer* layer;
    const char* name;

    static LayeredFile& of(sqlite3_file* file) { return *reinterpret_cast<LayeredFile*>(file); }
    static VFSLayer& layerOf(sqlite3_file* file) { return *of(file).layer; }
    static sqlite3_file* real(sqlite3_file* file)
    {
        return reinterpret_cast<sqlite3_file*>(reinterpret_cast<LayeredFile*>(file) + 1);
    }

    static int close(sqlite3_file* file)
    {
        sqlite3_file* const other = real(file);
        return other->pMethods != nullptr ? other->pMethods->xClose(other) : SQLITE_OK;
    }
    static int read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset)
    {
        const auto answer = layerOf(file).read(of(file).name, size);
        return answer ? *answer : real(file)->pMethods->xRead(real(file), bytes, size, offset);
    }
    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset)
    {
        const auto answer = layerOf(file).write(of(file).name, bytes, size, offset);
        return answer ? *answer : real(file)->pMethods->xWrite(real(file), bytes, size, offset);
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        const auto answer = layerOf(file).truncate(of(file).name, size);
        return answer ? *answer : real(file)->pMethods->xTruncate(real(file), size);
    }
    static int sync(sqlite3_file* file, int flags)
    {
        const auto answer = layerOf(file).sync(of(file).name);
        return answer ? *answer : real(file)->pMethods->xSync(real(file), flags);
    }
    static int fileSize(sqlite3_file* file, sqlite3_int64* size)
    {
        return real(file)->pMethods->xFileSize(real(file), size);
    }
    static int lock(sqlite3_file* file, int level)
    {
        const auto answer = layerOf(file).lock();
        return answer ? *answer : real(file)->pMethods->xLock(real(file), level);
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
        if (const auto answer = layerOf(file).mapShared()) {
            *memory = nullptr;
            return *answer;
        }
        return real(file)->pMethods->xShmMap(real(file), region, size, extend, memory);
    }
    static int shmLock(sqlite3_file* file, int offset, int count, int flags)
    {
        if ((flags & SQLITE_SHM_UNLOCK) == 0 && layerOf(file).lock()) {
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
    table.xClose = LayeredFile::close;
    table.xRead = LayeredFile::read;
    table.xWrite = LayeredFile::write;
    table.xTruncate = LayeredFile::truncate;
    table.xSync = LayeredFile::sync;
    table.xFileSize = LayeredFile::fileSize;
    table.xLock = LayeredFile::lock;
    table.xUnlock = LayeredFile::unlock;
    table.xCheckReservedLock = LayeredFile::checkReservedLock;
    table.xFileControl = LayeredFile::fileControl;
    table.xSectorSize = LayeredFile::sectorSize;
    table.xDeviceCharacteristics = LayeredFile::deviceCharacteristics;
    table.xShmMap = LayeredFile::shmMap;
    table.xShmLock = LayeredFile::shmLock;
    table.xShmBarrier = LayeredFile::shmBarrier;
    table.xShmUnmap = LayeredFile::shmUnmap;
    return table;
}();

VFSLayer& layerOf(sqlite3_vfs* vfs)
{
    return *static_cast<VFSLayer*>(vfs->pAppData);
}

} // namespace

VFSLayer::VFSLayer()
    : m_real(sqlite3_vfs_find(nullptr))
    , m_vfs(*m_real)
{
    // What it does not replace goes to the real one's functions, which make no use of the pointer
    // to themselves but for this.
    m_vfs.zName = "layer";
    m_vfs.szOsFile = static_cast<int>(sizeof(LayeredFile)) + m_real->szOsFile;
    m_vfs.pNext = nullptr;
    m_vfs.pAppData = this;
    m_vfs.xOpen = xOpen;
    // Called with this table, of which the real ones read their own data: they get the real table.
    m_vfs.xDelete = [](sqlite3_vfs* vfs, const char* name, int sync) {
        VFSLayer& self = layerOf(vfs);
        const auto answer = self.remove(name, sync != 0);
        return answer ? *answer : self.m_real->xDelete(self.m_real, name, sync);
    };
    m_vfs.xAccess = [](sqlite3_vfs* vfs, const char* name, int flags, int* result) {
        sqlite3_vfs* const real = layerOf(vfs).m_real;
        return real->xAccess(real, name, flags, result);
    };
    m_vfs.xFullPathname = [](sqlite3_vfs* vfs, const char* name, int size, char* path) {
        sqlite3_vfs* const real = layerOf(vfs).m_real;
        return real->xFullPathname(real, name, size, path);
    };
    m_vfs.xSleep = [](sqlite3_vfs* vfs, int microseconds) {
        layerOf(vfs).sleep(microseconds);
        return microseconds;
    };
    sqlite3_vfs_register(&m_vfs, 1);
}

VFSLayer::~VFSLayer()
{
    sqlite3_vfs_unregister(&m_vfs);
    sqlite3_vfs_register(m_real, 1);
}

int VFSLayer::xOpen(
    sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    VFSLayer& self = layerOf(vfs);
    LayeredFile& layered = LayeredFile::of(file);
    layered.base.pMethods = nullptr;
    layered.layer = &self;
    layered.name = name;
    int opening = flags;
    if (const auto answer = self.open(name, opening)) {
        return *answer;
    }
    const int result =
        self.m_real->xOpen(self.m_real, name, LayeredFile::real(file), opening, outFlags);
    if (LayeredFile::real(file)->pMethods != nullptr) {
        layered.base.pMethods = &methods;
    }
    if (result == SQLITE_OK) {
        self.opened(name);
    }
    return result;
}

} // namespace tessly::test
