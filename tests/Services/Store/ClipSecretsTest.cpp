#include "FaultVFS.h"
#include "HistoryFile.h"
#include "QtPrinting.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class ClipSecrets : public testing::Test
{
protected:
    ClipSecrets() { history.open(); }

    /// Saves a clip of which every flavour and the source hold the secret, in a few sizes.
    Clip saveSecret(const QByteArray& secret, int repeated, qint64 maximumHistory = 100'000)
    {
        const QByteArray text = QByteArray(secret + ' ').repeated(repeated);
        return history.database().save(
            ClipPayload(
                {.plainText = text,
                 .rtf = "{" + text + "}",
                 .html = "<p>" + text,
                 .imagePNG = text + "png",
                 .fileURLs = {"file:///" + secret}}),
            u"App "_s + QString::fromLatin1(secret), QString::fromLatin1(secret), maximumHistory);
    }

    /// The files of the history that hold the bytes.
    QStringList filesWith(const QByteArray& bytes)
    {
        QStringList found;
        for (const QString& name : QDir(history.folder()).entryList(QDir::Files)) {
            QFile file(QDir(history.folder()).filePath(name));
            EXPECT_TRUE(file.open(QFile::ReadOnly));
            if (file.readAll().toLower().contains(bytes)) {
                found.append(name);
            }
        }
        return found;
    }

    void fill(int clips)
    {
        for (int i = 0; i < clips; ++i) {
            history.saveText("other text " + QByteArray::number(i));
        }
    }

    HistoryFile history;
};

const QByteArray secret = "xsecretx";

} // namespace

TEST_F(ClipSecrets, areInTheFilesWhileTheyAreInTheHistory)
{
    saveSecret(secret, 3);
    EXPECT_FALSE(filesWith(secret).isEmpty()) << "or the other tests could not fail";
    fill(300);
    history.open();
    EXPECT_FALSE(filesWith(secret).isEmpty());
}

