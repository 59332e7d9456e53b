#include "SQLiteHook.h"

#include <utility>

namespace tessly::test {

namespace {

std::function<void(sqlite3*)>& hook()
{
    static std::function<void(sqlite3*)> function;
    return function;
}

int connectionOpened(sqlite3* connection, const char** /*error*/, const void* /*api*/)
{
    hook()(connection);
    return SQLITE_OK;
}

// SQLite wants it by this type and calls it by its real one.
const auto entryPoint = reinterpret_cast<void (*)()>(connectionOpened);

} // namespace

SQLiteHook::SQLiteHook(std::function<void(sqlite3*)> opened)
{
    hook() = std::move(opened);
    sqlite3_auto_extension(entryPoint);
}

SQLiteHook::~SQLiteHook()
{
    sqlite3_cancel_auto_extension(entryPoint);
    hook() = nullptr;
}

} // namespace tessly::test
