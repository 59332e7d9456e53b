#include "JSONFields.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {
namespace {

using Type = JSONFields::Value::Type;

std::string written(const JSONFields& fields, const char* name)
{
    const JSONFields::Value* const value = fields.find(name);
    return value ? value->written.toByteArray().toStdString() : "absent";
}

std::optional<std::string> text(QByteArrayView written)
{
    const std::optional<QByteArray> text = JSONFields::text(written);
    return text ? std::optional(text->toStdString()) : std::nullopt;
}

TEST(JSONFields, FindsTheFieldsOfAnObject)
{
    const QByteArray object =
        R"( {"s" : "a\"b", "n":-12.5e+3,"yes":true,"no":false,"none":null,"l":["a" , "]"],"e":[]} )"
        "\r";
    const auto fields = JSONFields::parse(object);
    ASSERT_TRUE(fields.has_value());
    EXPECT_EQ(fields->size(), 7);
    EXPECT_EQ(fields->find("s")->type, Type::string);
    EXPECT_EQ(written(*fields, "s"), R"(a\"b)");
    EXPECT_EQ(fields->find("n")->type, Type::number);
    EXPECT_EQ(written(*fields, "n"), "-12.5e+3");
    EXPECT_EQ(fields->find("yes")->type, Type::boolean);
    EXPECT_EQ(written(*fields, "yes"), "true");
    EXPECT_EQ(written(*fields, "no"), "false");
    EXPECT_EQ(fields->find("none")->type, Type::null);
    EXPECT_EQ(fields->find("l")->type, Type::strings);
    EXPECT_THAT(fields->find("l")->strings, ElementsAre("a", "]"));
    EXPECT_THAT(fields->find("e")->strings, IsEmpty());
    EXPECT_EQ(fields->find("other"), nullptr);
    EXPECT_EQ(JSONFields::parse("{}")->size(), 0);
}

TEST(JSONFields, TakesNothingElse)
{
    for (const char* const wrong :
         {"",
          " ",
          "{",
          "}",
          "[]",
          "1",
          R"("a")",
          R"({"a"})",
          R"({"a":})",
          R"({"a":1)",
          R"({"a":1,})",
          R"({,"a":1})",
          R"({"a":1 "b":2})",
          R"({"a":1}})",
          R"({"a":1}{"b":2})",
          R"({a:1})",
          R"({'a':1})",
          R"({"a":{}})",
          R"({"a":{"b":1}})",
          R"({"a":[1]})",
          R"({"a":["b",]})",
          R"({"a":["b" "c"]})",
          R"({"a":[)",
          R"({"a":["b")",
          R"({"a":"b)",
          R"({"a":"b\)",
          R"({"a":"b\")",
          R"({"a":"\x"})",
          R"({"a":"\u12"})",
          R"({"a":"\u12g4"})",
          R"({"a":"\u+123"})",
          R"({"a":"\u)",
          "{\"a\":\"b\nc\"}",
          R"({"a":tru})",
          R"({"a":nul)",
          R"({"a":True})",
          R"({"a":01})",
          R"({"a":+1})",
          R"({"a":.5})",
          R"({"a":1.})",
          R"({"a":1e})",
          R"({"a":-})",
          R"({"a":0x1})",
          R"({"a":NaN})",
          R"({"a":1,"a":2})"}) {
        EXPECT_FALSE(JSONFields::parse(wrong).has_value()) << wrong;
    }
}

TEST(JSONFields, TakesNoMoreFieldsThanAnybodyMeans)
{
    const auto objectOf = [](int count) {
        QByteArrayList fields;
        for (int i = 0; i < count; ++i) {
            fields.append("\"" + QByteArray::number(i) + "\":1");
        }
        return '{' + fields.join(',') + '}';
    };
    EXPECT_EQ(JSONFields::parse(objectOf(64))->size(), 64);
    EXPECT_FALSE(JSONFields::parse(objectOf(65)).has_value());
}

TEST(JSONFields, TellsWhatAStringSays)
{
    EXPECT_EQ(text("plain é 😀"), "plain é 😀");
    EXPECT_EQ(text(R"(\"\\\/\b\f\n\r\t)"), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(text(R"(é \u00e9 \u00E9 \ud83d\ude00 é)"), "é é é 😀 é");
    EXPECT_EQ(text(R"(a\u0000b)"), std::string("a\0b", 3));
    EXPECT_EQ(text(""), "");
}

TEST(JSONFields, WhatIsNoTextIsNone)
{
    EXPECT_EQ(text("\xff"), std::nullopt);
    EXPECT_EQ(text("\\n\xc3"), std::nullopt);
    EXPECT_EQ(text(R"(\ud83d)"), std::nullopt);
    EXPECT_EQ(text(R"(\ude00\ud83d)"), std::nullopt);
}

} // namespace
} // namespace tessly::test
