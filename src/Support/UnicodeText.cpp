#include "UnicodeText.h"

#include <unicode/uniset.h>

namespace tessly {

namespace {

const icu::UnicodeSet& whiteSpace()
{
    static const icu::UnicodeSet set = [] {
        UErrorCode status = U_ZERO_ERROR;
        icu::UnicodeSet characters;
        characters.applyIntPropertyValue(UCHAR_WHITE_SPACE, 1, status);
        if (U_FAILURE(status)) {
            qFatal("ICU has no data: %s", u_errorName(status));
        }
        characters.freeze();
        return characters;
    }();
    return set;
}

} // namespace

QByteArrayView trimmed(QByteArrayView utf8)
{
    const auto length = [&utf8] { return static_cast<int32_t>(utf8.size()); };
    utf8 = utf8.sliced(whiteSpace().spanUTF8(utf8.data(), length(), USET_SPAN_CONTAINED));
    return utf8.first(whiteSpace().spanBackUTF8(utf8.data(), length(), USET_SPAN_CONTAINED));
}

} // namespace tessly
