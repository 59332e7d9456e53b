#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace tessly {

/// Whether an application is on the user's ignore list: by any of its names, or because it is the
/// Linux program that one of the built-in entries stands for. Letter case does not matter.
///
/// `names` as `RunningApplication::names` has them; `ignored` as `AppSettings::ignoredBundleIDs`,
/// in lower case.
[[nodiscard]] bool isIgnoredApplication(const QStringList& names, const QSet<QString>& ignored);

} // namespace tessly
