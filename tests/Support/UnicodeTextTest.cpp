#include "UnicodeText.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace tessly::test {

TEST(Trimmed, takesWhiteSpaceFromBothEndsOnly)
{
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \t\r\n\v\fa b\n "), "a b");
    EXPECT_EQ(trimmed(" \n\t "), "");
}

TEST(Trimmed, knowsTheWhiteSpaceOfUnicode)
{
    for (const QByteArray& space :
         {QByteArray("\xc2\x85"), QByteArray("\xc2\xa0"), QByteArray("\xe1\x9a\x80"),
          QByteArray("\xe2\x80\x80"), QByteArray("\xe2\x80\x8a"), QByteArray("\xe2\x80\xa8"),
          QByteArray("\xe2\x80\xa9"), QByteArray("\xe2\x80\xaf"), QByteArray("\xe2\x81\x9f"),
          QByteArray("\xe3\x80\x80")}) {
        EXPECT_EQ(trimmed(space + "a" + space + space), "a") << space.toHex().constData();
    }
    for (const QByteArray& other :
         {QByteArray("\xe2\x80\x8b"), QByteArray("\xef\xbb\xbf"), QByteArray("\0", 1)}) {
        EXPECT_EQ(trimmed(other + " "), other) << other.toHex().constData();
    }
}

TEST(Trimmed, leavesBrokenUTF8AsItIs)
{
    for (const QByteArray& broken :
         {QByteArray("\xa0"), QByteArray("\xff"), QByteArray("\xe3\x80"), QByteArray("\x80\x80")}) {
        EXPECT_EQ(trimmed(' ' + broken + ' '), broken) << broken.toHex().constData();
    }
}

} // namespace tessly::test
