#pragma once

#include <QDir>
#include <QPalette>
#include <QQuickWindow>

namespace tessly::test {

/// Waits until nothing moves any more, then writes a picture of a window.
void savePicture(QQuickWindow& window, const QDir& folder, const QString& name);

/// A dark desktop's.
[[nodiscard]] QPalette darkPalette();

} // namespace tessly::test
