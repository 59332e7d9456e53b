#include "BusNames.h"

using namespace Qt::StringLiterals;

namespace tessly {

QString busErrorName(ActionOutcome::Case resultCase)
{
    const QString prefix = busInterface + u".Error."_s;
    switch (resultCase) {
    case ActionOutcome::Case::done:
        break;
    case ActionOutcome::Case::copiedOnly:
        return prefix + u"CopiedOnly"_s;
    case ActionOutcome::Case::needsAccess:
        return prefix + u"NeedsAccess"_s;
    case ActionOutcome::Case::notRestored:
        return prefix + u"NotRestored"_s;
    case ActionOutcome::Case::noSuchPosition:
        return prefix + u"NoSuchPosition"_s;
    case ActionOutcome::Case::storeFailed:
        return prefix + u"StoreFailed"_s;
    }
    return prefix + u"Failed"_s;
}

} // namespace tessly
