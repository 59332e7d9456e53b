#include "JSONFields.h"

#include "MendedUTF8.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace tessly {

namespace {

// More than anybody means; each name is compared with those before it.
constexpr qsizetype mostFields = 64;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

std::optional<ushort> codeUnit(QByteArrayView digits)
{
    bool isNumber = false;
    const ushort unit = digits.toUShort(&isNumber, 16);
    const bool isHexadecimal = std::ranges::all_of(
        digits, [](char digit) { return std::isxdigit(static_cast<uchar>(digit)); });
    return isNumber && isHexadecimal ? std::optional(unit) : std::nullopt;
}

} // namespace

class JSONFields::Parser
{
public:
    explicit Parser(QByteArrayView text)
        : m_text(text)
    {
    }

    [[nodiscard]] std::optional<JSONFields> parse()
    {
        JSONFields fields;
        if (!take('{')) {
            return std::nullopt;
        }
        for (bool isFirst = true; !take('}'); isFirst = false) {
            Field field;
            if (fields.size() == mostFields || (!isFirst && !take(',')) ||
                !takeString(field.name) || fields.find(field.name) != nullptr || !take(':') ||
                !takeValue(field.value)) {
                return std::nullopt;
            }
            fields.m_fields.push_back(std::move(field));
        }
        skipBlanks();
        return m_at == m_text.size() ? std::optional(std::move(fields)) : std::nullopt;
    }

private:
    void skipBlanks()
    {
        while (m_at < m_text.size() && QByteArrayView(" \t\r\n").contains(m_text[m_at])) {
            ++m_at;
        }
    }
    [[nodiscard]] bool take(char character)
    {
        skipBlanks();
        return takeAtOnce(character);
    }
    [[nodiscard]] bool takeAtOnce(char character)
    {
        const bool isThere = m_at < m_text.size() && m_text[m_at] == character;
        m_at += isThere ? 1 : 0;
        return isThere;
    }
    [[nodiscard]] bool takeWord(QByteArrayView word)
    {
        const bool isThere = m_text.sliced(m_at).startsWith(word);
        m_at += isThere ? word.size() : 0;
        return isThere;
    }
    bool takeDigits()
    {
        const qsizetype begin = m_at;
        while (m_at < m_text.size() && isDigit(m_text[m_at])) {
            ++m_at;
        }
        return m_at > begin;
    }

    [[nodiscard]] bool takeString(QByteArrayView& written)
    {
        if (!take('"')) {
            return false;
        }
        const qsizetype begin = m_at;
        while (m_at < m_text.size() && m_text[m_at] != '"') {
            if (static_cast<uchar>(m_text[m_at]) < ' ' || (m_text[m_at] == '\\' && !isEscape())) {
                return false;
            }
            // Behind a backslash a quote is no end.
            m_at += m_text[m_at] == '\\' ? 2 : 1;
        }
        written = m_text.sliced(begin, std::min(m_at, m_text.size()) - begin);
        return takeAtOnce('"');
    }
    [[nodiscard]] bool isEscape() const
    {
        const QByteArrayView rest = m_text.sliced(m_at + 1);
        if (rest.isEmpty()) {
            return false;
        }
        return rest.front() == 'u' ? rest.size() > 4 && codeUnit(rest.sliced(1, 4)).has_value()
                                   : QByteArrayView("\"\\/bfnrt").contains(rest.front());
    }

    [[nodiscard]] bool takeValue(Value& value)
    {
        skipBlanks();
        if (m_at == m_text.size()) {
            return false;
        }
        const qsizetype begin = m_at;
        switch (m_text[m_at]) {
        case '"':
            value.type = Value::Type::string;
            return takeString(value.written);
        case '[':
            value.type = Value::Type::strings;
            return takeStrings(value.strings);
        case 't':
        case 'f':
            value.type = Value::Type::boolean;
            if (!takeWord("true") && !takeWord("false")) {
                return false;
            }
            break;
        case 'n':
            value.type = Value::Type::null;
            if (!takeWord("null")) {
                return false;
            }
            break;
        default:
            value.type = Value::Type::number;
            if (!takeNumber()) {
                return false;
            }
        }
        value.written = m_text.sliced(begin, m_at - begin);
        return true;
    }
    [[nodiscard]] bool takeStrings(std::vector<QByteArrayView>& strings)
    {
        (void)take('[');
        while (!take(']')) {
            if (!strings.empty() && !take(',')) {
                return false;
            }
            if (!takeString(strings.emplace_back())) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] bool takeNumber()
    {
        (void)takeAtOnce('-');
        // A 0 stands alone before the point.
        if (!takeAtOnce('0') && !takeDigits()) {
            return false;
        }
        if (takeAtOnce('.') && !takeDigits()) {
            return false;
        }
        if (takeAtOnce('e') || takeAtOnce('E')) {
            (void)(takeAtOnce('+') || takeAtOnce('-'));
            return takeDigits();
        }
        return true;
    }

    QByteArrayView m_text;
    qsizetype m_at = 0;
};

std::optional<JSONFields> JSONFields::parse(QByteArrayView text)
{
    return Parser(text).parse();
}

const JSONFields::Value* JSONFields::find(QByteArrayView name) const
{
    const auto found = std::ranges::find(m_fields, name, &Field::name);
    return found == m_fields.end() ? nullptr : &found->value;
}

std::optional<QByteArray> JSONFields::text(QByteArrayView written)
{
    if (!written.contains('\\')) {
        QByteArray text = QByteArray::fromRawData(written.data(), written.size());
        return mendedUTF8(text) == text ? std::optional(std::move(text)) : std::nullopt;
    }
    QString text;
    qsizetype at = 0;
    while (at < written.size()) {
        const qsizetype escape = written.indexOf('\\', at);
        const qsizetype end = escape < 0 ? written.size() : escape;
        const QByteArray plain = written.sliced(at, end - at).toByteArray();
        if (mendedUTF8(plain) != plain) {
            return std::nullopt;
        }
        text += QString::fromUtf8(plain);
        if (escape < 0) {
            break;
        }
        const char kind = written[escape + 1];
        at = escape + 2;
        if (kind == 'u') {
            text += QChar(codeUnit(written.sliced(at, 4)).value_or(0));
            at += 4;
            continue;
        }
        constexpr QByteArrayView names = "bfnrt";
        constexpr QByteArrayView meanings = "\b\f\n\r\t";
        const qsizetype known = names.indexOf(kind);
        text += QLatin1Char(known < 0 ? kind : meanings[known]);
    }
    return text.isValidUtf16() ? std::optional(text.toUtf8()) : std::nullopt;
}

} // namespace tessly
