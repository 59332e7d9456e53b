#pragma once

#include <QByteArray>
#include <QString>

namespace tessly {

/// The full-text query for what a user typed: each run of letters and digits must begin some word.
/// A text without any becomes one quoted string.
[[nodiscard]] QByteArray ftsQuery(const QString& text);

/// The LIKE pattern, escaped by backslashes, for texts that contain `text`.
[[nodiscard]] QByteArray likePattern(const QString& text);

} // namespace tessly
