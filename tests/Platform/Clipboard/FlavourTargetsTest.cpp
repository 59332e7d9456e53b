#include "FlavourTargets.h"

#include "FileURL.h"

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

TEST(FlavourTargets, whatIsNotAllowedInAPathIsEscaped)
{
    const auto url = [](const QByteArray& line) {
        return fileURLs("text/uri-list", line + "\r\n").value(0);
    };
    EXPECT_EQ(url("file:///Song [live].mp3"), "file:///Song%20%5Blive%5D.mp3");
    EXPECT_EQ(url("file:///Song%20[live].mp3"), "file:///Song%20%5Blive%5D.mp3");
    EXPECT_EQ(url("file:///caf\xC3\xA9"), "file:///caf%C3%A9");
    EXPECT_EQ(url("file:///caf\xE9"), "file:///caf%E9") << "a name in another encoding";
    EXPECT_EQ(url("file:///\x01\t\x7F"), "file:///%01%09%7F");
    EXPECT_EQ(url("file:///a\"<>\\^`{|}b"), "file:///a%22%3C%3E%5C%5E%60%7B%7C%7Db");
    EXPECT_EQ(url("file:/a b"), "file:/a%20b");
    EXPECT_EQ(url("FILE://host/a b"), "FILE://host/a%20b");
    EXPECT_EQ(url("file://[::1]/[b]"), "file://[::1]/%5Bb%5D") << "a host may have brackets";
}

TEST(FlavourTargets, aPercentSignThatIsNoEscapeIsEscaped)
{
    const auto url = [](const QByteArray& line) {
        return fileURLs("text/uri-list", line).value(0);
    };
    EXPECT_EQ(url("file:///100%"), "file:///100%25");
    EXPECT_EQ(url("file:///100%2"), "file:///100%252");
    EXPECT_EQ(url("file:///100%g0"), "file:///100%25g0");
    EXPECT_EQ(url("file:///100%0g"), "file:///100%250g");
    EXPECT_EQ(url("file:///100%%20"), "file:///100%25%20");
    EXPECT_EQ(url("file:///%5b%5D%25"), "file:///%5b%5D%25");
}

TEST(FlavourTargets, whatIsAURLStaysAsItIs)
{
    for (const char* line :
         {"file:///a-._~!$&'()*+,;=:@b/c//d/", "file:///a?query", "file:///a#fragment?more",
          "file:///a%20b%E2%82%AC", "file://host", "file://host/", "file://user@host:80/a"}) {
        EXPECT_EQ(fileURLs("text/uri-list", line), QByteArrayList({line})) << line;
    }
    EXPECT_EQ(fileURLs("text/uri-list", "file:///a#b#c"), QByteArrayList({"file:///a#b%23c"}));
}

TEST(FlavourTargets, aFileOnAHostThatIsNoneIsLeftOut)
{
    EXPECT_EQ(
        fileURLs("text/uri-list", "file://a b\r\nfile://a b/c\r\nfile://\x0F\r\nfile:///d\r\n"),
        QByteArrayList({"file:///d"}));
    EXPECT_EQ(fileURLs("text/uri-list", "file:/\v\0"_ba), QByteArrayList());
}

TEST(FlavourTargets, noFileHasANULInItsName)
{
    EXPECT_EQ(
        fileURLs("text/uri-list", "file:///a\0b\r\nfile:///c\r\n"_ba),
        QByteArrayList({"file:///c"}));
}

TEST(FlavourTargets, escapedNamesAreThoseOfTheFiles)
{
    const QByteArrayList names = {"Song [live].mp3", "100%",  "caf\xC3\xA9 {draft}",
                                  "a^b|c",           "50%25", "x%zz"};
    for (const QByteArray& name : names) {
        QByteArray written = name;
        // What has the look of an escape is one.
        written.replace("%25", "%2525");
        const auto parsed =
            FileURL::parse(fileURLs("text/uri-list", "file:///" + written).value(0));
        ASSERT_TRUE(parsed) << name.toStdString();
        EXPECT_EQ(parsed->lastPathComponent, name);
    }
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
