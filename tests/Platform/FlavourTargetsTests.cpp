#include "FlavourTargets.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly {

TEST(FlavourTargets, plainTextIsAskedForInTheFormThatNobodyRewritesFirst)
{
    const auto targets = targetsOf(Flavour::plainText);
    EXPECT_EQ(
        std::vector<QByteArrayView>(targets.begin(), targets.end()),
        (std::vector<QByteArrayView>{
            "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"}));
}

TEST(FlavourTargets, theCharsetIsSpelledInAnyCase)
{
    EXPECT_TRUE(isSameTarget("text/plain;charset=UTF-8", "text/plain;charset=utf-8"));
    EXPECT_TRUE(isSameTarget("Text/Plain;Charset=Utf-8", "text/plain;charset=utf-8"));
    EXPECT_FALSE(isSameTarget("text/plain;charset=utf-16", "text/plain;charset=utf-8"));
    EXPECT_FALSE(isSameTarget("utf8_string", "UTF8_STRING"));
    EXPECT_FALSE(isSameTarget("TEXT/PLAIN", "text/plain"));
}

TEST(FlavourTargets, aPasswordManagersHintConcealsWhateverElseIsOffered)
{
    const auto types = typeNames({"UTF8_STRING", "x-kde-passwordManagerHint"});
    EXPECT_TRUE(types.contains(Pasteboard::concealedType));
    EXPECT_TRUE(types.contains(u"x-kde-passwordManagerHint"_s));
    EXPECT_FALSE(typeNames({"UTF8_STRING"}).contains(Pasteboard::concealedType));
}

TEST(FlavourTargets, aURIListGivesItsFilesOnly)
{
    const QByteArray list = "# a comment\r\nfile:///a%20b\r\n\r\nhttp://example.com/\r\n"
                            "file://host/c\r\nFILE:///d\r\n  file:///e  \r\nfile:relative\r\n"
                            "file:/f";
    EXPECT_EQ(
        fileURLs("text/uri-list", list),
        QByteArrayList({"file:///a%20b", "file://host/c", "FILE:///d", "file:///e", "file:/f"}));
}

TEST(FlavourTargets, aURIListMayEndItsLinesWithLFAndItselfWithNUL)
{
    EXPECT_EQ(
        fileURLs("text/uri-list", "file:///a\nfile:///b\n"_ba),
        QByteArrayList({"file:///a", "file:///b"}));
    EXPECT_EQ(fileURLs("text/uri-list", "file:///a\r\n\0"_ba), QByteArrayList({"file:///a"}));
    EXPECT_EQ(fileURLs("text/uri-list", "file:///a\0"_ba), QByteArrayList({"file:///a"}));
}

TEST(FlavourTargets, copiedFilesBeginAfterTheOperation)
{
    for (const char* target : {"x-special/gnome-copied-files", "x-special/mate-copied-files"}) {
        EXPECT_EQ(
            fileURLs(target, "cut\nfile:///a\nfile:///b"_ba),
            QByteArrayList({"file:///a", "file:///b"}));
        // The first line is the operation, whatever it says.
        EXPECT_EQ(fileURLs(target, "file:///a\nfile:///b"_ba), QByteArrayList({"file:///b"}));
        EXPECT_EQ(fileURLs(target, "copy"_ba), QByteArrayList());
        EXPECT_EQ(fileURLs(target, QByteArray()), QByteArrayList());
    }
}

TEST(FlavourTargets, filesAreCountedByTheirURLs)
{
    EXPECT_EQ(limitedFileURLs({"file:///a", "file:///b"}, 18).status, ReadStatus::read);
    EXPECT_EQ(limitedFileURLs({"file:///a", "file:///b"}, 17).status, ReadStatus::tooLarge);
    EXPECT_EQ(limitedFileURLs({}, 17).status, ReadStatus::absent);
}

TEST(FlavourTargets, aPNGIsKnownByItsSignature)
{
    EXPECT_TRUE(isPNG("\x89PNG\r\n\x1a\nIHDR"_ba));
    EXPECT_FALSE(isPNG("\x89PNG\n\x1a\nIHDR"_ba));
    EXPECT_FALSE(isPNG("PNG"_ba));
    EXPECT_FALSE(isPNG(QByteArray()));
}

} // namespace tessly
