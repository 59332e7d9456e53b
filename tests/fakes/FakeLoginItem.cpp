#include "FakeLoginItem.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

void FakeLoginItem::registerItem()
{
    m_calls << u"register"_s;
    if (m_failsRegistering) {
        throw Failure("Could not register.");
    }
    m_status = Status::enabled;
}

void FakeLoginItem::unregisterItem()
{
    m_calls << u"unregister"_s;
    if (m_failsUnregistering) {
        throw Failure("Could not unregister.");
    }
    m_status = Status::notRegistered;
}

} // namespace tessly::test
