#include "TerminalText.h"

#include <QChar>
#include <QList>

#include <algorithm>
#include <cwchar>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr char32_t zeroWidthNonJoiner = 0x200C;
constexpr char32_t zeroWidthJoiner = 0x200D;

bool isBlank(char32_t character)
{
    return QChar::isSpace(character) || QChar::category(character) == QChar::Other_Control;
}

bool isInvisible(char32_t character)
{
    // Scripts and emoji are spelled with the joiners.
    return QChar::category(character) == QChar::Other_Format && character != zeroWidthNonJoiner &&
           character != zeroWidthJoiner;
}

int widthOf(char32_t character)
{
    return std::max(wcwidth(static_cast<wchar_t>(character)), 0);
}

} // namespace

QString terminalLine(const QString& text)
{
    QString line;
    line.reserve(text.size());
    // Half a character becomes the replacement character here.
    for (const char32_t character : text.toUcs4()) {
        if (isBlank(character)) {
            line.append(u' ');
        } else if (!isInvisible(character)) {
            line.append(QChar::fromUcs4(character));
        }
    }
    return line;
}

int terminalWidth(const QString& text)
{
    int width = 0;
    for (const char32_t character : text.toUcs4()) {
        width += widthOf(character);
    }
    return width;
}

QString fitted(const QString& text, int columns)
{
    if (terminalWidth(text) <= columns) {
        return text;
    }
    QString beginning;
    // One column is for the mark.
    int left = columns - 1;
    for (const char32_t character : text.toUcs4()) {
        left -= widthOf(character);
        if (left < 0) {
            break;
        }
        beginning.append(QChar::fromUcs4(character));
    }
    return beginning + u'…';
}

QString jsonString(const QString& value)
{
    QString json(u'"');
    for (const char32_t character : value.toUcs4()) {
        const auto encoded = QChar::fromUcs4(character);
        const QStringView units = encoded;
        if (character == U'"' || character == U'\\') {
            json.append(u'\\');
            json.append(units);
        } else if (character == U' ' || (!isBlank(character) && !isInvisible(character))) {
            json.append(units);
        } else {
            for (const QChar unit : units) {
                json.append(u"\\u%1"_s.arg(uint(unit.unicode()), 4, 16, QLatin1Char('0')));
            }
        }
    }
    return json + u'"';
}

} // namespace tessly
