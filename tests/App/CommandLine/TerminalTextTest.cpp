#include "TerminalText.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

std::string line(const QString& text)
{
    return terminalLine(text).toStdString();
}

TEST(TerminalText, HasNoControlCharacters)
{
    for (char16_t unit = 0; unit < 0x20; ++unit) {
        EXPECT_EQ(line(u"a"_s + QChar(unit) + u"b"_s), "a b") << static_cast<int>(unit);
    }
    for (char16_t unit = 0x7F; unit <= 0xA0; ++unit) {
        EXPECT_EQ(line(u"a"_s + QChar(unit) + u"b"_s), "a b") << static_cast<int>(unit);
    }
    EXPECT_EQ(line(u"\x1b[31mred\x1b]0;title\x07\u009b2J"_s), " [31mred ]0;title  2J");
    EXPECT_EQ(line(u"a\u2028b\u2029c"_s), "a b c");
}

TEST(TerminalText, HasNothingThatTurnsOrHidesText)
{
    EXPECT_EQ(line(u"a\u202Eb\u2066c\u200Fd\u061Ce\uFEFFf\u00ADg"_s), "abcdefg");
    EXPECT_EQ(line(u"a\U000E0041b"_s), "ab") << "a tag character";
}

TEST(TerminalText, KeepsWhatScriptsAndEmojiAreSpelledWith)
{
    const QString text = u"größe 日本 نامه\u200Cها 👩\u200D👧"_s;
    EXPECT_EQ(terminalLine(text), text);
}

TEST(TerminalText, MendsHalfACharacter)
{
    EXPECT_EQ(terminalLine(u"a"_s + QChar(0xD83D) + u"b"_s), u"a\uFFFDb"_s);
}

TEST(TerminalText, IsCutByTheColumnsItTakes)
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(terminalWidth(u"abc"_s), 3);
    EXPECT_EQ(terminalWidth(u"日本"_s), 4);
    EXPECT_EQ(terminalWidth(u"e\u0301"_s), 1);
    EXPECT_EQ(fitted(u"abcdef"_s, 6), u"abcdef"_s);
    EXPECT_EQ(fitted(u"abcdef"_s, 5), u"abcd…"_s);
    EXPECT_EQ(fitted(u"日本語"_s, 6), u"日本語"_s);
    EXPECT_EQ(fitted(u"日本語"_s, 5), u"日本…"_s);
    EXPECT_EQ(fitted(u"日本語"_s, 4), u"日…"_s);
    EXPECT_EQ(fitted(QString(), 5), QString());
}

TEST(TerminalText, AsJSONKeepsEveryCharacterAndPrintsNoneThatIsObeyed)
{
    EXPECT_EQ(jsonString(u"a\"b\\c/d"_s), uR"("a\"b\\c/d")"_s);
    EXPECT_EQ(
        jsonString(u"\x1b[2J\n\t\x7f\u009b\u202E"_s),
        uR"("\u001b[2J\u000a\u0009\u007f\u009b\u202e")"_s);
    EXPECT_EQ(jsonString(u"\U000E0041"_s), uR"("\udb40\udc41")"_s);
    EXPECT_EQ(jsonString(u"日本 👧"_s), u"\"日本 👧\""_s);
    EXPECT_EQ(jsonString({}), u"\"\""_s);
}

} // namespace
} // namespace tessly
