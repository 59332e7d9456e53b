#include "PasteboardText.h"

#include <algorithm>

namespace tessly {

namespace {

unsigned char byteAt(QByteArrayView text, qsizetype index)
{
    return static_cast<unsigned char>(text[index]);
}

bool isASCII(QByteArrayView text)
{
    return std::ranges::all_of(
        text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

} // namespace

QByteArray utf8FromLatin1(const QByteArray& text)
{
    if (isASCII(text)) {
        return text;
    }
    QByteArray utf8;
    utf8.reserve(text.size() + text.size() / 8);
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) {
            utf8 += byte;
        } else {
            utf8 += static_cast<char>(0xC0 | (code >> 6));
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return utf8;
}

bool fitsLatin1(QByteArrayView utf8)
{
    for (qsizetype index = 0; index < utf8.size(); ++index) {
        const unsigned char lead = byteAt(utf8, index);
        if (lead < 0x80) {
            continue;
        }
        // U+0080 to U+00FF are C2 80 to C3 BF.
        ++index;
        if ((lead != 0xC2 && lead != 0xC3) || index == utf8.size() ||
            (byteAt(utf8, index) & 0xC0) != 0x80) {
            return false;
        }
    }
    return true;
}

std::optional<QByteArray> latin1FromUTF8(const QByteArray& utf8)
{
    if (!fitsLatin1(utf8)) {
        return std::nullopt;
    }
    if (isASCII(utf8)) {
        return utf8;
    }
    QByteArray latin1;
    latin1.reserve(utf8.size());
    for (qsizetype index = 0; index < utf8.size(); ++index) {
        const unsigned char lead = byteAt(utf8, index);
        if (lead < 0x80) {
            latin1 += static_cast<char>(lead);
        } else {
            ++index;
            latin1 += static_cast<char>(((lead & 0x03) << 6) | (byteAt(utf8, index) & 0x3F));
        }
    }
    return latin1;
}

} // namespace tessly
