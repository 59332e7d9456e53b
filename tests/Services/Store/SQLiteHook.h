#pragma once

#include <sqlite3.h>

#include <functional>

namespace tessly::test {

/// While it lives, gets hold of every SQLite connection that is opened in this process, before its
/// owner does: to make SQLite fail in ways that its owner cannot be asked for.
class SQLiteHook
{
public:
    explicit SQLiteHook(std::function<void(sqlite3*)> opened);
    ~SQLiteHook();
    SQLiteHook(const SQLiteHook&) = delete;
    SQLiteHook& operator=(const SQLiteHook&) = delete;
};

} // namespace tessly::test
