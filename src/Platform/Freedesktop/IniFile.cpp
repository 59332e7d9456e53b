#include "IniFile.h"

#include <algorithm>
#include <cctype>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr QByteArrayView generalHeader = "[General]";

bool isHexadecimal(QChar character)
{
    return character.unicode() < 0x80 && std::isxdigit(character.unicode());
}

QString encoded(const QString& value)
{
    QString text;
    bool needsQuotes = value.trimmed() != value;
    bool escapesDigits = false;
    for (const QChar character : value) {
        // An escape of hexadecimal digits ends where they end, so a digit that follows one cannot
        // stand for itself.
        const bool isDigitAfterEscape = escapesDigits && isHexadecimal(character);
        escapesDigits = false;
        if (character == u'\\' || character == u'"') {
            text += u'\\';
            text += character;
        } else if (character == u'\n') {
            text += "\\n"_L1;
        } else if (character == u'\r') {
            text += "\\r"_L1;
        } else if (character == u'\t') {
            text += "\\t"_L1;
        } else if (character < u' ' || character == u'\x7f' || isDigitAfterEscape) {
            text += "\\x"_L1 + QString::number(character.unicode(), 16);
            escapesDigits = true;
        } else {
            needsQuotes |= character == u';' || character == u',' || character == u'=';
            text += character;
        }
    }
    return needsQuotes ? u'"' + text + u'"' : text;
}

/// Reads the escape whose backslash is at `index`, which then is at the escape's last character.
QChar decodedEscape(QStringView text, qsizetype& index)
{
    if (++index == text.size()) {
        return {};
    }
    switch (text[index].unicode()) {
    case 'a':
        return u'\a';
    case 'b':
        return u'\b';
    case 'f':
        return u'\f';
    case 'n':
        return u'\n';
    case 'r':
        return u'\r';
    case 't':
        return u'\t';
    case 'v':
        return u'\v';
    case 'x': {
        uint code = 0;
        while (index + 1 < text.size() && isHexadecimal(text[index + 1])) {
            code = (code << 4U) | text.sliced(++index, 1).toUInt(nullptr, 16);
        }
        return QChar(static_cast<char16_t>(code));
    }
    default:
        return text[index];
    }
}

QString decoded(QStringView text)
{
    QString value;
    // How much of the value does not give way when blanks at its end are cut.
    qsizetype kept = 0;
    bool inQuotes = false;
    text = text.trimmed();
    for (qsizetype index = 0; index < text.size(); ++index) {
        const QChar character = text[index];
        if (character == u'"') {
            inQuotes = !inQuotes;
            kept = value.size();
        } else if (character == u'\\') {
            value += decodedEscape(text, index);
            kept = value.size();
        } else if (character == u';' && !inQuotes) {
            break;
        } else {
            value += character;
            if (inQuotes || !character.isSpace()) {
                kept = value.size();
            }
        }
    }
    value.truncate(kept);
    return value;
}

QByteArray line(const QString& key, const QString& value)
{
    return (key + u'=' + encoded(value)).toUtf8();
}

} // namespace

IniFile::IniFile(const QByteArray& text)
    : m_lines(text.split('\n'))
{
    // What follows the last line end is a line only if it holds something.
    if (m_lines.constLast().isEmpty()) {
        m_lines.removeLast();
    }
}

/// Calls `visit(index of the line, key, value as it stands)` for each entry of [General].
template <typename Visit>
void IniFile::forEachEntry(Visit visit) const
{
    constexpr QByteArrayView byteOrderMark = "\xef\xbb\xbf";
    bool isGeneral = true;
    for (qsizetype index = 0; index < m_lines.size(); ++index) {
        QByteArrayView line(m_lines[index]);
        if (index == 0 && line.startsWith(byteOrderMark)) {
            line = line.sliced(byteOrderMark.size());
        }
        line = line.trimmed();
        if (line.startsWith('[')) {
            isGeneral = line.compare(generalHeader, Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (!isGeneral || equals < 1 || line.startsWith(';') || line.startsWith('#')) {
            continue;
        }
        visit(index, QString::fromUtf8(line.first(equals).trimmed()), line.sliced(equals + 1));
    }
}

QHash<QString, QString> IniFile::values() const
{
    QHash<QString, QString> values;
    forEachEntry([&values](qsizetype, const QString& key, QByteArrayView value) {
        values.insert(key, decoded(QString::fromUtf8(value)));
    });
    return values;
}

void IniFile::setValue(const QString& key, const QString& value)
{
    qsizetype existing = -1;
    forEachEntry([&](qsizetype index, const QString& entryKey, QByteArrayView) {
        if (entryKey == key) {
            existing = index;
        }
    });
    if (existing >= 0) {
        m_lines[existing] = line(key, value);
        return;
    }
    const auto header = std::ranges::find_if(m_lines, [](const QByteArray& candidate) {
        return QByteArrayView(candidate).trimmed().compare(generalHeader, Qt::CaseInsensitive) == 0;
    });
    if (header == m_lines.end()) {
        m_lines << generalHeader.toByteArray() << line(key, value);
        return;
    }
    // At the group's end, before the blank lines that set the next group off.
    auto end = std::find_if(std::next(header), m_lines.end(), [](const QByteArray& candidate) {
        return QByteArrayView(candidate).trimmed().startsWith('[');
    });
    while (QByteArrayView(*std::prev(end)).trimmed().isEmpty()) {
        --end;
    }
    m_lines.insert(end, line(key, value));
}

void IniFile::removeValue(const QString& key)
{
    QList<qsizetype> indexes;
    forEachEntry([&](qsizetype index, const QString& entryKey, QByteArrayView) {
        if (entryKey == key) {
            indexes.prepend(index);
        }
    });
    for (const qsizetype index : std::as_const(indexes)) {
        m_lines.removeAt(index);
    }
}

QByteArray IniFile::text() const
{
    return m_lines.isEmpty() ? QByteArray() : m_lines.join('\n') + '\n';
}

} // namespace tessly
