#pragma once

#include "Clip.h"

#include <QString>

#include <optional>

namespace tessly {

/// A kind's name for people, such as "Rich Text".
[[nodiscard]] QString kindTitle(ClipKind kind);
/// The name of a kind's symbol.
[[nodiscard]] QString kindSymbol(ClipKind kind);

/// `then` as seen from `now` (both seconds since 1970), in words of the user's language: "now",
/// "3 minutes ago", "yesterday".
[[nodiscard]] QString relativeDate(double then, double now);

/// Kind, source, age and number of copies of a clip, joined by " • ".
[[nodiscard]] QString metadataLine(const Clip& clip, double now);

/// The label of a direct-paste key for a position of 1 to 10: "⌥⇧1" … "⌥⇧9", "⌥⇧0".
[[nodiscard]] QString shortcutLabel(int position);

/// "3 items": the footer's count.
[[nodiscard]] QString itemCount(qint64 items);

} // namespace tessly
