#include "HTMLText.h"

#include <QStringConverter>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// What a tag does to the text around it, where that is more than nothing.
enum class Effect {
    /// Its content is none of the text, and has no tags in it.
    hidden,
    lineBreak,
    /// It stands on lines of its own.
    block,
    /// With a blank line before and behind it.
    paragraph,
    item,
    row,
    cell,
    /// As a paragraph. Its blanks and line ends count.
    preformatted,
};

constexpr auto effects = std::to_array<std::pair<QLatin1StringView, Effect>>({
    {"address"_L1, Effect::block},    {"article"_L1, Effect::block},
    {"aside"_L1, Effect::block},      {"blockquote"_L1, Effect::paragraph},
    {"br"_L1, Effect::lineBreak},     {"caption"_L1, Effect::block},
    {"center"_L1, Effect::block},     {"dd"_L1, Effect::block},
    {"details"_L1, Effect::block},    {"div"_L1, Effect::block},
    {"dl"_L1, Effect::block},         {"dt"_L1, Effect::block},
    {"figcaption"_L1, Effect::block}, {"figure"_L1, Effect::block},
    {"footer"_L1, Effect::block},     {"form"_L1, Effect::block},
    {"h1"_L1, Effect::paragraph},     {"h2"_L1, Effect::paragraph},
    {"h3"_L1, Effect::paragraph},     {"h4"_L1, Effect::paragraph},
    {"h5"_L1, Effect::paragraph},     {"h6"_L1, Effect::paragraph},
    {"header"_L1, Effect::block},     {"hr"_L1, Effect::paragraph},
    {"iframe"_L1, Effect::hidden},    {"li"_L1, Effect::item},
    {"main"_L1, Effect::block},       {"nav"_L1, Effect::block},
    {"noframes"_L1, Effect::hidden},  {"ol"_L1, Effect::block},
    {"option"_L1, Effect::block},     {"p"_L1, Effect::paragraph},
    {"pre"_L1, Effect::preformatted}, {"script"_L1, Effect::hidden},
    {"section"_L1, Effect::block},    {"style"_L1, Effect::hidden},
    {"summary"_L1, Effect::block},    {"table"_L1, Effect::paragraph},
    {"td"_L1, Effect::cell},          {"th"_L1, Effect::cell},
    {"title"_L1, Effect::hidden},     {"tr"_L1, Effect::row},
    {"ul"_L1, Effect::block},
});

/// Those from U+00A0 on, one after the other.
constexpr auto latin1Names = std::to_array<QLatin1StringView>(
    {"nbsp"_L1,   "iexcl"_L1,  "cent"_L1,   "pound"_L1,  "curren"_L1, "yen"_L1,    "brvbar"_L1,
     "sect"_L1,   "uml"_L1,    "copy"_L1,   "ordf"_L1,   "laquo"_L1,  "not"_L1,    "shy"_L1,
     "reg"_L1,    "macr"_L1,   "deg"_L1,    "plusmn"_L1, "sup2"_L1,   "sup3"_L1,   "acute"_L1,
     "micro"_L1,  "para"_L1,   "middot"_L1, "cedil"_L1,  "sup1"_L1,   "ordm"_L1,   "raquo"_L1,
     "frac14"_L1, "frac12"_L1, "frac34"_L1, "iquest"_L1, "Agrave"_L1, "Aacute"_L1, "Acirc"_L1,
     "Atilde"_L1, "Auml"_L1,   "Aring"_L1,  "AElig"_L1,  "Ccedil"_L1, "Egrave"_L1, "Eacute"_L1,
     "Ecirc"_L1,  "Euml"_L1,   "Igrave"_L1, "Iacute"_L1, "Icirc"_L1,  "Iuml"_L1,   "ETH"_L1,
     "Ntilde"_L1, "Ograve"_L1, "Oacute"_L1, "Ocirc"_L1,  "Otilde"_L1, "Ouml"_L1,   "times"_L1,
     "Oslash"_L1, "Ugrave"_L1, "Uacute"_L1, "Ucirc"_L1,  "Uuml"_L1,   "Yacute"_L1, "THORN"_L1,
     "szlig"_L1,  "agrave"_L1, "aacute"_L1, "acirc"_L1,  "atilde"_L1, "auml"_L1,   "aring"_L1,
     "aelig"_L1,  "ccedil"_L1, "egrave"_L1, "eacute"_L1, "ecirc"_L1,  "euml"_L1,   "igrave"_L1,
     "iacute"_L1, "icirc"_L1,  "iuml"_L1,   "eth"_L1,    "ntilde"_L1, "ograve"_L1, "oacute"_L1,
     "ocirc"_L1,  "otilde"_L1, "ouml"_L1,   "divide"_L1, "oslash"_L1, "ugrave"_L1, "uacute"_L1,
     "ucirc"_L1,  "uuml"_L1,   "yacute"_L1, "thorn"_L1,  "yuml"_L1});

