#pragma once

#include <QByteArray>

namespace tessly {

/// The same text as valid UTF-8: each sequence that is not becomes U+FFFD. Valid text comes back
/// sharing its bytes; of other text there is never more than one copy. NULs and byte order marks
/// are characters like any other.
[[nodiscard]] QByteArray mendedUTF8(const QByteArray& text);

} // namespace tessly
