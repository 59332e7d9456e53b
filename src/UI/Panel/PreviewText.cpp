#include "PreviewText.h"

#include "ClipPreview.h"
#include "Presentation.h"

#include <QSet>
#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// In tables, which terminals print, and in code, of which little is seen beside the other.
constexpr qsizetype tableTab = 8;
constexpr qsizetype codeTab = 4;

// Of a longer text there is the whole of the last character.
static_assert(PreviewText::bytesAtMost < ClipPreview::textAtMost);

/// As much of a text as is shown, cut between two characters.
QByteArrayView beginning(QByteArrayView utf8)
{
    if (utf8.size() <= PreviewText::bytesAtMost) {
        return utf8;
    }
    qsizetype end = PreviewText::bytesAtMost;
    // Amid a character, which has three bytes at the most behind its first.
    for (int i = 0; i < 3 && end > 0 && (static_cast<uchar>(utf8[end]) & 0xC0U) == 0x80; ++i) {
        --end;
    }
    return utf8.first(end);
}

/// The length of the part that has no more emoji than are shown.
qsizetype lengthToShow(const QString& text)
{
    qsizetype emoji = 0;
    const auto end = std::ranges::find_if(text, [&emoji](QChar character) {
        return character.isHighSurrogate() && ++emoji > PreviewText::emojiAtMost;
    });
    return end - text.begin();
}

bool endsLine(QChar character)
{
    return character == u'\n' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

/// Without their ends; no more than are shown, and one.
QStringList linesOf(QString text)
{
    text.replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
    QStringList lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size() && lines.size() <= PreviewText::linesAtMost; ++i) {
        if (i == text.size() || endsLine(text.at(i))) {
            lines.append(text.sliced(start, i - start));
            start = i + 1;
        }
    }
    return lines;
}

QString withoutTabs(const QString& line, qsizetype tabWidth)
{
    QString expanded;
    expanded.reserve(line.size());
    for (const QChar character : line) {
        if (character == u'\t') {
            expanded.append(QString(tabWidth - expanded.size() % tabWidth, u' '));
        } else {
            expanded.append(character);
        }
    }
    return expanded;
}

/// The places at which something begins behind a gap of two blanks or more, as in a table.
QSet<qsizetype> columnsOf(const QString& line)
{
    QSet<qsizetype> columns;
    bool hasBegun = false;
    qsizetype blanks = 0;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line.at(i) == u' ') {
            ++blanks;
            continue;
        }
        if (hasBegun && blanks >= 2) {
            columns.insert(i);
        }
        hasBegun = true;
        blanks = 0;
    }
    return columns;
}

bool isTableRow(const QString& line)
{
    const QString row = line.trimmed();
    return row.size() > 2 && row.startsWith(u'|') && row.endsWith(u'|');
}

/// Whether most lines have something at the same place as their neighbour, behind a gap. Lines that
/// are blank do not count.
bool hasAlignedColumns(const QStringList& lines)
{
    int pairs = 0;
    int aligned = 0;
    QSet<qsizetype> columnsBefore;
    bool wasTableRow = false;
    bool isFirst = true;
    for (const QString& line : lines) {
        const QSet<qsizetype> columns = columnsOf(line);
        const bool isRow = isTableRow(line);
        if (!isFirst) {
            ++pairs;
            aligned += columnsBefore.intersects(columns) || (wasTableRow && isRow);
        }
        isFirst = false;
        columnsBefore = columns;
        wasTableRow = isRow;
    }
    return aligned > 0 && aligned * 2 >= pairs;
}

bool looksLikeCode(const QString& line)
{
    constexpr auto endings = std::to_array<QLatin1StringView>(
        {"{"_L1, "}"_L1, ";"_L1, "},"_L1, "("_L1, "["_L1, "],"_L1, "*/"_L1, "\\"_L1, " then"_L1,
         " do"_L1});
    constexpr auto beginnings = std::to_array<QLatin1StringView>(
        {"#include"_L1, "#!"_L1,     "//"_L1,        "/*"_L1,    "$ "_L1,      "# "_L1,
         "def "_L1,     "class "_L1, "import "_L1,   "from "_L1, "return "_L1, "const "_L1,
         "let "_L1,     "var "_L1,   "function "_L1, "if ("_L1,  "for ("_L1,   "<"_L1,
         "{"_L1,        "}"_L1,      "@"_L1,         "+++ "_L1,  "--- "_L1,    "fi"_L1});
    constexpr auto marks = std::to_array<QLatin1StringView>(
        {"=="_L1, "!="_L1, "=>"_L1, "->"_L1, "::"_L1, "&&"_L1, "||"_L1, "()"_L1, "+="_L1, "</"_L1,
         "\": "_L1, " = "_L1, "):"_L1});
    const QString code = line.trimmed();
    const bool isIndented = line.startsWith("    "_L1);
    return isIndented ||
           std::ranges::any_of(endings, [&](auto end) { return code.endsWith(end); }) ||
           std::ranges::any_of(beginnings, [&](auto begin) { return code.startsWith(begin); }) ||
           std::ranges::any_of(marks, [&](auto mark) { return code.contains(mark); });
}

/// Whether half of the lines do, two at the least. A single line is as readable either way.
bool looksLikeCode(const QStringList& lines)
{
    const auto count =
        std::ranges::count_if(lines, [](const QString& line) { return looksLikeCode(line); });
    return count >= 2 && count * 2 >= lines.size();
}

} // namespace

PreviewText previewText(QByteArrayView utf8)
{
    const QByteArrayView shown = beginning(utf8);
    const QString text = QString::fromUtf8(shown);
    const qsizetype length = lengthToShow(text);
    QStringList lines = linesOf(text.first(length));
    PreviewText preview;
    preview.isCut = shown.size() < utf8.size() || length < text.size();
    if (lines.size() > PreviewText::linesAtMost) {
        preview.isCut = true;
        lines.resize(PreviewText::linesAtMost);
    }
    QStringList telling;
    for (const QString& line : std::as_const(lines)) {
        const QString expanded = displayLine(withoutTabs(line, tableTab));
        if (!expanded.trimmed().isEmpty()) {
            telling.append(expanded);
        }
    }
    preview.hasColumns = hasAlignedColumns(telling);
    preview.isMonospaced = preview.hasColumns || looksLikeCode(telling);
    for (QString& line : lines) {
        if (preview.isMonospaced) {
            line = withoutTabs(line, preview.hasColumns ? tableTab : codeTab);
        }
        line = displayLine(line);
    }
    preview.text = lines.join(u'\n');
    return preview;
}

} // namespace tessly
