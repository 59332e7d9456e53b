#pragma once

#include <QString>

#include <functional>

namespace tessly {

/// A key-cap label as it can be drawn: symbols for which there is no glyph give way to the names of
/// their keys.
[[nodiscard]] QString drawableKeys(const QString& label, const std::function<bool(QChar)>& canDraw);

/// The same, with the glyphs of the fonts that are installed.
[[nodiscard]] QString drawableKeys(const QString& label);

} // namespace tessly
