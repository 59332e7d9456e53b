#pragma once

#include <QByteArray>
#include <QString>

namespace tessly {

/// How many characters (UTF-16 units) of a preview a row holds: more than the widest row shows.
inline constexpr qsizetype previewLineLength = 400;

/// How many bytes of UTF-8 always hold that many characters, and enough of what follows to see
/// where a grapheme cluster ends.
inline constexpr qsizetype previewLineBytes = previewLineLength * 4;

/// The beginning of `preview`, cut between two grapheme clusters (within one only if that alone is
/// longer than a line).
[[nodiscard]] QString previewLine(QByteArrayView preview);

} // namespace tessly
