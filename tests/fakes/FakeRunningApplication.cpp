#include "FakeRunningApplication.h"

namespace tessly::test {

void FakeRunningApplication::terminate()
{
    m_isTerminated = true;
    m_isActive = false;
}

void FakeRunningApplication::activate()
{
    ++m_activations;
    if (m_asksUntilActive > 0 && --m_asksUntilActive == 0) {
        setActive(true);
    }
}

} // namespace tessly::test
