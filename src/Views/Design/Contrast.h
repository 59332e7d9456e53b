#pragma once

#include <QColor>

namespace tessly {

/// The contrast ratio of two opaque colours as WCAG 2 defines it: 1 (none) to 21.
[[nodiscard]] double contrastRatio(const QColor& one, const QColor& other);

/// What is seen of a colour that lies over an opaque one.
[[nodiscard]] QColor over(const QColor& top, const QColor& bottom);

/// The colour with another opacity, 0 to 1.
[[nodiscard]] QColor withOpacity(QColor color, float opacity);

} // namespace tessly
