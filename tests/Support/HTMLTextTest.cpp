#include "HTMLText.h"

#include "QtPrinting.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QByteArrayList>

#include <random>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

constexpr qsizetype all = 1'000'000;

QString text(const QByteArray& html)
{
    return textOfHTML(html, all);
}

} // namespace

TEST(HTMLText, isWhatStandsBetweenTheTags)
{
    EXPECT_EQ(text(""), QString());
    EXPECT_EQ(text("plain"), u"plain"_s);
    EXPECT_EQ(text("<b>bold</b> and <I CLASS=x>more</I>, caf\xC3\xA9"), u"bold and more, café"_s);
    EXPECT_EQ(text("1 < 2 <3 a<b>c</b> </ >"), u"1 < 2 <3 ac </ >"_s);
}

TEST(HTMLText, blanksAreOneAndNoneAtTheEndsOfLines)
{
    EXPECT_EQ(text("  a \n\t b  <i> c</i><p> d </p>\n"), u"a b c\n\nd"_s);
    EXPECT_EQ(text("a&nbsp; b"), u"a\u00A0 b"_s);
}

TEST(HTMLText, hasTheLinesThatAreSeen)
{
    EXPECT_EQ(text("a<br>b<BR/>c<br><br>d<br>"), u"a\nb\nc\n\nd"_s);
    EXPECT_EQ(text("<div>a</div><div><div>b</div></div>c"), u"a\nb\nc"_s);
    EXPECT_EQ(text("<div>a<br></div><div>b</div>"), u"a\nb"_s);
    EXPECT_EQ(text("<div>a</div><div><br></div><div>b</div>"), u"a\n\nb"_s);
    EXPECT_EQ(text("<h1>Title</h1><p>One</p><p>Two<hr>Three"), u"Title\n\nOne\n\nTwo\n\nThree"_s);
    EXPECT_EQ(
        text("Buy:<ul><li>milk</li><li><p>bread</p><li>salt<li></li></ul>Now"),
        u"Buy:\n• milk\n\n• bread\n\n• salt\nNow"_s);
}

TEST(HTMLText, ofATableHasARowInEachLine)
{
    EXPECT_EQ(
        text("<table>\n<tr>\n <th>Name</th>\n <th>Age</th></tr>\n"
             "<tr><td><p>Anna</p></td><td><p>7<br></p></td></tr><tr><td><td>9</table>end"),
        u"Name\tAge\nAnna\t7\n\t9\n\nend"_s);
}

TEST(HTMLText, keepsTheBlanksOfWhatIsPreformatted)
{
    EXPECT_EQ(
        text("Code:<pre>\nif (a)\r\n    b\t&lt; c;\n\nd</pre>  and  <pre>e</pre></pre> f  g"),
        u"Code:\n\nif (a)\n    b\t< c;\n\nd\n\nand\n\ne\n\nf g"_s);
}

TEST(HTMLText, hasNothingOfWhatIsNotSeen)
{
    EXPECT_EQ(
        text(
            "<!DOCTYPE html><html><head><title>T &amp; <b></title><style>p > a { color: red }"
            "</style><meta charset=utf-8></head><body onload=\"alert('>')\">"
            "<script>if (a </b> && \"</scripts>\") x();</script\n>a<!-- <p> -- > b -->c<!-->d<?xml "
            "e?>f<![if !x]>g<img src='file:///etc/passwd' alt=\"h>i\"></body></html>"),
        u"acdfg"_s);
    EXPECT_EQ(text("<a title = \"1 > 0\" href=x?a=b'>link</a>"), u"link"_s);
    EXPECT_EQ(text("<p title=it's>its</p>"), u"its"_s);
}

TEST(HTMLText, isNotMadeOfWhatIsCutOff)
{
    EXPECT_EQ(text("a<"), u"a<"_s);
    for (const QByteArray& cut : QByteArrayList{
             "<b", "</", "</b", "<b x=\"c", "<!-", "<!-- b", "<?b", "<style>b", "<script></b",
             "<title>b</titl"}) {
        EXPECT_TRUE(text("a" + cut).startsWith(u'a')) << cut.constData();
        EXPECT_FALSE(text("a" + cut).contains(u'b')) << cut.constData();
    }
    EXPECT_EQ(text("caf\xC3"), u"caf"_s);
}

