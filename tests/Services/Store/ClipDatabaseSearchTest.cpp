#include "HistoryFile.h"
#include "QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class ClipDatabaseSearch : public testing::Test
{
protected:
    ClipDatabaseSearch() { history.open(); }

    QStringList
    search(const QString& query, std::optional<ClipKind> kind = std::nullopt, qint64 limit = 50)
    {
        return HistoryFile::previews(history.database().search(query, kind, limit));
    }
    Clip save(ClipPayload::Fields fields, std::optional<QString> appName = std::nullopt)
    {
        return history.database().save(ClipPayload(std::move(fields)), appName, std::nullopt, 1000);
    }

    HistoryFile history;
};

} // namespace

TEST_F(ClipDatabaseSearch, forNothingOrBlanksListsEverything)
{
    history.saveText("a");
    history.saveText("b");
    for (const QString& query : {u""_s, u"  \n\t"_s, u"\u00a0\u3000"_s}) {
        EXPECT_EQ(search(query), QStringList({u"b"_s, u"a"_s}));
        EXPECT_EQ(search(query, ClipKind::link), QStringList());
        EXPECT_EQ(search(query, std::nullopt, 1), QStringList({u"b"_s}));
    }
}

TEST_F(ClipDatabaseSearch, findsWordsByTheirBeginning)
{
    history.saveText("The Report of May");
    history.saveText("Nothing here");
    EXPECT_EQ(search(u"repo"_s), QStringList({u"The Report of May"_s}));
    EXPECT_EQ(search(u" REPO ma "_s), QStringList({u"The Report of May"_s}));
    EXPECT_EQ(search(u"report june"_s), QStringList());
}

TEST_F(ClipDatabaseSearch, looksInsideWordsOnlyIfNoWordBeginsSo)
{
    history.saveText("The Report");
    EXPECT_EQ(search(u"port"_s), QStringList({u"The Report"_s}));
    history.saveText("Portugal");
    EXPECT_EQ(search(u"port"_s), QStringList({u"Portugal"_s}));
}

TEST_F(ClipDatabaseSearch, overlooksAccentsInTheIndexOnly)
{
    history.saveText("École");
    EXPECT_EQ(search(u"ecole"_s), QStringList({u"École"_s}));
    EXPECT_EQ(search(u"col"_s), QStringList({u"École"_s}));
    EXPECT_EQ(search(u"éCOLE"_s), QStringList({u"École"_s}));
    history.saveText("xÉty");
    EXPECT_EQ(search(u"ét"_s), QStringList()) << "LIKE folds only ASCII";
    EXPECT_EQ(search(u"ÉT"_s), QStringList({u"xÉty"_s}));
}

TEST_F(ClipDatabaseSearch, takesWildcardsForWhatTheyAre)
{
    history.saveText("y50 percent off");
    history.saveText("x50%_off!");
    EXPECT_EQ(search(u"50%_off"_s), QStringList({u"x50%_off!"_s}));
    history.saveText("a\\b");
    EXPECT_EQ(search(u"\\b"_s), QStringList({u"a\\b"_s}));
}

TEST_F(ClipDatabaseSearch, findsPunctuation)
{
    history.saveText("what?!");
    history.saveText("what");
    EXPECT_EQ(search(u"?!"_s), QStringList({u"what?!"_s}));
    EXPECT_EQ(search(u"\"\""_s), QStringList());
}

TEST_F(ClipDatabaseSearch, looksAtTheSourceApplicationToo)
{
    save({.plainText = "x"}, u"Text Editor"_s);
    EXPECT_EQ(search(u"edit"_s), QStringList({u"x"_s}));
    EXPECT_EQ(search(u"ditor"_s), QStringList({u"x"_s}));
}

TEST_F(ClipDatabaseSearch, looksAtThePreviewToo)
{
    save({.rtf = "{\\rtf1}"});
    EXPECT_EQ(search(u"clipboard"_s), QStringList({u"Clipboard item"_s}));
    history.saveText("two\nlines");
    EXPECT_EQ(search(u"wo li"_s), QStringList({u"two lines"_s}));
}

