#include "MendedUTF8.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly {

TEST(MendedUTF8, validUTF8IsSharedAsItIs)
{
    const QByteArray text = "a\0\xC3\xA9\r\n\xF0\x9F\x98\x80\xEF\xBB\xBF"_ba;
    EXPECT_EQ(mendedUTF8(text).constData(), text.constData());
}

TEST(MendedUTF8, eachInvalidByteBecomesAReplacementCharacter)
{
    EXPECT_EQ(mendedUTF8("a\xFF\xFEz"_ba), "a\xEF\xBF\xBD\xEF\xBF\xBDz"_ba);
}

TEST(MendedUTF8, aByteOrderMarkSurvivesMending)
{
    EXPECT_EQ(mendedUTF8("\xEF\xBB\xBF\xFFz"_ba), "\xEF\xBB\xBF\xEF\xBF\xBDz"_ba);
}

TEST(MendedUTF8, nulsSurviveMending)
{
    EXPECT_EQ(mendedUTF8("a\0\xFF\0z"_ba), "a\0\xEF\xBF\xBD\0z"_ba);
}

TEST(MendedUTF8, whatLooksLikeACharacterButIsNoneIsMended)
{
    const QByteArray replacement = "\xEF\xBF\xBD";
    // A surrogate, an overlong form, a character beyond Unicode: none of their bytes is one.
    EXPECT_EQ(mendedUTF8("\xED\xA0\x80"_ba), replacement.repeated(3));
    EXPECT_EQ(mendedUTF8("\xC0\xAF"_ba), replacement.repeated(2));
    EXPECT_EQ(mendedUTF8("\xE0\x9F\xBF"_ba), replacement.repeated(3));
    EXPECT_EQ(mendedUTF8("\xF4\x90\x80\x80"_ba), replacement.repeated(4));
    EXPECT_EQ(mendedUTF8("\xF5"_ba), replacement);
}

TEST(MendedUTF8, aCharacterThatBreaksOffIsOneReplacement)
{
    EXPECT_EQ(mendedUTF8("euro \xE2\x82"_ba), "euro \xEF\xBF\xBD"_ba);
    EXPECT_EQ(mendedUTF8("\xE2\x82y"_ba), "\xEF\xBF\xBDy"_ba);
    EXPECT_EQ(mendedUTF8("\xF0\x9F\x98\xC3\xA9"_ba), "\xEF\xBF\xBD\xC3\xA9"_ba);
}

TEST(MendedUTF8, validCharactersAroundInvalidOnesStayWhole)
{
    const QByteArray euros =
        QByteArray("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xED\x9F\xBF").repeated(1000);
    EXPECT_EQ(mendedUTF8("\xFF"_ba + euros), "\xEF\xBF\xBD"_ba + euros);
}

TEST(MendedUTF8, everyMendingIsValid)
{
    // All pairs of bytes, in the middle of others.
    for (int pair = 0; pair < 65536; ++pair) {
        QByteArray text = "\xE2\x82"_ba;
        text += static_cast<char>(pair >> 8);
        text += static_cast<char>(pair & 0xFF);
        text += "\x80z";
        ASSERT_TRUE(mendedUTF8(text).isValidUtf8()) << text.toHex().constData();
        ASSERT_TRUE(mendedUTF8(text).endsWith('z'));
    }
}

} // namespace tessly
