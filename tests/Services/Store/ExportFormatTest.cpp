#include "ExportFormat.h"

#include "ClipStoreError.h"
#include "ExportedClips.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace tessly::test {
namespace {

constexpr double now = 1'700'000'000;

QJsonObject objectOf(const QByteArray& line)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return document.object();
}

QByteArray lineFrom(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::string objection(const QByteArray& line)
{
    const auto read = ExportFormat::parse(line, now);
    const QString* const reason = std::get_if<QString>(&read);
    return reason ? reason->toStdString() : "none";
}

/// What is said of the line of an entry in which one field is another.
std::string objectionTo(const QString& key, const QJsonValue& value, const Clip& clip)
{
    QJsonObject object = objectOf(lineOf(clip));
    object[key] = value;
    return objection(lineFrom(object));
}
std::string objectionTo(const QString& key, const QJsonValue& value)
{
    return objectionTo(key, value, textClip("text"));
}

QString base64(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

TEST(ExportFormat, EveryEntryComesBackAsItWas)
{
    for (const Clip& clip : clipsOfEveryKind()) {
        const QByteArray line = lineOf(clip);
        EXPECT_EQ(line.count('\n'), 1);
        EXPECT_TRUE(line.endsWith('\n'));
        const auto read = ExportFormat::parse(line, now);
        ASSERT_TRUE(std::holds_alternative<Clip>(read)) << objection(line);
        EXPECT_EQ(std::get<Clip>(read), clip) << line.toStdString();
        // Also whether a flavour is empty or absent, which equal hashes do not tell.
        EXPECT_EQ(*std::get<Clip>(read).payload.held(), *clip.payload.held());
    }
}

TEST(ExportFormat, LinesAreJSONThatOtherProgramsRead)
{
    for (const Clip& clip : clipsOfEveryKind()) {
        const QJsonObject object = objectOf(lineOf(clip));
        const ClipPayload& payload = *clip.payload.held();
        EXPECT_EQ(object[u"id"_s].toString(), clip.id.toString(QUuid::WithoutBraces).toUpper());
        EXPECT_EQ(object[u"createdAt"_s].toDouble(), clip.createdAt);
        EXPECT_EQ(object[u"lastUsedAt"_s].toDouble(), clip.lastUsedAt);
        EXPECT_EQ(object[u"kind"_s].toString(), rawValue(payload.kind()));
        EXPECT_EQ(object[u"isPinned"_s].toBool(), clip.isPinned);
        EXPECT_EQ(object[u"copyCount"_s].toInteger(), clip.copyCount);
        EXPECT_EQ(object[u"sourceAppName"_s].toString(), clip.sourceAppName.value_or(QString()));
        EXPECT_EQ(object[u"sourceAppName"_s].isNull(), !clip.sourceAppName.has_value());
        EXPECT_EQ(object[u"contentHash"_s].toString().toLatin1(), payload.contentHash());
        EXPECT_EQ(
            QByteArray::fromBase64(object[u"plainText"_s].toString().toLatin1()),
            payload.plainText().value_or(QByteArray()));
        EXPECT_EQ(object[u"plainText"_s].isNull(), !payload.plainText().has_value());
        EXPECT_EQ(object[u"fileURLs"_s].toArray().size(), payload.fileURLs().size());
        // Whatever wrote it, it can be read: a program that has sorted its keys, for one.
        EXPECT_EQ(objection(lineFrom(object)), "none");
    }
}

TEST(ExportFormat, ALargeContentIsWrittenInPieces)
{
    qsizetype largest = 0;
    ExportFormat::write(textClip(QByteArray(10'000'000, 'x')), [&](QByteArrayView bytes) {
        largest = std::max(largest, bytes.size());
    });
    EXPECT_LE(largest, 1'000'000);
}

TEST(ExportFormat, TimesThatAreNoNumbersAreNotWritten)
{
    Clip clip = textClip("text");
    clip.lastUsedAt = std::numeric_limits<double>::infinity();
    EXPECT_THROW(lineOf(clip), ClipStoreError);
}

TEST(ExportFormat, TellsTheLinesAroundTheEntries)
{
    using ExportFormat::kindOf;
    using ExportFormat::Line;
    EXPECT_EQ(kindOf(ExportFormat::firstLine()), Line::first);
    EXPECT_EQ(kindOf(ExportFormat::lastLine()), Line::last);
    EXPECT_EQ(kindOf(R"( { "version" : 1, "format" : "tessly-history" } )"), Line::first);
    EXPECT_EQ(kindOf(R"({"format":"tessly-history","version":2})"), Line::firstOfLater);
    for (const char* const other :
         {"", "{}", "end", R"({"format":"tessly-history"})",
          R"({"format":"tessly-history","version":0})",
          R"({"format":"tessly-history","version":1.5})",
          R"({"format":"tessly-history","version":"1"})", R"({"format":"other","version":1})",
          R"({"end":1})"}) {
        EXPECT_EQ(kindOf(other), Line::other) << other;
    }
    for (const Clip& clip : clipsOfEveryKind()) {
        EXPECT_EQ(kindOf(lineOf(clip)), Line::other);
    }
}

TEST(ExportFormat, WhatIsNoObjectIsRefused)
{
    for (const char* const line : {"", "text", "[]", "{", R"({"id":{}})"}) {
        EXPECT_EQ(objection(line), "it is no entry: not a JSON object of the right form");
    }
    const QByteArray whole = lineOf(textClip("text"));
    EXPECT_EQ(objection(whole.chopped(10)), "it is no entry: not a JSON object of the right form");
}

TEST(ExportFormat, EveryFieldMustBeThereAndNoOther)
{
    const QJsonObject whole = objectOf(lineOf(textClip("text")));
    EXPECT_EQ(whole.size(), 15);
    for (const QString& key : whole.keys()) {
        QJsonObject object = whole;
        object.remove(key);
        EXPECT_EQ(objection(lineFrom(object)), key.toStdString() + " is missing");
    }
    EXPECT_EQ(objectionTo(u"other"_s, 1), "there is a field that no entry has");
}

TEST(ExportFormat, EveryFieldMustBeOfItsType)
{
    const QJsonObject whole = objectOf(lineOf(textClip("text")));
    for (const QString& key : whole.keys()) {
        // Each is wrong for all but one type.
        int taken = 0;
        for (const QJsonValue& value :
             {QJsonValue(u"no value of any field"_s), QJsonValue(-0.5), QJsonValue(false),
              QJsonValue(QJsonArray{u"\u0007"_s})}) {
            const std::string said = objectionTo(key, value);
            taken += said == "none" ? 1 : 0;
            if (said != "none") {
                EXPECT_THAT(said, HasSubstr(key.toStdString() + ' '));
            }
        }
        const bool isName = key.startsWith(u"source"_s);
        EXPECT_EQ(taken, isName || key == u"isPinned"_s ? 1 : 0) << key.toStdString();
    }
    for (const QString& key :
         {u"id"_s, u"createdAt"_s, u"lastUsedAt"_s, u"kind"_s, u"isPinned"_s, u"copyCount"_s,
          u"contentHash"_s, u"fileURLs"_s}) {
        EXPECT_THAT(objectionTo(key, QJsonValue::Null), HasSubstr(key.toStdString() + ' '));
    }
}

TEST(ExportFormat, AnIdentifierIsAUUID)
{
    for (const QString& wrong :
         {u""_s, u"1"_s, u"{6F0C1E59-2B5B-4C43-9B0C-5C0B8F1E2D3A}"_s,
          u"6F0C1E592B5B4C439B0C5C0B8F1E2D3A"_s, u"6F0C1E59-2B5B-4C43-9B0C-5C0B8F1E2D3G"_s,
          u"00000000-0000-0000-0000-000000000000"_s}) {
        EXPECT_EQ(objectionTo(u"id"_s, wrong), "id is no UUID") << wrong.toStdString();
    }
    EXPECT_EQ(objectionTo(u"id"_s, u"6f0c1e59-2b5b-4c43-9b0c-5c0b8f1e2d3a"_s), "none");
}

TEST(ExportFormat, TimesAreNeitherBefore1970NorInTheFuture)
{
    for (const QString& key : {u"createdAt"_s, u"lastUsedAt"_s}) {
        const std::string name = key.toStdString();
        EXPECT_EQ(objectionTo(key, 0), "none");
        EXPECT_EQ(objectionTo(key, -1), name + " is before 1970");
        // Clocks differ, and zones.
        EXPECT_EQ(objectionTo(key, now + 80'000), "none");
        EXPECT_EQ(objectionTo(key, now + 100'000), name + " is in the future");
        QByteArray line = lineOf(textClip("text"));
        const qsizetype at = line.indexOf(':', line.indexOf('"' + key.toLatin1())) + 1;
        line.replace(at, line.indexOf(',', at) - at, "1e999");
        EXPECT_EQ(objection(line), name + " is no number");
    }
}

TEST(ExportFormat, KindsAreThoseThatThereAreAndThatOfTheContent)
{
    EXPECT_EQ(objectionTo(u"kind"_s, u"video"_s), "kind is none that there is");
    EXPECT_EQ(objectionTo(u"kind"_s, u"link"_s), "kind is not that of the content");
}

TEST(ExportFormat, OnlyPinnedEntriesHaveAPinOrder)
{
    const Clip clip = pinned(textClip("text"), 1);
    EXPECT_EQ(objectionTo(u"pinOrder"_s, 1), "pinOrder is for pinned entries only");
    EXPECT_EQ(objectionTo(u"pinOrder"_s, u"1"_s, clip), "pinOrder is no number");
    EXPECT_EQ(objectionTo(u"pinOrder"_s, 1e300, clip), "pinOrder is out of range");
    EXPECT_EQ(objectionTo(u"pinOrder"_s, -1e300, clip), "pinOrder is out of range");
    EXPECT_EQ(objectionTo(u"pinOrder"_s, -7.5, clip), "none");
}

TEST(ExportFormat, CopiesAreCountedInWholeNumbersFromOne)
{
    EXPECT_EQ(objectionTo(u"copyCount"_s, 1.5), "copyCount is no whole number");
    EXPECT_EQ(objectionTo(u"copyCount"_s, 0), "copyCount is out of range");
    EXPECT_EQ(objectionTo(u"copyCount"_s, -1), "copyCount is out of range");
    EXPECT_EQ(objectionTo(u"copyCount"_s, 2'147'483'648LL), "copyCount is out of range");
    EXPECT_EQ(objectionTo(u"copyCount"_s, 2'147'483'647LL), "none");
}

TEST(ExportFormat, NamesAreTextsOfABoundedLength)
{
    for (const QString& key : {u"sourceAppName"_s, u"sourceBundleID"_s}) {
        EXPECT_EQ(objectionTo(key, QString(4096, u'x')), "none");
        EXPECT_EQ(objectionTo(key, QString(4097, u'x')), key.toStdString() + " is too long");
    }
    QByteArray line = lineOf(textClip("text"));
    line.replace("org.example.Editor", "\xff");
    EXPECT_EQ(objection(line), "sourceBundleID is no valid text");
    line.replace("\xff", "\\ud83d");
    EXPECT_EQ(objection(line), "sourceBundleID is no valid text");
}

TEST(ExportFormat, ContentIsBase64)
{
    for (const QString& key : {u"plainText"_s, u"rtf"_s, u"html"_s, u"imagePNG"_s}) {
        for (const QString& wrong :
             {u"dGV4d"_s, u"dGV4 dA=="_s, u"dGV4dA="_s, u"ÿ"_s, u"\u0001"_s}) {
            EXPECT_EQ(objectionTo(key, wrong), key.toStdString() + " is no base64")
                << wrong.toStdString();
        }
    }
    EXPECT_EQ(objectionTo(u"fileURLs"_s, QJsonArray{u"x"_s}), "fileURLs is no base64");
}

TEST(ExportFormat, SlashesOfBase64MayBeEscaped)
{
    QByteArray line = lineOf(textClip("\x3f\x3f\x3f>>>"));
    ASSERT_TRUE(line.contains('/'));
    line.replace("/", "\\/");
    EXPECT_EQ(objection(line), "none");
}

TEST(ExportFormat, ContentIsWhatItsFlavourHolds)
{
    EXPECT_EQ(objectionTo(u"plainText"_s, base64("\xff")), "plainText is not UTF-8");
    EXPECT_EQ(objectionTo(u"imagePNG"_s, base64("GIF89a")), "imagePNG is no PNG");
    for (const QByteArray& wrong :
         {QByteArray(), QByteArray("file:///a\nfile:///b"), QByteArray("\xff")}) {
        EXPECT_EQ(
            objectionTo(u"fileURLs"_s, QJsonArray{base64(wrong)}),
            "fileURLs has an address that is none");
    }
}

TEST(ExportFormat, ContentIsWhatItsHashSays)
{
    EXPECT_EQ(
        objectionTo(u"contentHash"_s, u"0"_s),
        "contentHash is not 64 lower-case hexadecimal digits");
    EXPECT_EQ(
        objectionTo(u"contentHash"_s, QString(64, u'A')),
        "contentHash is not 64 lower-case hexadecimal digits");
    EXPECT_EQ(
        objectionTo(u"contentHash"_s, QString(64, u'a')), "contentHash is not that of the content");
    EXPECT_EQ(
        objectionTo(u"plainText"_s, base64("other")), "contentHash is not that of the content");
}

TEST(ExportFormat, AnEntryHasContent)
{
    EXPECT_EQ(objection(lineOf(clipOf({}))), "it has no content");
    EXPECT_EQ(objection(lineOf(textClip(""))), "it has no content");
}

TEST(ExportFormat, ContentIsBounded)
{
    const QByteArray line = lineOf(clipOf({.plainText = "12345", .html = "12345"}));
    EXPECT_TRUE(std::holds_alternative<Clip>(ExportFormat::parse(line, now, 10)));
    EXPECT_EQ(std::get<QString>(ExportFormat::parse(line, now, 9)), u"its content is too large"_s);
}

TEST(ExportFormat, NoReasonTellsOfTheContent)
{
    for (const QString& key : objectOf(lineOf(textClip("text"))).keys()) {
        EXPECT_THAT(objectionTo(key, u"secret\x1b[31m"_s), testing::Not(HasSubstr("secret")))
            << key.toStdString();
    }
}

} // namespace
} // namespace tessly::test
