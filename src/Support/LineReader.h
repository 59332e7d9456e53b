#pragma once

#include <QByteArray>
#include <QString>

namespace tessly {

/// Reads lines, or what else stands between separators, from a file, a pipe or whatever else a
/// descriptor is, one after another. Holds no more than one line and one piece of what follows.
class LineReader
{
public:
    enum class Line {
        read,
        /// It was read to its end, and is not kept.
        tooLong,
        /// There are no more.
        none,
    };

    /// The descriptor stays the caller's. `name` is for errors. A line longer than `longest` bytes
    /// is too long. `separator` ends a line.
    LineReader(int descriptor, QString name, qsizetype longest, char separator = '\n');

    /// Appends the next line to `text`, without its end; a line that is too long leaves `text` as
    /// it was. Waits for whoever writes. Throws FileError.
    [[nodiscard]] Line next(QByteArray& text);

    /// That of the line that was read last, counted from 1.
    [[nodiscard]] qint64 number() const { return m_number; }

private:
    /// False at the end.
    [[nodiscard]] bool fill();

    int m_descriptor;
    QString m_name;
    qsizetype m_longest;
    char m_separator;
    QByteArray m_piece;
    /// What of the piece has been read.
    qsizetype m_read = 0;
    qint64 m_number = 0;
};

} // namespace tessly
