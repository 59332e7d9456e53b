#include "HeldCheck.h"

#include <chrono>
#include <cstring>
#include <stdexcept>

namespace tessly::test {

// SQLite asks whether a statement may be compiled, on the thread that is to run it.
HeldCheck::HeldCheck()
    : m_hook([this](sqlite3* connection) { sqlite3_set_authorizer(connection, authorize, this); })
{
}

HeldCheck::~HeldCheck()
{
    letGo();
}

int HeldCheck::authorize(
    void* self, int action, const char* name, const char* /*value*/, const char* /*database*/,
    const char* /*trigger*/)
{
    if (action == SQLITE_PRAGMA && std::strcmp(name, "quick_check") == 0) {
        static_cast<HeldCheck*>(self)->hold();
    }
    return SQLITE_OK;
}

void HeldCheck::hold()
{
    std::unique_lock lock(m_mutex);
    m_hasBegun = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_isLetGo; });
}

void HeldCheck::waitUntilBegun()
{
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, std::chrono::seconds(10), [this] { return m_hasBegun; })) {
        throw std::runtime_error("no check has begun");
    }
}

void HeldCheck::letGo()
{
    const std::scoped_lock lock(m_mutex);
    m_isLetGo = true;
    m_changed.notify_all();
}

} // namespace tessly::test
