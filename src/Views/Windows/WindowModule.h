#pragma once

#include <QString>
#include <QUrl>

namespace tessly {

/// A file of the QML module of these windows, whose types are known from then on.
[[nodiscard]] QUrl windowModuleFile(const QString& name);

} // namespace tessly
