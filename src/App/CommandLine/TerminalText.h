#pragma once

#include <QString>

namespace tessly {

/// A text as it can be printed on one line of a terminal: control characters of all sorts, which a
/// terminal might obey, and white space become blanks; what changes the direction of the text
/// around it, or cannot be seen, is left out.
[[nodiscard]] QString terminalLine(const QString& text);

/// How many columns of a terminal a text takes. For text of `terminalLine`.
[[nodiscard]] int terminalWidth(const QString& text);

/// The beginning of a text in at most `columns` columns; "…" stands for what is left out.
[[nodiscard]] QString fitted(const QString& text, int columns);

/// `value` as a JSON string, in quotes. What terminalLine would not print as it stands is escaped.
[[nodiscard]] QString jsonString(const QString& value);

} // namespace tessly
