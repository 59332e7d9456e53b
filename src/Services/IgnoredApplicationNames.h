#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace tessly {

/// Whether one of an application's names is on the ignore list, whose entries are in lower case.
[[nodiscard]] bool isIgnored(const QStringList& names, const QSet<QString>& ignored);

} // namespace tessly
