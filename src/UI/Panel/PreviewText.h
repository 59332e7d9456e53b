#pragma once

#include <QByteArrayView>
#include <QString>

namespace tessly {

/// The beginning of a text as the preview shows it.
struct PreviewText
{
    /// How much of a text is shown, in bytes of UTF-8 and in lines: more than anybody reads there.
    static constexpr qsizetype bytesAtMost = qsizetype{8} * 1024;
    static constexpr qsizetype linesAtMost = 300;
    /// And in characters beyond U+FFFF. Most are emoji, each of which is drawn from a large
    /// picture: thousands of them would hold the main thread for half a second.
    static constexpr qsizetype emojiAtMost = 400;

    /// Lines end with a line feed. Control characters are blanks, what changes the direction of the
    /// text around it is left out, and tabs are blanks where characters are of one width.
    QString text = {};
    bool isCut = false;
    /// It looks like code or has columns that are aligned: its characters are to be of one width.
    bool isMonospaced = false;
    /// It has columns: its lines are not to be wrapped.
    bool hasColumns = false;

    bool operator==(const PreviewText&) const = default;
};

[[nodiscard]] PreviewText previewText(QByteArrayView utf8);

} // namespace tessly
