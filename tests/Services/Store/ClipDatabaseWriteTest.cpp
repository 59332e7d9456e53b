#include "HistoryFile.h"
#include "QtPrinting.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class ClipDatabaseWrites : public testing::Test
{
protected:
    ClipDatabaseWrites() { history.open(); }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }
    QStringList previews() { return HistoryFile::previews(all()); }

    HistoryFile history;
};

const ClipPayload everything({
    .plainText = "pl\xc3\xa4in",
    .rtf = QByteArray("r\0tf", 4),
    .html = "",
    .imagePNG = QByteArray("\x89PNG\0\xff", 6),
    .fileURLs = {"file:///tmp/a%20b", "file:///\xc3\xa9"},
});

} // namespace

TEST_F(ClipDatabaseWrites, savesNewContentWithAllItsFields)
{
    history.now = 1234.5;
    const Clip saved = history.database().save(everything, u"Éditor"_s, u"org.editor"_s, 100);
    EXPECT_FALSE(saved.id.isNull());
    EXPECT_EQ(saved.createdAt, 1234.5);
    EXPECT_EQ(saved.lastUsedAt, 1234.5);
    EXPECT_EQ(saved.payload, everything);
    EXPECT_EQ(saved.sourceAppName, u"Éditor"_s);
    EXPECT_EQ(saved.sourceBundleID, u"org.editor"_s);
    EXPECT_FALSE(saved.isPinned);
    EXPECT_EQ(saved.pinOrder, std::nullopt);
    EXPECT_EQ(saved.copyCount, 1);
    history.open();
    EXPECT_EQ(all(), std::vector({saved}));
}

TEST_F(ClipDatabaseWrites, storesWhatIsDerivedFromTheContent)
{
    const Clip saved = history.database().save(everything, std::nullopt, std::nullopt, 100);
    EXPECT_EQ(
        history.ask("SELECT id, kind, preview, search_text, typeof(html), length(html), "
                    "file_urls, content_hash, is_pinned, pin_order, copy_count FROM clips"),
        QByteArrayList({QByteArrayList({
                                           saved.id.toByteArray(QUuid::WithoutBraces).toUpper(),
                                           "files",
                                           everything.preview(),
                                           everything.searchText(),
                                           "blob",
                                           "0",
                                           R"(["file:\/\/\/tmp\/a%20b","file:\/\/\/)"
                                           "\xc3\xa9\"]",
                                           everything.contentHash(),
                                           "0",
                                           "NULL",
                                           "1",
                                       })
                            .join('|')}));
}

TEST_F(ClipDatabaseWrites, keepsAbsentAndEmptyApart)
{
    for (const ClipPayload& payload :
         {ClipPayload({.rtf = ""}), ClipPayload({.plainText = "x"}),
          ClipPayload({.plainText = "", .imagePNG = "y"})}) {
        const Clip saved = history.database().save(payload, std::nullopt, u""_s, 100);
        EXPECT_EQ(all().front(), saved);
        EXPECT_EQ(all().front().payload, payload);
    }
}

TEST_F(ClipDatabaseWrites, savingTheSameContentAgainCountsOneMoreCopy)
{
    const Clip first = history.database().save(everything, u"One"_s, u"org.one"_s, 100);
    const Clip between = history.saveText("between");
    const Clip second = history.database().save(everything, u"Two"_s, u"org.two"_s, 100);
    EXPECT_EQ(second.id, first.id);
    EXPECT_EQ(second.createdAt, first.createdAt);
    EXPECT_GT(second.lastUsedAt, between.lastUsedAt);
    EXPECT_EQ(second.copyCount, 2);
    EXPECT_EQ(second.sourceAppName, u"Two"_s);
    EXPECT_EQ(second.sourceBundleID, u"org.two"_s);
    EXPECT_EQ(all(), std::vector({second, between}));
}

TEST_F(ClipDatabaseWrites, aCopyWithoutASourceClearsTheSource)
{
    history.database().save(everything, u"One"_s, u"org.one"_s, 100);
    const Clip second = history.database().save(everything, std::nullopt, std::nullopt, 100);
    EXPECT_EQ(second.sourceAppName, std::nullopt);
    EXPECT_EQ(all(), std::vector({second}));
    EXPECT_TRUE(history.database().search(u"one"_s, std::nullopt, 10).empty())
        << "the index has forgotten it, too";
}

TEST_F(ClipDatabaseWrites, aRepeatedCopyLeavesAPinnedClipWhereItIs)
{
    const Clip a = history.saveText("a");
    const Clip b = history.saveText("b");
    history.database().setPinned(true, a.id);
    history.database().setPinned(true, b.id);
    const Clip again = history.saveText("a");
    EXPECT_TRUE(again.isPinned);
    EXPECT_EQ(again.pinOrder, 1);
    EXPECT_EQ(again.copyCount, 2);
    EXPECT_EQ(previews(), QStringList({u"b"_s, u"a"_s}));
}

