#pragma once

#include "Clip.h"

#include <QByteArray>

#include <functional>
#include <variant>

/// The file that a history is exported to and imported from: JSON, one object a line. The first
/// line names the format and its version, the last says that nothing is missing. Each line between
/// is an entry, with the keys that `tessly list --json` uses, its content in base64, and the hash
/// by which the content can be checked:
///
///     {"format":"tessly-history","version":1}
///     {"id":"…","createdAt":…,"lastUsedAt":…,"kind":"text","isPinned":false,"pinOrder":null,
///      "copyCount":1,"sourceAppName":"…","sourceBundleID":"…","contentHash":"…","plainText":"…",
///      "rtf":null,"html":null,"imagePNG":null,"fileURLs":[]}
///     {"end":true}
///
/// Base64, since content is bytes, which JSON has no way to write: UTF-16, text with errors,
/// images. Any thread.
namespace tessly::ExportFormat {

/// The largest content of one entry: what the settings allow at the most.
inline constexpr qint64 largestContent = qint64(250) * 1024 * 1024;
/// Base64 takes a third more; long lists of short addresses a bit more still.
inline constexpr qint64 longestLine = 2 * largestContent;
/// Bytes and lines that are imported at once: what is gathered, and a line that comes to it.
inline constexpr qint64 gatheredBytes = qint64(4) * 1024 * 1024;
inline constexpr qint64 gatheredLines = 500;
inline constexpr qint64 largestBatch = gatheredBytes + longestLine;

using Sink = std::function<void(QByteArrayView)>;

/// With their ends of line.
[[nodiscard]] QByteArray firstLine();
[[nodiscard]] QByteArray lastLine();
/// Writes the line of an entry, piece by piece. The clip must hold its content. Throws what the
/// sink throws, and ClipStoreError `decode` for times that are no numbers.
void write(const Clip& clip, const Sink& sink);

enum class Line {
    first,
    /// The first line of a later version of the format.
    firstOfLater,
    last,
    /// An entry, or nothing at all.
    other,
};
[[nodiscard]] Line kindOf(QByteArrayView line);

/// The entry of a line, which holds its content, or why there is none: every field is there,
/// nothing else is, each is what it must be, and the content is what its hash says. `now`: seconds
/// since 1970; nothing was copied after that.
[[nodiscard]] std::variant<Clip, QString>
parse(QByteArrayView line, double now, qint64 largest = largestContent);

} // namespace tessly::ExportFormat
