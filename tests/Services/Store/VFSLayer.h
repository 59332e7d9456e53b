#pragma once

#include <sqlite3.h>

#include <optional>

namespace tessly::test {

/// While it lives, every file that SQLite opens in this process is reached through it. What it does
/// not answer itself goes to the real files. Connections must be closed before it goes. One thread
/// at a time.
class VFSLayer
{
public:
    VFSLayer(const VFSLayer&) = delete;
    VFSLayer& operator=(const VFSLayer&) = delete;

protected:
    /// A result code in place of the real call, or none.
    using Answer = std::optional<int>;

    VFSLayer();
    virtual ~VFSLayer();

    // Files are told by their paths; one without a name by a null pointer.
    virtual Answer open(const char* /*file*/, int& /*flags*/) { return {}; }
    virtual void opened(const char* /*file*/) {}
    virtual Answer remove(const char* /*file*/, bool /*syncsFolder*/) { return {}; }
    virtual Answer read(const char* /*file*/, int /*size*/) { return {}; }
    virtual Answer
    write(const char* /*file*/, const void* /*bytes*/, int /*size*/, sqlite3_int64 /*offset*/)
    {
        return {};
    }
    virtual Answer truncate(const char* /*file*/, sqlite3_int64 /*size*/) { return {}; }
    virtual Answer sync(const char* /*file*/) { return {}; }
    virtual Answer lock() { return {}; }
    virtual Answer mapShared() { return {}; }
    /// SQLite waits; here it does not.
    virtual void sleep(int /*microseconds*/) {}

private:
    friend struct LayeredFile;

    static int
    xOpen(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags);

    sqlite3_vfs* m_real;
    sqlite3_vfs m_vfs;
};

} // namespace tessly::test