constexpr auto otherNames = std::to_array<std::pair<QLatin1StringView, char16_t>>({
    {"amp"_L1, u'&'},        {"apos"_L1, u'\''},      {"bdquo"_L1, u'\u201E'},
    {"bull"_L1, u'\u2022'},  {"emsp"_L1, u'\u2003'},  {"ensp"_L1, u'\u2002'},
    {"euro"_L1, u'\u20AC'},  {"gt"_L1, u'>'},         {"hellip"_L1, u'\u2026'},
    {"larr"_L1, u'\u2190'},  {"ldquo"_L1, u'\u201C'}, {"lsaquo"_L1, u'\u2039'},
    {"lt"_L1, u'<'},         {"lsquo"_L1, u'\u2018'}, {"mdash"_L1, u'\u2014'},
    {"minus"_L1, u'\u2212'}, {"ndash"_L1, u'\u2013'}, {"quot"_L1, u'"'},
    {"rarr"_L1, u'\u2192'},  {"rdquo"_L1, u'\u201D'}, {"rsaquo"_L1, u'\u203A'},
    {"rsquo"_L1, u'\u2019'}, {"sbquo"_L1, u'\u201A'}, {"thinsp"_L1, u'\u2009'},
    {"trade"_L1, u'\u2122'},
});

/// Longer than any reference that is known.
constexpr qsizetype longestReference = 12;

bool isLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

/// White space of HTML: no-break spaces are none.
bool isBlank(QChar c)
{
    return c == u' ' || c == u'\n' || c == u'\t' || c == u'\r' || c == u'\f';
}

std::optional<Effect> effectOf(QStringView tag)
{
    const auto found = std::ranges::find_if(effects, [tag](const auto& effect) {
        return tag.size() == effect.first.size() &&
               tag.compare(effect.first, Qt::CaseInsensitive) == 0;
    });
    return found == effects.end() ? std::nullopt : std::optional(found->second);
}

/// What is meant by a number from 0x80 to 0x9F, here and in documents that call themselves Latin-1:
/// the character of windows-1252 (WHATWG HTML, "numeric character reference end state").
constexpr std::array<char16_t, 32> windows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char32_t ofWindows1252(char32_t c)
{
    return c >= 0x80 && c < 0xA0 ? windows1252[c - 0x80] : c;
}

/// The character of a reference without its "&" and ";".
std::optional<char32_t> referenced(QStringView name)
{
    if (name.startsWith(u'#')) {
        const bool isHexadecimal = name.sliced(1).startsWith(u'x', Qt::CaseInsensitive);
        const QStringView digits = name.sliced(isHexadecimal ? 2 : 1);
        bool isNumber = false;
        const uint number = digits.toUInt(&isNumber, isHexadecimal ? 16 : 10);
        // Which signs and blanks before it would be, too.
        if (!isNumber || !digits.front().isLetterOrNumber()) {
            return std::nullopt;
        }
        const bool isCharacter =
            number != 0 && number <= QChar::LastValidCodePoint && !QChar::isSurrogate(number);
        return isCharacter ? char32_t{ofWindows1252(number)}
                           : char32_t{QChar::ReplacementCharacter};
    }
    const auto isNamed = [name](QLatin1StringView known) { return name == known; };
    const auto other = std::ranges::find_if(
        otherNames, isNamed, [](const auto& reference) { return reference.first; });
    if (other != otherNames.end()) {
        return other->second;
    }
    const auto latin1 = std::ranges::find_if(latin1Names, isNamed);
    if (latin1 != latin1Names.end()) {
        return static_cast<char32_t>(QChar::Nbsp + (latin1 - latin1Names.begin()));
    }
    return std::nullopt;
}