TEST_F(ClipDatabaseSearch, findsFilesByNameAndPathAndImagesByWordsForThem)
{
    save({.fileURLs = {"file:///home/me/May%20Report.pdf"}});
    save({.imagePNG = "x"});
    EXPECT_EQ(search(u"may"_s), QStringList({u"May Report.pdf"_s}));
    EXPECT_EQ(search(u"home"_s), QStringList({u"May Report.pdf"_s}));
    EXPECT_EQ(search(u"photo"_s), QStringList({u"Image"_s}));
}

TEST_F(ClipDatabaseSearch, givesOnlyTheKindAskedForPinnedFirst)
{
    save({.plainText = "common text 1"});
    const Clip pinned = save({.plainText = "common text 2"});
    save({.plainText = "common text 3"});
    save({.plainText = "common:link"});
    save({.plainText = "common rich", .html = "x"});
    history.database().setPinned(true, pinned.id);
    const QStringList texts = {u"common text 2"_s, u"common text 3"_s, u"common text 1"_s};
    EXPECT_EQ(search(u"common"_s, ClipKind::text), texts);
    EXPECT_EQ(search(u"ommon"_s, ClipKind::text), texts);
    EXPECT_EQ(search({}, ClipKind::text), texts);
    EXPECT_EQ(search(u"common"_s, ClipKind::link), QStringList({u"common:link"_s}));
    EXPECT_EQ(search(u"common"_s, ClipKind::richText), QStringList({u"common rich"_s}));
    EXPECT_EQ(search(u"common"_s, ClipKind::files), QStringList());
}

TEST_F(ClipDatabaseSearch, looksForFewerLettersWhereTheKindHasNone)
{
    save({.plainText = "Portugal"});
    save({.plainText = "see:report"});
    // The index finds a text, but no link.
    EXPECT_EQ(search(u"port"_s, ClipKind::link), QStringList({u"see:report"_s}));
}

TEST_F(ClipDatabaseSearch, givesNoMoreThanTheLimitAndAllForANegativeOne)
{
    for (int i = 0; i < 30; ++i) {
        history.saveText("text " + QByteArray::number(i));
    }
    for (const QString& query : {u""_s, u"text"_s, u"ext"_s}) {
        EXPECT_EQ(search(query, std::nullopt, 0).size(), 0);
        EXPECT_EQ(search(query, std::nullopt, 7).size(), 7);
        EXPECT_EQ(search(query, std::nullopt, 7).first(), u"text 29"_s);
        EXPECT_EQ(search(query, std::nullopt, 1000).size(), 30);
        EXPECT_EQ(search(query, std::nullopt, -1).size(), 30);
        EXPECT_EQ(search(query, ClipKind::text, -1).size(), 30);
        EXPECT_EQ(search(query, ClipKind::text, 0).size(), 0);
    }
}

TEST_F(ClipDatabaseSearch, readsAFileListThatCannotBeReadAsAnEmptyOne)
{
    const Clip clip = save({.plainText = "x", .fileURLs = {"file:///a"}});
    for (const QByteArray& value :
         {QByteArray("NULL"), QByteArray("x''"), QByteArray("'['"), QByteArray("'[1]'"),
          QByteArray("'{\"a\":1}'"), QByteArray("x'ff00'")}) {
        history.execute("UPDATE clips SET file_urls = " + value);
        const std::vector<Clip> clips = history.database().search({}, std::nullopt, 10);
        ASSERT_EQ(clips.size(), 1U);
        EXPECT_EQ(clips.front().payload, ClipPayload({.plainText = "x"})) << value.constData();
    }
}

