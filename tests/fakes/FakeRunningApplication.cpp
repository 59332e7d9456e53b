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
    if (m_isTerminated || m_asksUntilActive == 0 || --m_asksUntilActive > 0) {
        return;
    }
    setActive(true);
    if (const auto comesToFront = m_comesToFront) {
        comesToFront();
    }
}

} // namespace tessly::test
