#pragma once

#include "Clip.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tessly {

/// A kind's name for people, such as "Rich Text".
[[nodiscard]] QString kindTitle(ClipKind kind);
/// The name of a kind's symbol.
[[nodiscard]] QString kindSymbol(ClipKind kind);

/// A text as it can be drawn on one line: white space and control characters of all sorts become
/// blanks, what changes the direction of the text around it is left out. Same length at the most.
[[nodiscard]] QString displayLine(const QString& text);

/// `then` as seen from `now` (both seconds since 1970), in English words: "now", "3 minutes
/// ago", "yesterday". Whole units, cut off; days and longer by the local calendar.
[[nodiscard]] QString relativeDate(double then, double now);

/// Kind, source, age and number of copies of a clip, joined by " • ".
[[nodiscard]] QString metadataLine(const Clip& clip, double now);

/// The label of a direct-paste key for a position of 1 to 10: "⌥⇧1" … "⌥⇧9", "⌥⇧0".
[[nodiscard]] QString shortcutLabel(int position);

/// The keys of a key-cap label under their names on this keyboard: "Alt+Shift+1" for "⌥⇧1".
[[nodiscard]] QString keyNames(const QString& label);

/// The same of several key caps, of which some name a range of keys: "Alt+1…9".
[[nodiscard]] QString keyCapNames(const QStringList& keyCaps);

/// "3 items": the footer's count.
[[nodiscard]] QString itemCount(qint64 items);

/// The size of a file for people, in decimal units: "Zero KB", "1 byte", "4 KB", "1.2 MB".
[[nodiscard]] QString byteCount(qint64 bytes);

} // namespace tessly