QString decoded(QByteArrayView html)
{
    // UTF-16, which some browsers offer, is known by its first character where it has no mark. An
    // encoding that has a name and is not known is as a rule an extension of Latin-1.
    auto encoding = QStringConverter::encodingForData(html, u'<');
    if (!encoding) {
        encoding = QStringConverter::encodingForHtml(html).value_or(QStringConverter::Latin1);
        // That a document of wider characters says so could not have been read.
        if (*encoding != QStringConverter::Latin1) {
            encoding = QStringConverter::Utf8;
        }
    }
    QStringDecoder decoder(*encoding);
    QString text = decoder(html);
    if (*encoding == QStringConverter::Latin1) {
        for (QChar& c : text) {
            c = static_cast<char16_t>(ofWindows1252(c.unicode()));
        }
    }
    return text;
}

/// Lays the text out. What parts it is written once text follows.
class TextWriter
{
public:
    void character(char32_t c)
    {
        part();
        m_text.append(QChar::fromUcs4(c));
    }
    void blank() { m_hasBlank = !isAtLineStart(); }
    void lineBreak()
    {
        if (!m_isAtCellStart) {
            ++m_breaks;
        }
        m_hasBlank = false;
    }
    /// What follows stands on a line of its own, behind that many breaks.
    void block(int breaks)
    {
        if (!m_isAtCellStart) {
            m_breaks = std::max(m_breaks, breaks);
        }
        m_hasBlank = false;
    }
    void item()
    {
        block(1);
        m_hasBullet = true;
    }
    void endItem()
    {
        block(1);
        m_hasBullet = false;
    }
    void row()
    {
        m_isAtCellStart = false;
        m_cells = 0;
        m_tabs = 0;
        block(1);
    }
    void cell()
    {
        endCell();
        m_tabs += m_cells > 0 ? 1 : 0;
        ++m_cells;
        m_isAtCellStart = true;
    }
    void endCell()
    {
        // What breaks its last line does not part it from the next cell.
        if (m_cells > 0 && !m_isAtCellStart) {
            m_breaks = 0;
        }
        m_hasBlank = false;
    }

    [[nodiscard]] qsizetype length() const { return m_text.size(); }
    [[nodiscard]] QString take() { return std::move(m_text); }

private:
    [[nodiscard]] bool isAtLineStart() const
    {
        return m_text.isEmpty() || m_breaks > 0 || m_tabs > 0 || m_isAtCellStart;
    }
    void part()
    {
        if (!m_text.isEmpty()) {
            m_text.append(QString(m_breaks, u'\n'));
        }
        m_text.append(QString(m_tabs, u'\t'));
        if (std::exchange(m_hasBullet, false)) {
            m_text.append(u"• "_s);
        } else if (m_hasBlank) {
            m_text.append(u' ');
        }
        m_breaks = 0;
        m_tabs = 0;
        m_hasBlank = false;
        m_isAtCellStart = false;
    }

    QString m_text;
    int m_breaks = 0;
    int m_tabs = 0;
    bool m_hasBlank = false;
    bool m_hasBullet = false;
    bool m_isAtCellStart = false;
    /// Of this row, so far.
    int m_cells = 0;
};

/// Goes over the document once, from its beginning to its end.
class Reader
{
public:
    explicit Reader(QStringView html)
        : m_html(html)
    {
    }

    QString text(qsizetype length)
    {
        while (m_at < m_html.size() && m_writer.length() < length) {
            const QChar c = m_html[m_at];
            if (c == u'<' && readMarkup()) {
                continue;
            }
            if (c == u'&' && readReference()) {
                continue;
            }
            readCharacter(c);
        }
        return m_writer.take();
    }

private:
    void readCharacter(QChar c)
    {
        ++m_at;
        if (c.isSurrogate()) {
            const bool isPair =
                c.isHighSurrogate() && m_at < m_html.size() && m_html[m_at].isLowSurrogate();
            m_writer.character(
                isPair ? QChar::surrogateToUcs4(c, m_html[m_at++])
                       : char32_t{QChar::ReplacementCharacter});
            return;
        }
        const bool isPreformatted = m_preformatted > 0;
        if (isPreformatted && c == u'\n') {
            m_writer.lineBreak();
        } else if (isBlank(c) && (!isPreformatted || c == u'\r')) {
            m_writer.blank();
        } else {
            m_writer.character(c.unicode());
        }
    }

    /// False if it is a character like any other.
    bool readReference()
    {
        const QStringView name =
            m_html.sliced(m_at + 1).first(std::min(longestReference, m_html.size() - m_at - 1));
        const qsizetype end = name.indexOf(u';');
        if (end < 0) {
            return false;
        }
        const auto character = referenced(name.first(end));
        if (!character) {
            return false;
        }
        m_writer.character(*character);
        m_at += end + 2;
        return true;
    }

