#include "IniFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

std::optional<QString> value(const QByteArray& text, const QString& key)
{
    const QHash<QString, QString> values = IniFile(text).values();
    return values.contains(key) ? std::optional(values.value(key)) : std::nullopt;
}

TEST(IniFile, ReadsTheKeysOfGeneralAndNoOthers)
{
    const QByteArray text = "before=1\n[Other]\nkey=2\n[general]\nkey = 3 \n[More]\nkey=4\n";
    EXPECT_EQ(value(text, u"before"_s), u"1"_s);
    EXPECT_EQ(value(text, u"key"_s), u"3"_s);
    EXPECT_EQ(IniFile(text).values().size(), 2);
}

TEST(IniFile, OfTwoEntriesWithOneKeyTheLastCounts)
{
    EXPECT_EQ(value("[General]\nkey=1\nkey=2\n", u"key"_s), u"2"_s);
}

TEST(IniFile, SkipsCommentsAndLinesWithoutAKey)
{
    const QByteArray text = "; key=1\n# key=2\nkey\n=3\n\n  \n";
    EXPECT_TRUE(IniFile(text).values().isEmpty());
}

TEST(IniFile, ReadsQuotesEscapesAndComments)
{
    EXPECT_EQ(value("k=\" a ; b \" ; c\n", u"k"_s), u" a ; b "_s);
    EXPECT_EQ(value("k=a\\nb\\\\c\\\"d\\te\n", u"k"_s), u"a\nb\\c\"d\te"_s);
    EXPECT_EQ(value("k=\\x1f600\n", u"k"_s), QString(QChar(u'\xf600')));
    EXPECT_EQ(value("k=5 ; five\n", u"k"_s), u"5"_s);
    EXPECT_EQ(value("k=a, b\n", u"k"_s), u"a, b"_s);
    EXPECT_EQ(value("k=\"open\n", u"k"_s), u"open"_s);
    EXPECT_EQ(value("k=\\", u"k"_s), QString(QChar()));
}

TEST(IniFile, ReadsFilesOfOtherSystemsAndEditors)
{
    EXPECT_EQ(value("\xef\xbb\xbf[General]\r\nkey=1\r\n", u"key"_s), u"1"_s);
    EXPECT_EQ(value("\xef\xbb\xbfkey=1", u"key"_s), u"1"_s);
}

TEST(IniFile, ReadsNonsenseAsNothing)
{
    EXPECT_TRUE(IniFile(QByteArray("\0\x01\xff\xfe\n]][[\n\n\x80", 11)).values().isEmpty());
    EXPECT_TRUE(IniFile("[").values().isEmpty());
    EXPECT_TRUE(IniFile("").values().isEmpty());
}

TEST(IniFile, KeepsEveryLineThatIsNotChanged)
{
    IniFile file(
        "; mine\r\n[Other]\nkey=1\n\n[General]\n  odd   =  5\nkey=2\nnonsense \xff\n\n[More]\nx");
    file.setValue(u"key"_s, u"3"_s);
    file.setValue(u"new"_s, u"4"_s);
    EXPECT_EQ(
        file.text(),
        "; mine\r\n[Other]\nkey=1\n\n[General]\n  odd   =  5\nkey=3\nnonsense \xff\nnew=4\n\n"
        "[More]\nx\n");
}

TEST(IniFile, MakesTheGroupWhereThereIsNone)
{
    IniFile empty;
    empty.setValue(u"key"_s, u"1"_s);
    EXPECT_EQ(empty.text(), "[General]\nkey=1\n");

    IniFile foreign("[Other]\nkey=1");
    foreign.setValue(u"key"_s, u"2"_s);
    EXPECT_EQ(foreign.text(), "[Other]\nkey=1\n[General]\nkey=2\n");
    EXPECT_EQ(value(foreign.text(), u"key"_s), u"2"_s);
}

TEST(IniFile, ANewKeyGoesRightBelowAnEmptyGroupsHeader)
{
    IniFile file("[General]\n\n[Other]\n");
    file.setValue(u"key"_s, u"1"_s);
    EXPECT_EQ(file.text(), "[General]\nkey=1\n\n[Other]\n");
}

TEST(IniFile, RemovingTakesEveryEntryWithTheKey)
{
    IniFile file("key=0\n[General]\nkey=1\nother=2\nkey=3\n[Other]\nkey=4\n");
    file.removeValue(u"key"_s);
    EXPECT_EQ(file.text(), "[General]\nother=2\n[Other]\nkey=4\n");
}

TEST(IniFile, EveryTextReadsBackAsItWasWritten)
{
    const QStringList texts = {
        u""_s,
        u" "_s,
        u"\t"_s,
        u"a\nb\r\nc"_s,
        u"\n"_s,
        u"\x01"
        u"ab\x02g\x7f"
        u"0"_s,
        u"; # [x] a=b"_s,
        u"\"\\n\""_s,
        u"ünïcödé 🙂\u2028"_s,
        u"trailing \\"_s,
        u"\u00a0no-break blanks\u00a0"_s,
        QString(QChar(u'\0')) + u"1"_s,
    };
    for (const QString& text : texts) {
        IniFile file;
        file.setValue(u"key"_s, text);
        EXPECT_EQ(value(file.text(), u"key"_s), text) << file.text().constData();
        EXPECT_EQ(file.text().count('\n'), 2) << file.text().constData();
    }
}

TEST(IniFile, QSettingsReadsWhatItWritesAndTheOtherWayRound)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"settings.ini"_s);
    const QString text = u" a\nb\r\n\tc; d=e, \"f\" \\ ü\x01"
                         u"a "_s;
    IniFile written;
    written.setValue(u"text"_s, text);
    written.setValue(u"number"_s, u"12"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(written.text());
    file.close();
    {
        QSettings settings(path, QSettings::IniFormat);
        EXPECT_EQ(settings.value(u"text"_s).toString(), text);
        EXPECT_EQ(settings.value(u"number"_s).toInt(), 12);
        settings.setValue(u"text"_s, text + text);
        settings.setValue(u"flag"_s, true);
    }
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_EQ(value(bytes, u"text"_s), text + text) << bytes.constData();
    EXPECT_EQ(value(bytes, u"flag"_s), u"true"_s);
}

} // namespace
} // namespace tessly::test
