#include "StringListJSON.h"

#include <gtest/gtest.h>

namespace tessly::test {

TEST(StringListJSON, isCompactAndEscapesSlashes)
{
    EXPECT_EQ(stringListJSON({}), "[]");
    EXPECT_EQ(stringListJSON({""}), R"([""])");
    EXPECT_EQ(
        stringListJSON({"file:///tmp/a.txt", "file:///tmp/b%20c.png"}),
        R"(["file:\/\/\/tmp\/a.txt","file:\/\/\/tmp\/b%20c.png"])");
}

TEST(StringListJSON, escapesWhatJSONCannotHoldAndNothingElse)
{
    EXPECT_EQ(
        stringListJSON({QByteArray("\"\\\b\f\n\r\t\0\x01\x1f\x7f", 11)}),
        "[\"\\\"\\\\\\b\\f\\n\\r\\t\\u0000\\u0001\\u001f\x7f\"]");
    EXPECT_EQ(
        stringListJSON({"caf\xc3\xa9 \xf0\x9f\x98\x80"}), "[\"caf\xc3\xa9 \xf0\x9f\x98\x80\"]");
}

TEST(StringListJSON, comesBackAsTheList)
{
    QByteArrayList all = {"", "/", "a b", "caf\xc3\xa9 \xf0\x9f\x98\x80"};
    QByteArray ascii;
    for (char c = 0; c >= 0; ++c) {
        ascii += c;
    }
    all.append(ascii);
    EXPECT_EQ(stringList(stringListJSON(all)), all);
    EXPECT_EQ(stringList(stringListJSON({})), QByteArrayList());
}

TEST(StringListJSON, isReadHoweverItWasWritten)
{
    EXPECT_EQ(
        stringList(" [ \"file:///a\" , \"\\u00e9\" ] "), QByteArrayList({"file:///a", "\xc3\xa9"}));
}

TEST(StringListJSON, ofWhichOnlyTheBeginningIsThereHasTheStringsThatAreWhole)
{
    const QByteArrayList all = {"file:///a", "b\"", "c\\", "\",\"", "", "caf\xc3\xa9"};
    const QByteArray json = stringListJSON(all);
    qsizetype found = 0;
    for (qsizetype length = 0; length <= json.size(); ++length) {
        const auto strings = wholeStrings(json.first(length));
        ASSERT_TRUE(strings.has_value()) << length;
        EXPECT_EQ(*strings, all.first(strings->size())) << length;
        const QByteArray made = stringListJSON(*strings).chopped(1);
        EXPECT_TRUE(length == 0 || json.startsWith(made)) << length;
        EXPECT_LE(made.size(), std::max<qsizetype>(length, 1));
        EXPECT_GE(strings->size(), found) << length;
        found = strings->size();
    }
    EXPECT_EQ(found, all.size());
    EXPECT_EQ(wholeStrings("[\"a\", 1, \"b\""), std::nullopt);
}

TEST(StringListJSON, isNoneForAnythingElse)
{
    for (const QByteArray& json :
         {QByteArray(), QByteArray("["), QByteArray("{}"), QByteArray("null"), QByteArray("\"a\""),
          QByteArray("[1]"), QByteArray("[\"a\",null]"), QByteArray("[\"a\"] x"),
          QByteArray("[\"\xff\"]")}) {
        EXPECT_EQ(stringList(json), std::nullopt) << json.constData();
    }
}

} // namespace tessly::test
