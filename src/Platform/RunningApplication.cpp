#include "RunningApplication.h"

namespace tessly {

QStringList RunningApplication::names() const
{
    const auto id = bundleIdentifier();
    return id ? QStringList(*id) : QStringList();
}

} // namespace tessly
