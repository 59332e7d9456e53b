#include "CommandOutput.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <clocale>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

ClipSummary plainEntry()
{
    return {
        .position = 12,
        .id = QUuid(u"{0f8fad5b-d9cb-469f-a165-70867728950e}"_s),
        .kind = ClipKind::text,
        .preview = u"hello world"_s,
        .createdAt = 1763737023.125,
        .lastUsedAt = 1763740000,
        .sourceAppName = std::nullopt,
        .sourceBundleID = std::nullopt,
        .isPinned = false,
        .pinOrder = std::nullopt,
        .copyCount = 1,
        .byteCount = 11,
    };
}

ClipSummary pinnedEntry()
{
    ClipSummary entry = plainEntry();
    entry.position = 1;
    entry.kind = ClipKind::richText;
    entry.preview = u"größe \"quoted\" \x1b[31m\u202Eback"_s;
    entry.sourceAppName = u"Editor"_s;
    entry.sourceBundleID = u"org.example.Editor"_s;
    entry.isPinned = true;
    entry.pinOrder = 3;
    entry.copyCount = 2;
    entry.byteCount = Q_INT64_C(5'000'000'000);
    return entry;
}

TEST(CommandOutput, TheJSONOfAListIsOneArrayOfObjectsWithEveryKey)
{
    const QByteArray json = listJSON({pinnedEntry(), plainEntry()});
    QJsonParseError error;
    const QJsonArray array = QJsonDocument::fromJson(json, &error).array();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    const QJsonObject pinned{
        {u"position"_s, 1},
        {u"id"_s, u"0F8FAD5B-D9CB-469F-A165-70867728950E"_s},
        {u"kind"_s, u"richText"_s},
        {u"preview"_s, u"größe \"quoted\" \x1b[31m\u202Eback"_s},
        {u"createdAt"_s, 1763737023.125},
        {u"lastUsedAt"_s, 1763740000.0},
        {u"sourceAppName"_s, u"Editor"_s},
        {u"sourceBundleID"_s, u"org.example.Editor"_s},
        {u"isPinned"_s, true},
        {u"pinOrder"_s, 3.0},
        {u"copyCount"_s, 2},
        {u"byteCount"_s, Q_INT64_C(5'000'000'000)},
    };
    QJsonObject plain{
        {u"position"_s, 12},
        {u"id"_s, u"0F8FAD5B-D9CB-469F-A165-70867728950E"_s},
        {u"kind"_s, u"text"_s},
        {u"preview"_s, u"hello world"_s},
        {u"createdAt"_s, 1763737023.125},
        {u"lastUsedAt"_s, 1763740000.0},
        {u"sourceAppName"_s, QJsonValue::Null},
        {u"sourceBundleID"_s, QJsonValue::Null},
        {u"isPinned"_s, false},
        {u"pinOrder"_s, QJsonValue::Null},
        {u"copyCount"_s, 1},
        {u"byteCount"_s, 11},
    };
    EXPECT_EQ(array, QJsonArray({pinned, plain})) << json.toStdString();
    EXPECT_FALSE(json.contains('\x1b'));
    EXPECT_TRUE(json.endsWith("\n]\n"));
}

TEST(CommandOutput, TheJSONOfNothingIsAnEmptyArray)
{
    EXPECT_EQ(listJSON({}), "[]\n");
}

TEST(CommandOutput, AListForPeopleIsAlignedAndHarmless)
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(
        listText({pinnedEntry(), plainEntry()}, 1763740000 + 180, std::nullopt).toStdString(),
        " 1 * richText  3 minutes ago  größe \"quoted\"  [31mback\n"
        "12   text      3 minutes ago  hello world\n");
    EXPECT_EQ(listText({}, 0, std::nullopt), QString());
}

TEST(CommandOutput, AListForPeopleFitsTheirTerminal)
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(
        listText({plainEntry()}, 1763740000 + 180, 36).toStdString(),
        "12   text  3 minutes ago  hello wor…\n");
    EXPECT_EQ(
        listText({plainEntry()}, 1763740000 + 180, 5).toStdString(),
        "12   text  3 minutes ago  hello wor…\n");
}

TEST(CommandOutput, TheJSONOfTheStatusIsOneObjectWithEveryKey)
{
    const StatusReport report{
        .isRunning = true,
        .isPaused = false,
        .items = 12,
        .pinned = 2,
        .bytes = Q_INT64_C(5'000'000'000),
        .session = u"x11"_s,
        .protocols = {u"X11"_s, u"another"_s},
        .capture = true,
        .paste = true,
        .hotKeys = false,
        .tray = true,
    };
    EXPECT_EQ(
        statusJSON(report),
        "{\"running\":true,\"paused\":false,\"items\":12,\"pinned\":2,\"bytes\":5000000000,"
        "\"session\":\"x11\",\"capture\":true,\"paste\":true,\"hotKeys\":false,\"tray\":true,"
        "\"protocols\":[\"X11\",\"another\"]}\n");
    EXPECT_EQ(
        statusText(report).toStdString(),
        "running   yes\npaused    no\nitems     12\npinned    2\nbytes     5000000000\n"
        "session   x11\nprotocols X11, another\nWorks here:\ncapture   yes\npaste     yes\nhot "
        "keys  no\ntray      yes\n");
}

TEST(CommandOutput, TheStatusTellsOfASaveThatFailed)
{
    StatusReport report;
    report.lastError = u"The disk is \"full\"."_s;
    EXPECT_TRUE(statusJSON(report).endsWith(
        ",\"protocols\":[],\"lastError\":\"The disk is \\\"full\\\".\"}\n"));
    EXPECT_TRUE(statusText(report).endsWith(
        u"\nThe last copy could not be saved: The disk is \"full\".\n"_s));
}

} // namespace
} // namespace tessly