TEST_F(ClipSecrets, areGoneWhenTheClipIsRemoved)
{
    for (const int repeated : {1, 50, 1000, 100'000}) {
        fill(20);
        const Clip clip = saveSecret(secret, repeated);
        fill(20);
        history.database().remove(clip.id);
        EXPECT_EQ(filesWith(secret), QStringList()) << repeated;
    }
}

TEST_F(ClipSecrets, areGoneWhenAClipOfAnEarlierRunIsRemoved)
{
    const Clip clip = saveSecret(secret, 100);
    fill(20);
    history.open();
    history.database().setPinned(true, clip.id);
    history.database().remove(clip.id);
    EXPECT_EQ(filesWith(secret), QStringList());
}

TEST_F(ClipSecrets, areGoneWhenTheHistoryIsCleared)
{
    for (const bool includePinned : {false, true}) {
        fill(20);
        const Clip clip = saveSecret(secret, 1000);
        history.database().setPinned(includePinned, clip.id);
        history.database().clear(includePinned);
        EXPECT_EQ(filesWith(secret), QStringList()) << includePinned;
    }
}

TEST_F(ClipSecrets, areGoneOnceWhatWasTrimmedIsScrubbed)
{
    saveSecret(secret, 1000);
    fill(10);
    history.saveText("one more", 10);
    history.database().scrub();
    EXPECT_EQ(filesWith(secret), QStringList());

    saveSecret(secret, 1000);
    fill(11);
    history.database().trimHistory(10);
    history.database().scrub();
    EXPECT_EQ(filesWith(secret), QStringList());
}

// Wiping rewrites the whole index, which is too much for each copy.
TEST_F(ClipSecrets, thatSavesDroppedAreWipedOnceTheyAreATenthOfTheHistory)
{
    history.close();
    const FaultVFS vfs;
    history.open();
    saveSecret(secret, 1);
    fill(99);
    history.database().scrub();
    for (int dropped = 1; dropped < 10; ++dropped) {
        history.saveText("more " + QByteArray::number(dropped), 100);
        const qint64 written = vfs.bytesWritten();
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        EXPECT_EQ(vfs.bytesWritten(), written) << dropped;
    }
    EXPECT_NE(filesWith(secret), QStringList());
    history.saveText("one more", 100);
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_EQ(filesWith(secret), QStringList());
    history.close();
}

TEST_F(ClipSecrets, areGoneOnceAScrubFollowsARestart)
{
    saveSecret(secret, 1000);
    fill(11);
    history.database().trimHistory(10);
    history.open();
    history.database().scrub();
    EXPECT_EQ(filesWith(secret), QStringList());
}

TEST_F(ClipSecrets, ofASaveThatFailedAreGoneOnceItIsScrubbed)
{
    fill(10);
    history.database().scrub();
    history.execute(
        "CREATE TRIGGER refusal BEFORE DELETE ON clips BEGIN SELECT raise(FAIL, 'no'); END");
    EXPECT_THROW(saveSecret(secret, 1'000'000, 10), ClipStoreError);
    history.database().scrub();
    EXPECT_EQ(filesWith(secret), QStringList());
}

TEST_F(ClipSecrets, areGoneWithoutAFullTextIndexToo)
{
    history.close();
    history.execute("DROP TRIGGER clips_after_insert; DROP TRIGGER clips_after_delete;"
                    "DROP TRIGGER clips_after_update; DROP TABLE clips_fts;"
                    "CREATE TABLE other (x); CREATE INDEX clips_fts ON other (x)");
    ASSERT_FALSE(history.open().ftsAvailable());
    history.database().remove(saveSecret(secret, 1000).id);
    EXPECT_EQ(filesWith(secret), QStringList());
}

TEST_F(ClipSecrets, waitForTheNextScrubWhileAnotherProcessReads)
{
    const Clip clip = saveSecret(secret, 10);
    {
        SQLiteConnection other(history.path());
        other.execute("BEGIN; SELECT count(*) FROM clips");
        history.database().remove(clip.id);
        EXPECT_NE(filesWith(secret), QStringList()) << "the other one reads it still";
    }
    history.database().scrub();
    EXPECT_EQ(filesWith(secret), QStringList());
}

// Where a file has no name, nobody wipes it and nobody knows who may read the disk it is on.
TEST_F(ClipSecrets, areWrittenToNoFileButTheHistorysOwn)
{
    history.close();
    const FaultVFS vfs;
    history.open();
    const auto large = [](int i) { return QByteArray::number(i) + QByteArray(200'000, 'x'); };
    // Each of these would need more room for undoing one statement than SQLite keeps in memory.
    for (int i = 0; i < 30; ++i) {
        history.saveText(large(i));
    }
    history.saveText(large(30), 10);
    history.database().trimHistory(10);
    (void)history.database().search(u"nothing"_s, std::nullopt, -1);
    history.database().clear(true);
    history.close();
    for (const QByteArray& file : vfs.openedFiles()) {
        EXPECT_TRUE(file.startsWith(QFile::encodeName(history.path()))) << file.constData();
    }
    EXPECT_FALSE(vfs.openedFiles().isEmpty()) << "or it could not fail";
}

// Pages are split and merged in a history that grows and shrinks, and rows move between them.
TEST_F(ClipSecrets, areGoneWhateverTheHistoryWentThrough)
{
    QRandomGenerator random(4);
    std::vector<std::pair<QByteArray, QUuid>> clips;
    int number = 0;
    const auto save = [&] {
        const QByteArray token =
            "tok" + QByteArray::number(++number) + 'e' + QByteArray::number(random.generate(), 36);
        clips.emplace_back(token, saveSecret(token, random.bounded(1, 9)).id);
    };
    for (int i = 0; i < 200; ++i) {
        save();
    }
    QByteArrayList removed;
    while (clips.size() > 20) {
        if (random.bounded(5) == 0) {
            save();
        }
        const auto victim = clips.begin() + random.bounded(static_cast<int>(clips.size()));
        history.database().remove(victim->second);
        removed.append(victim->first);
        clips.erase(victim);
        ASSERT_EQ(filesWith(removed.last()), QStringList()) << removed.size();
    }
    for (const QByteArray& token : removed) {
        EXPECT_EQ(filesWith(token), QStringList()) << token.constData();
    }
    EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
    history.execute("INSERT INTO clips_fts (clips_fts) VALUES ('integrity-check')");
    EXPECT_EQ(history.database().statistics().totalItems, static_cast<qint64>(clips.size()));
}

} // namespace tessly::test
