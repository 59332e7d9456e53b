#include "PreviewText.h"

#include "QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

QString textOf(const QByteArray& utf8)
{
    return previewText(utf8).text;
}

bool isMonospaced(const QByteArray& utf8)
{
    return previewText(utf8).isMonospaced;
}

} // namespace

TEST(PreviewText, ProseIsAsItIs)
{
    const QByteArray prose = "Dear Anna,\n\n  thank you for the letter; it came yesterday.\nYours";
    EXPECT_EQ(previewText(prose), (PreviewText{.text = QString::fromUtf8(prose)}));
    EXPECT_EQ(previewText({}), PreviewText());
}

TEST(PreviewText, LinesEndInOneWay)
{
    EXPECT_EQ(
        textOf("a\r\nb\rc\xE2\x80\xA8"
               "d\xE2\x80\xA9"
               "e\n"),
        u"a\nb\nc\nd\ne\n"_s);
}

TEST(PreviewText, WhatIsNoCharacterIsABlankAndNothingTurnsTheTextAround)
{
    EXPECT_EQ(textOf("a\x1B[31m\x07 b"_ba + '\0' + "c"_ba), u"a [31m  b c"_s);
    EXPECT_EQ(
        textOf("invoice\xE2\x80\xAE"
               "fdp.exe"),
        u"invoicefdp.exe"_s);
    EXPECT_EQ(textOf("\xE2\x81\xA6x\xE2\x81\xA9"), u"x"_s);
    EXPECT_EQ(textOf("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D"), u"שלום"_s);
}

TEST(PreviewText, ALongTextIsCutBetweenCharacters)
{
    const QByteArray fits(PreviewText::bytesAtMost, 'x');
    EXPECT_FALSE(previewText(fits).isCut);
    EXPECT_EQ(textOf(fits).size(), PreviewText::bytesAtMost);
    const PreviewText cut = previewText(fits + 'x');
    EXPECT_TRUE(cut.isCut);
    EXPECT_EQ(cut.text.size(), PreviewText::bytesAtMost);
    const PreviewText amid = previewText(fits.first(fits.size() - 2) + "🎉 and more"_ba);
    EXPECT_EQ(amid.text, QString(PreviewText::bytesAtMost - 2, u'x'));
    EXPECT_EQ(textOf(QByteArray(100'000, '\x80')).size(), PreviewText::bytesAtMost - 3);
}

TEST(PreviewText, ManyLinesAreCut)
{
    const QByteArray lines = QByteArray("a\n").repeated(PreviewText::linesAtMost - 1);
    EXPECT_FALSE(previewText(lines + "a").isCut);
    const PreviewText cut = previewText(lines + "a\nb");
    EXPECT_TRUE(cut.isCut);
    EXPECT_EQ(cut.text.count(u'\n'), PreviewText::linesAtMost - 1);
    EXPECT_FALSE(cut.text.contains(u'b'));
}

TEST(PreviewText, ManyEmojiAreCut)
{
    const QByteArray emoji = QByteArray("🎉").repeated(PreviewText::emojiAtMost);
    EXPECT_FALSE(previewText(emoji + " é日").isCut);
    const PreviewText cut = previewText(emoji + "x🎉");
    EXPECT_TRUE(cut.isCut);
    EXPECT_EQ(cut.text, QString::fromUtf8(emoji + "x"));
}

TEST(PreviewText, CodeIsMonospaced)
{
    EXPECT_TRUE(isMonospaced("int main()\n{\n\treturn 0;\n}\n"));
    EXPECT_TRUE(isMonospaced("def f(x):\n    return x + 1\n"));
    EXPECT_TRUE(isMonospaced("{\n  \"name\": 1,\n  \"other\": [2, 3]\n}"));
    EXPECT_TRUE(isMonospaced("<ul>\n<li>one</li>\n</ul>"));
    EXPECT_TRUE(isMonospaced("$ cd /tmp\n$ ls"));
    EXPECT_FALSE(previewText("int main()\n{\n\treturn 0;\n}\n").hasColumns);
    EXPECT_EQ(textOf("if (a) {\n\tb();\n}"), u"if (a) {\n    b();\n}"_s);
}

TEST(PreviewText, ProseIsNotMonospaced)
{
    EXPECT_FALSE(isMonospaced("one line; with = signs {"));
    EXPECT_FALSE(isMonospaced("Milk\nBread\nButter (salted)\n"));
    EXPECT_FALSE(isMonospaced("First sentence. Second one.\nA third = no more.\nAnd so on.\n"));
    EXPECT_FALSE(isMonospaced("One.  Two blanks.\nAfter a sentence.  Once more, elsewhere.\n"));
    EXPECT_EQ(textOf("Name\tAnna"), u"Name Anna"_s);
}

TEST(PreviewText, AlignedColumnsKeepTheirLines)
{
    const QByteArray listing = "total 8\n-rw-r--r--  1 anna   120 a.txt\n-rw-r--r--  1 bo     99 "
                               "b\n";
    EXPECT_TRUE(previewText(listing).hasColumns);
    EXPECT_TRUE(isMonospaced(listing));
    EXPECT_TRUE(previewText("| a | b |\n|---|---|\n| 1 | 2 |").hasColumns);
    const PreviewText cells = previewText("Name\tAge\nAnna\t7\nBo\t11");
    EXPECT_TRUE(cells.hasColumns);
    EXPECT_EQ(cells.text, u"Name    Age\nAnna    7\nBo      11"_s);
}

} // namespace tessly::test