    /// False if it is a character like any other.
    bool readMarkup()
    {
        const QStringView rest = m_html.sliced(m_at);
        if (rest.startsWith("<!--"_L1)) {
            // "<!-->" is a whole comment.
            skipBehind("-->"_L1, m_at + 2);
            return true;
        }
        if (rest.startsWith("<!"_L1) || rest.startsWith("<?"_L1)) {
            skipBehind(">"_L1, m_at);
            return true;
        }
        const bool isEnd = rest.startsWith("</"_L1);
        const qsizetype begin = isEnd ? 2 : 1;
        if (rest.size() <= begin || !isLetter(rest[begin])) {
            return false;
        }
        m_at += begin;
        const QStringView name = readName();
        skipAttributes();
        isEnd ? readEnd(name) : readStart(name);
        return true;
    }

    QStringView readName()
    {
        const qsizetype begin = m_at;
        while (m_at < m_html.size() && !isBlank(m_html[m_at]) && m_html[m_at] != u'/' &&
               m_html[m_at] != u'>') {
            ++m_at;
        }
        return m_html.sliced(begin, m_at - begin);
    }

    /// To the end of the tag. A ">" in quotes, which begin a value, is none.
    void skipAttributes()
    {
        bool isValue = false;
        while (m_at < m_html.size()) {
            const QChar c = m_html[m_at++];
            if (c == u'>') {
                return;
            }
            if (isValue && (c == u'"' || c == u'\'')) {
                skipBehind(QStringView(&c, 1), m_at);
            }
            isValue = c == u'=' || (isValue && isBlank(c));
        }
    }

    template <typename Text>
    void skipBehind(Text end, qsizetype from)
    {
        const qsizetype found = m_html.indexOf(end, from);
        m_at = found < 0 ? m_html.size() : found + end.size();
    }

    void readStart(QStringView name)
    {
        const auto effect = effectOf(name);
        if (!effect) {
            return;
        }
        switch (*effect) {
        case Effect::hidden:
            skipContent(name);
            return;
        case Effect::lineBreak:
            m_writer.lineBreak();
            return;
        case Effect::item:
            m_writer.item();
            return;
        case Effect::cell:
            m_writer.cell();
            return;
        case Effect::preformatted:
            ++m_preformatted;
            m_writer.block(2);
            skipLineEnd();
            return;
        case Effect::block:
        case Effect::paragraph:
        case Effect::row:
            part(*effect);
            return;
        }
    }

    void readEnd(QStringView name)
    {
        const auto effect = effectOf(name);
        if (!effect) {
            return;
        }
        switch (*effect) {
        case Effect::hidden:
        case Effect::lineBreak:
            return;
        case Effect::item:
            m_writer.endItem();
            return;
        case Effect::cell:
            m_writer.endCell();
            return;
        case Effect::preformatted:
            m_preformatted = std::max(0, m_preformatted - 1);
            m_writer.block(2);
            return;
        case Effect::block:
        case Effect::paragraph:
        case Effect::row:
            part(*effect);
            return;
        }
    }

    void part(Effect effect)
    {
        if (effect == Effect::row) {
            m_writer.row();
        } else {
            m_writer.block(effect == Effect::paragraph ? 2 : 1);
        }
    }

    /// The one behind "<pre>" is none of the text.
    void skipLineEnd()
    {
        if (m_html.sliced(m_at).startsWith(u'\r')) {
            ++m_at;
        }
        if (m_html.sliced(m_at).startsWith(u'\n')) {
            ++m_at;
        }
    }

    /// To the tag that ends it.
    void skipContent(QStringView name)
    {
        while (m_at < m_html.size()) {
            skipBehind("</"_L1, m_at);
            const QStringView end = m_html.sliced(m_at);
            if (end.startsWith(name, Qt::CaseInsensitive) &&
                (end.size() == name.size() || !isLetter(end[name.size()]))) {
                m_at += name.size();
                skipAttributes();
                return;
            }
        }
    }

    QStringView m_html;
    qsizetype m_at = 0;
    int m_preformatted = 0;
    TextWriter m_writer;
};

} // namespace

QString textOfHTML(QByteArrayView html, qsizetype length)
{
    const QString document = decoded(html);
    return Reader(document).text(length);
}

} // namespace tessly
