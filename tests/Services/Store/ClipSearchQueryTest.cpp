#include "ClipSearchQuery.h"
#include "QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

TEST(FTSQuery, isAPrefixTermForEachRunOfLettersAndNumbers)
{
    EXPECT_EQ(ftsQuery(u"Hello Wor"_s), R"("hello"* AND "wor"*)");
    EXPECT_EQ(ftsQuery(u"don't stop"_s), R"("don"* AND "t"* AND "stop"*)");
    EXPECT_EQ(ftsQuery(u"foo.bar-x"_s), R"("foo"* AND "bar"* AND "x"*)");
    EXPECT_EQ(ftsQuery(u"  a  "_s), R"("a"*)");
    EXPECT_EQ(ftsQuery(u"2½ ⅷ"_s), R"("2½"* AND "ⅷ"*)");
    EXPECT_EQ(ftsQuery(u"ÉCOLE Ünd"_s), R"("école"* AND "ünd"*)");
    EXPECT_EQ(ftsQuery(u"日本語、𐐀"_s), R"("日本語"* AND "𐐨"*)");
}

TEST(FTSQuery, keepsAnAccentWithItsLetter)
{
    EXPECT_EQ(ftsQuery(u"e\u0301tude"_s), "\"e\u0301tude\"*");
    EXPECT_EQ(ftsQuery(u"a\u0301 \u0301b"_s), "\"a\u0301\"* AND \"b\"*");
}

TEST(FTSQuery, isTheQuotedTextWhenThereIsNeitherLetterNorNumber)
{
    EXPECT_EQ(ftsQuery(u"!!"_s), R"("!!")");
    EXPECT_EQ(ftsQuery(u"?!"_s), R"("?!")");
    EXPECT_EQ(ftsQuery(u"\"-\""_s), R"("""-""")");
    EXPECT_EQ(ftsQuery(u"👍 *"_s), R"("👍 *")");
}

TEST(FTSQuery, doesNotEndAtANUL)
{
    EXPECT_EQ(ftsQuery(u"?\0!"_s), "\"? !\"");
    EXPECT_EQ(ftsQuery(u"a\0b"_s), "\"a\"* AND \"b\"*");
}

TEST(FTSQuery, leavesNoOperatorsToTheUser)
{
    EXPECT_EQ(ftsQuery(u"a OR b"_s), R"("a"* AND "or"* AND "b"*)");
    EXPECT_EQ(ftsQuery(u"a\" NOT (b*"_s), R"("a"* AND "not"* AND "b"*)");
}

TEST(LikePattern, escapesWhatHasAMeaningInPatterns)
{
    EXPECT_EQ(likePattern(u"50%_off"_s), R"(%50\%\_off%)");
    EXPECT_EQ(likePattern(u"C:\\x"_s), R"(%C:\\x%)");
    EXPECT_EQ(likePattern(u"\\%"_s), R"(%\\\%%)");
    EXPECT_EQ(likePattern(u"Été"_s), "%Été%");
}

} // namespace tessly::test