TEST_F(ClipDatabaseSearch, refusesAnIdentifierThatIsNone)
{
    const Clip clip = history.saveText("word");
    for (const QByteArray& value :
         {QByteArray(""), QByteArray("x"), clip.id.toByteArray(), clip.id.toByteArray(QUuid::Id128),
          clip.id.toByteArray(QUuid::WithoutBraces) + '0'}) {
        history.execute("UPDATE clips SET id = '" + value + '\'');
        for (const QString& query : {u""_s, u"word"_s, u"ord"_s}) {
            try {
                (void)history.database().search(query, std::nullopt, 10);
                FAIL() << value.constData();
            } catch (const ClipStoreError& error) {
                EXPECT_EQ(
                    error.description(),
                    u"Could not decode clipboard data: A clipboard item had an invalid identifier."_s);
            }
        }
    }
}

TEST_F(ClipDatabaseSearch, readsAnyIdentifierInLowerCaseToo)
{
    const Clip clip = history.saveText("x");
    history.execute("UPDATE clips SET id = lower(id)");
    EXPECT_EQ(history.database().search({}, std::nullopt, 10), std::vector({clip}));
    history.execute("UPDATE clips SET id = '00000000-0000-0000-0000-000000000000'");
    EXPECT_EQ(history.database().search({}, std::nullopt, 10).front().id, QUuid());
}

TEST_F(ClipDatabaseSearch, ignoresStoredValuesThatTheContentTellsBetter)
{
    const Clip clip = history.saveText("x");
    history.execute("UPDATE clips SET kind = 'video', preview = 'other', content_hash = ''");
    EXPECT_EQ(history.database().search({}, std::nullopt, 10), std::vector({clip}));
}

TEST_F(ClipDatabaseSearch, readsTheNumberOfCopiesAsThirtyTwoBits)
{
    history.saveText("x");
    history.execute("UPDATE clips SET copy_count = 4294967299");
    EXPECT_EQ(history.database().search({}, std::nullopt, 10).front().copyCount, 3);
}

TEST_F(ClipDatabaseSearch, takesOverTheContentThatTheCallerHolds)
{
    const Clip a = save({.plainText = "a word", .imagePNG = QByteArray(1000, 'x')});
    const Clip b = save({.plainText = "b word"});
    const std::vector<Clip> held = history.database().search({}, std::nullopt, 1);
    ASSERT_EQ(held.front().id, b.id);
    // What was read for the list is the same content still, what the table says of it is newer.
    history.execute("UPDATE clips SET plain_text = 'changed', copy_count = 7, is_pinned = 1, "
                    "pin_order = 2.5, source_app_name = 'App', source_bundle_id = 'app', "
                    "last_used_at = last_used_at + 10");
    const std::vector<Clip> clips = history.database().search({}, std::nullopt, 10, held);
    ASSERT_EQ(clips.size(), 2U);
    EXPECT_EQ(clips[0].id, b.id);
    EXPECT_EQ(
        clips[0].payload.held()->plainText()->constData(),
        held.front().payload.held()->plainText()->constData());
    EXPECT_EQ(clips[1].payload.held()->plainText(), "changed");
    for (const Clip& clip : clips) {
        EXPECT_EQ(clip.copyCount, 7);
        EXPECT_TRUE(clip.isPinned);
        EXPECT_EQ(clip.pinOrder, 2.5);
        EXPECT_EQ(clip.sourceAppName, u"App"_s);
        EXPECT_EQ(clip.sourceBundleID, u"app"_s);
    }
    EXPECT_EQ(clips[0].lastUsedAt, b.lastUsedAt + 10);
    EXPECT_EQ(clips[0].createdAt, b.createdAt);
}

TEST_F(ClipDatabaseSearch, doesNotBeginOnceItIsToStop)
{
    history.saveText("x");
    std::stop_source source;
    source.request_stop();
    try {
        (void)history.database().search({}, std::nullopt, 10, {}, source.get_token());
        FAIL() << "the search ran";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(error.errorCase(), ClipStoreError::Case::execute);
        EXPECT_EQ(error.message(), u"Could not read clipboard history: interrupted"_s);
    }
}

} // namespace tessly::test