TEST(HTMLText, charactersMayBeNamed)
{
    EXPECT_EQ(
        text("&lt;b&gt; &amp;amp; "
             "&quot;&apos;&eacute;&yuml;&nbsp;&ndash;&euro;&#233;&#xE9;&#X1F389;"),
        u"<b> &amp; \"'éÿ\u00A0–€éé🎉"_s);
    EXPECT_EQ(
        text("a&b &; &#; &#x; &#-1; &unknown; &amp &ampersandamp; &#12x; &Eacutee;"),
        u"a&b &; &#; &#x; &#-1; &unknown; &amp &ampersandamp; &#12x; &Eacutee;"_s);
    EXPECT_EQ(text("it&#146;s &#x80; &#129;"), u"it’s € \u0081"_s);
    EXPECT_EQ(text("&#+65; &# 65; &#x+41; &#x 41;"), u"&#+65; &# 65; &#x+41; &#x 41;"_s);
    EXPECT_EQ(text("&#0;&#xD800;&#1114112;&#99999999999;"), u"\uFFFD\uFFFD\uFFFD&#99999999999;"_s);
}

TEST(HTMLText, isReadInTheEncodingOfTheDocument)
{
    const QString document = u"<p>caf\u00E9 日</p>"_s;
    const QByteArray utf16(
        reinterpret_cast<const char*>(document.utf16()), document.size() * qsizetype{2});
    EXPECT_EQ(text(utf16), u"café 日"_s);
    EXPECT_EQ(text("\xFF\xFE" + utf16), u"café 日"_s);
    EXPECT_EQ(text("\xEF\xBB\xBF<p>caf\xC3\xA9"), u"café"_s);
    EXPECT_EQ(text("<meta charset=\"iso-8859-1\">caf\xE9"), u"café"_s);
    EXPECT_EQ(text("<meta charset=windows-1252>it\x92s a caf\xE9"), u"it’s a café"_s);
    EXPECT_EQ(text("<meta charset=utf-16>caf\xC3\xA9"), u"café"_s);
    EXPECT_EQ(text("caf\xE9!"), u"caf\uFFFD!"_s);
    EXPECT_EQ(text("\xFE\xFF\xD8\x3C\xDF\x89\xD8\x3C\xFF\x01\xDF\x89"), u"🎉\uFFFD！\uFFFD"_s);
}

TEST(HTMLText, endsWhereThereIsEnough)
{
    const QByteArray words = QByteArray("<p>word</p>").repeated(1000);
    const QString some = textOfHTML(words, 100);
    EXPECT_GE(some.size(), 100);
    EXPECT_LE(some.size(), 110);
    EXPECT_TRUE(text(words).startsWith(some));
}

// What would take the square of its length, or a frame of the stack for each tag, would be seen.
TEST(HTMLText, ofWhatIsNestedOrNeverEndsIsMadeInOneGo)
{
    for (const QByteArray& part : QByteArrayList{
             "<div>",
             "<b>",
             "<ul><li>",
             "<table><tr><td>",
             "<blockquote>",
             "<pre>",
             "</p>",
             "<",
             "<!",
             "<!--",
             "</",
             "<script>",
             "<style></",
             "<a b=\"",
             "<a b='c>",
             "&",
             "&#",
             "<br>",
             "<td>",
             "<title>",
             "<font size=1 color='red'>",
             "\r",
             "<p style=\"a:b;\">",
             "<a =",
             "&amp"}) {
        const QByteArray much = part.repeated(2'000'000 / part.size());
        EXPECT_LE(text(much).size(), much.size()) << part.constData();
    }
}

TEST(HTMLText, canBeMadeOfAnything)
{
    const QByteArrayList parts = {"<",         ">",
                                  "</",        "/>",
                                  "<!--",      "-->",
                                  "<!",        "&",
                                  ";",         "#",
                                  "&#x",       "amp",
                                  "\"",        "'",
                                  "=",         " ",
                                  "\n",        "\r",
                                  "\t",        "a",
                                  "é",         "\xFF",
                                  "\xC3",      "\xF0\x9F",
                                  "p",         "br",
                                  "pre",       "td",
                                  "tr",        "li",
                                  "script",    "style",
                                  "title",     "<p>",
                                  "<td>",      "</td>",
                                  "<tr>",      "<pre>",
                                  "</pre>",    "<script>",
                                  "</script>", "<br>",
                                  "<li>",      QByteArray(1, '\0'),
                                  "\xFF\xFE",  "<meta charset=utf-16>"};
    std::mt19937 random(1);
    std::uniform_int_distribution<qsizetype> anyPart(0, parts.size() - 1);
    for (int i = 0; i < 20'000; ++i) {
        QByteArray html;
        for (int j = 0; j < 30; ++j) {
            html += parts[anyPart(random)];
        }
        const QString made = text(html);
        ASSERT_LE(made.size(), 2 * html.size()) << html.toHex().constData();
        ASSERT_TRUE(made.isValidUtf16()) << html.toHex().constData();
        ASSERT_TRUE(made.startsWith(textOfHTML(html, 5))) << html.toHex().constData();
    }
}

} // namespace tessly::test
