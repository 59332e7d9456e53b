#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <optional>

namespace tessly {

/// A JSON array of strings without blanks. "/" is written "\/" and characters outside ASCII stand
/// for themselves. `strings` must be valid UTF-8.
[[nodiscard]] QByteArray stringListJSON(const QByteArrayList& strings);

/// The strings of a JSON array of strings, however written; none for anything else.
[[nodiscard]] std::optional<QByteArrayList> stringList(const QByteArray& json);

/// The strings that stand whole in `cut`, the beginning of such an array.
[[nodiscard]] std::optional<QByteArrayList> wholeStrings(const QByteArray& cut);

} // namespace tessly