TEST_F(ClipDatabaseWrites, aRepeatKeepsTheContentAsItWasFirstStored)
{
    const Clip first = history.database().save(
        ClipPayload({.plainText = "x", .rtf = ""}), std::nullopt, std::nullopt, 100);
    const Clip again = history.saveText("x");
    EXPECT_EQ(again.id, first.id);
    EXPECT_EQ(again.payload, first.payload);
}

TEST_F(ClipDatabaseWrites, refusesEmptyContentAndWritesNothing)
{
    for (const ClipPayload& payload : {ClipPayload(), ClipPayload({.plainText = ""})}) {
        try {
            history.database().save(payload, std::nullopt, std::nullopt, 100);
            FAIL() << "the empty clip was saved";
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(
                error.description(),
                u"Could not decode clipboard data: The clipboard item was empty."_s);
        }
    }
    EXPECT_TRUE(all().empty());
}

TEST_F(ClipDatabaseWrites, keepsTheNewestTenWhateverTheMaximum)
{
    for (int i = 1; i <= 12; ++i) {
        history.saveText("text " + QByteArray::number(i), 3);
    }
    EXPECT_EQ(all().size(), 10U);
    EXPECT_EQ(previews().first(), u"text 12"_s);
    EXPECT_EQ(previews().last(), u"text 3"_s);
}

TEST_F(ClipDatabaseWrites, dropsTheOldestBeyondTheMaximum)
{
    for (int i = 1; i <= 51; ++i) {
        history.saveText("text " + QByteArray::number(i), 50);
    }
    EXPECT_EQ(all().size(), 50U);
    EXPECT_EQ(previews().last(), u"text 2"_s);
    EXPECT_TRUE(history.database().search(u"text 1"_s, ClipKind::link, 10).empty());
}

TEST_F(ClipDatabaseWrites, neverTrimsPinnedClipsNorCountsThem)
{
    for (int i = 0; i < 5; ++i) {
        history.database().setPinned(true, history.saveText("pinned " + QByteArray::number(i)).id);
    }
    for (int i = 0; i < 20; ++i) {
        history.saveText("text " + QByteArray::number(i), 10);
    }
    EXPECT_EQ(history.database().statistics().pinnedItems, 5);
    EXPECT_EQ(all().size(), 15U);
    history.database().trimHistory(0);
    EXPECT_EQ(all().size(), 15U);
}

TEST_F(ClipDatabaseWrites, trimsToALowerMaximum)
{
    for (int i = 1; i <= 30; ++i) {
        history.saveText("text " + QByteArray::number(i));
    }
    history.database().trimHistory(20);
    EXPECT_EQ(all().size(), 20U);
    history.database().trimHistory(-5);
    EXPECT_EQ(all().size(), 10U);
    EXPECT_EQ(previews().last(), u"text 21"_s);
}

TEST_F(ClipDatabaseWrites, pinsEachClipAboveTheOnesBefore)
{
    const Clip a = history.saveText("a");
    const Clip b = history.saveText("b");
    const auto pinOrder = [this](const Clip& clip) {
        return history.ask(
            "SELECT pin_order FROM clips WHERE id = '" +
            clip.id.toByteArray(QUuid::WithoutBraces).toUpper() + '\'');
    };
    history.database().setPinned(true, a.id);
    EXPECT_EQ(pinOrder(a), QByteArrayList({"1.0"}));
    history.database().setPinned(true, b.id);
    EXPECT_EQ(pinOrder(b), QByteArrayList({"2.0"}));
    history.database().setPinned(true, a.id);
    EXPECT_EQ(pinOrder(a), QByteArrayList({"3.0"}));
    EXPECT_EQ(previews(), QStringList({u"a"_s, u"b"_s}));
    history.database().setPinned(false, a.id);
    EXPECT_EQ(pinOrder(a), QByteArrayList({"NULL"}));
    EXPECT_EQ(previews(), QStringList({u"b"_s, u"a"_s}));
    EXPECT_FALSE(all().back().isPinned);
}

TEST_F(ClipDatabaseWrites, pinningAnUnknownClipChangesNothing)
{
    const Clip a = history.saveText("a");
    history.database().setPinned(true, QUuid::createUuid());
    EXPECT_EQ(all(), std::vector({a}));
}

