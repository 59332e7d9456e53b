#include "MendedUTF8.h"

#include <optional>

namespace tessly {

namespace {

unsigned char byteAt(const QByteArray& text, qsizetype index)
{
    return static_cast<unsigned char>(text[index]);
}

/// What may follow a lead byte: so many bytes of 80 to BF, the first of them within these bounds,
/// which rule out overlong forms, surrogates and what is beyond Unicode.
struct Continuation
{
    int count = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

/// None for a byte that begins no character.
std::optional<Continuation> continuationOf(unsigned char lead)
{
    if (lead < 0x80) {
        return Continuation{};
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return Continuation{.count = 1};
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return Continuation{
            .count = 2,
            .low = static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
            .high = static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return Continuation{
            .count = 3,
            .low = static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
            .high = static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    }
    return std::nullopt;
}

} // namespace

QByteArray mendedUTF8(const QByteArray& text)
{
    if (text.isValidUtf8()) {
        return text;
    }
    QByteArray mended;
    mended.reserve(text.size());
    qsizetype start = 0;
    while (start < text.size()) {
        const auto continuation = continuationOf(byteAt(text, start));
        qsizetype end = start + 1;
        int missing = continuation ? continuation->count : 0;
        unsigned char low = continuation ? continuation->low : 0;
        unsigned char high = continuation ? continuation->high : 0;
        while (missing > 0 && end < text.size() && byteAt(text, end) >= low &&
               byteAt(text, end) <= high) {
            ++end;
            --missing;
            low = 0x80;
            high = 0xBF;
        }
        // One replacement for the longest beginning of a character, as the Unicode standard
        // advises.
        if (continuation && missing == 0) {
            mended.append(text.constData() + start, end - start);
        } else {
            mended += "\xEF\xBF\xBD";
        }
        start = end;
    }
    return mended;
}

} // namespace tessly
