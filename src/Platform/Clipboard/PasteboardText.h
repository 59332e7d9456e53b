#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace tessly {

/// ISO 8859-1 as UTF-8. Shares the bytes if all of them are ASCII.
[[nodiscard]] QByteArray utf8FromLatin1(const QByteArray& text);

/// Whether UTF-8 has no character beyond U+00FF. False for what is not UTF-8.
[[nodiscard]] bool fitsLatin1(QByteArrayView utf8);

/// UTF-8 as ISO 8859-1, none if it does not fit. Shares the bytes if all of them are ASCII.
[[nodiscard]] std::optional<QByteArray> latin1FromUTF8(const QByteArray& utf8);

} // namespace tessly