TEST_F(ClipDatabaseWrites, aUseMovesAClipToTheTopOfItsGroup)
{
    const Clip a = history.saveText("a");
    const Clip b = history.saveText("b");
    history.database().markUsed(a.id, true);
    EXPECT_EQ(previews(), QStringList({u"a"_s, u"b"_s}));
    EXPECT_EQ(all().front().copyCount, 1);
    EXPECT_EQ(all().front().createdAt, a.createdAt);

    history.database().setPinned(true, a.id);
    history.database().setPinned(true, b.id);
    EXPECT_EQ(previews(), QStringList({u"b"_s, u"a"_s}));
    history.database().markUsed(a.id, true);
    EXPECT_EQ(previews(), QStringList({u"a"_s, u"b"_s}));
    EXPECT_EQ(all().front().pinOrder, 3);
}

TEST_F(ClipDatabaseWrites, aUseThatDoesNotMoveWritesNothing)
{
    const Clip a = history.saveText("a");
    history.database().setPinned(true, a.id);
    const std::vector<Clip> before = all();
    const QByteArrayList version = history.ask("PRAGMA data_version");
    history.database().markUsed(a.id, false);
    EXPECT_EQ(all(), before);
}

TEST_F(ClipDatabaseWrites, removesOneClip)
{
    const Clip a = history.saveText("a");
    const Clip b = history.saveText("b");
    history.database().remove(a.id);
    EXPECT_EQ(all(), std::vector({b}));
    history.database().remove(a.id);
    EXPECT_EQ(all(), std::vector({b}));
}

TEST_F(ClipDatabaseWrites, givesPagesBackAfterARemoval)
{
    const Clip large = history.saveText(QByteArray(100'000, 'x'));
    history.saveText("small");
    const int before = history.ask("PRAGMA page_count").first().toInt();
    history.database().remove(large.id);
    EXPECT_LE(history.ask("PRAGMA page_count").first().toInt(), before - 32);
}

TEST_F(ClipDatabaseWrites, clearsAllButThePinnedClips)
{
    const Clip pinned = history.saveText("pinned");
    history.saveText("other");
    history.database().setPinned(true, pinned.id);
    history.database().clear(false);
    EXPECT_EQ(previews(), QStringList({u"pinned"_s}));
    const ClipStore::Statistics statistics = history.database().statistics();
    EXPECT_EQ(statistics.totalItems, 1);
    EXPECT_EQ(statistics.pinnedItems, statistics.totalItems);
}

TEST_F(ClipDatabaseWrites, clearsThePinnedClipsToo)
{
    history.database().setPinned(true, history.saveText("pinned").id);
    history.saveText("other");
    history.database().clear(true);
    EXPECT_TRUE(all().empty());
    EXPECT_EQ(history.database().statistics().totalItems, 0);
}

TEST_F(ClipDatabaseWrites, countsTheBytesOfAllItsFiles)
{
    history.saveText(QByteArray(50'000, 'x'));
    qint64 bytes = 0;
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        const qint64 size = QFileInfo(history.path() + companion).size();
        EXPECT_GT(size, 0) << companion.toStdString();
        bytes += size;
    }
    EXPECT_EQ(history.database().statistics().databaseBytes, bytes);
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        QFile::remove(history.path() + companion);
    }
    EXPECT_EQ(history.database().statistics().databaseBytes, 0);
}

TEST_F(ClipDatabaseWrites, keepTheIndexInStepWithTheTable)
{
    const Clip clip = history.database().save(
        ClipPayload({.plainText = "first words"}), std::nullopt, std::nullopt, 100);
    history.database().save(
        ClipPayload({.plainText = "first words"}), u"Éditor"_s, std::nullopt, 100);
    history.database().setPinned(true, clip.id);
    history.database().markUsed(clip.id, true);
    EXPECT_EQ(history.database().search(u"edit"_s, std::nullopt, 10).size(), 1U);
    history.execute("INSERT INTO clips_fts (clips_fts) VALUES ('integrity-check')");
    history.database().remove(clip.id);
    history.execute("INSERT INTO clips_fts (clips_fts) VALUES ('integrity-check')");
    EXPECT_EQ(
        history.ask("SELECT count(*) FROM clips_fts WHERE clips_fts MATCH 'first'"),
        QByteArrayList({"0"}));
}

TEST_F(ClipDatabaseWrites, aSaveThatFailsLeavesNothingBehind)
{
    for (int i = 0; i < 10; ++i) {
        history.saveText("text " + QByteArray::number(i));
    }
    const std::vector<Clip> before = all();
    // The trim at the end of the save fails.
    history.execute(
        "CREATE TRIGGER refusal BEFORE DELETE ON clips BEGIN SELECT raise(FAIL, 'no'); END");
    try {
        history.saveText("one too many", 10);
        FAIL() << "the save went through";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(
            error.description(),
            u"Clipboard database operation failed: Could not update clipboard history: no"_s);
    }
    EXPECT_EQ(all(), before);
    history.execute("DROP TRIGGER refusal");
    history.saveText("next", 10);
    EXPECT_EQ(previews().first(), u"next"_s);
}

} // namespace tessly::test
