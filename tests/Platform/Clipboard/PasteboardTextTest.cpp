#include "PasteboardText.h"

#include <gtest/gtest.h>

#include <QString>

using namespace Qt::StringLiterals;

namespace tessly {

TEST(PasteboardText, latin1BecomesUTF8)
{
    EXPECT_EQ(utf8FromLatin1("caf\xE9 \x80\xFF\0z"_ba), "caf\xC3\xA9 \xC2\x80\xC3\xBF\0z"_ba);
}

TEST(PasteboardText, asciiIsSharedBothWays)
{
    const QByteArray text = "plain\0text"_ba;
    EXPECT_EQ(utf8FromLatin1(text).constData(), text.constData());
    EXPECT_EQ(latin1FromUTF8(text)->constData(), text.constData());
}

TEST(PasteboardText, everyLatin1CharacterGoesThereAndBack)
{
    QByteArray all;
    for (int code = 0; code < 256; ++code) {
        all += static_cast<char>(code);
    }
    EXPECT_EQ(latin1FromUTF8(utf8FromLatin1(all)), all);
}

TEST(PasteboardText, whatIsBeyondLatin1DoesNotFit)
{
    EXPECT_FALSE(fitsLatin1("\xC4\x80"_ba));
    EXPECT_FALSE(fitsLatin1("10 \xE2\x82\xAC"_ba));
    EXPECT_EQ(latin1FromUTF8("10 \xE2\x82\xAC"_ba), std::nullopt);
}

TEST(PasteboardText, whatIsNotUTF8DoesNotFit)
{
    EXPECT_FALSE(fitsLatin1("caf\xE9"_ba));
    EXPECT_FALSE(fitsLatin1("a\xC3"_ba));
    EXPECT_FALSE(fitsLatin1("\x80"_ba));
}

} // namespace tessly
