#include "IgnoredApplicationNames.h"

#include <algorithm>

namespace tessly {

bool isIgnored(const QStringList& names, const QSet<QString>& ignored)
{
    return std::ranges::any_of(
        names, [&ignored](const QString& name) { return ignored.contains(name.toLower()); });
}

} // namespace tessly
