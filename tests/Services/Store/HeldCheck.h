#pragma once

#include "SQLiteHook.h"

#include <condition_variable>
#include <mutex>

namespace tessly::test {

/// Holds the first check of a history that begins while it lives, until it is let go: the thread
/// that checks waits, as for a slow disk. Connections must be closed before it goes.
class HeldCheck
{
public:
    HeldCheck();
    ~HeldCheck();
    HeldCheck(const HeldCheck&) = delete;
    HeldCheck& operator=(const HeldCheck&) = delete;

    /// Returns once a check has begun, and waits. Throws if none does within ten seconds.
    void waitUntilBegun();
    void letGo();

private:
    static int authorize(
        void* self, int action, const char* name, const char* value, const char* database,
        const char* trigger);
    void hold();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_hasBegun = false;
    bool m_isLetGo = false;
    SQLiteHook m_hook;
};

} // namespace tessly::test
