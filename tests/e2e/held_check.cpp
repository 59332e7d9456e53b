// Loaded into the program before SQLite: holds the check of its history for as long as a file
// exists, as a slow disk does. An interrupt ends that, as it ends a check.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <thread>
#include <unistd.h>

struct sqlite3;
struct sqlite3_stmt;

namespace {

std::atomic_bool isInterrupted = false;

template <typename Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int sqlite3_prepare_v2(
    sqlite3* connection, const char* sql, int length, sqlite3_stmt** statement, const char** tail)
{
    static const auto next = original<decltype(&sqlite3_prepare_v2)>("sqlite3_prepare_v2");
    const char* const held = std::getenv("TESSLY_HOLD_CHECK_WHILE");
    if (held != nullptr && std::strstr(sql, "quick_check") != nullptr) {
        while (!isInterrupted && access(held, F_OK) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    return next(connection, sql, length, statement, tail);
}

extern "C" void sqlite3_interrupt(sqlite3* connection)
{
    static const auto next = original<decltype(&sqlite3_interrupt)>("sqlite3_interrupt");
    isInterrupted = true;
    next(connection);
}
