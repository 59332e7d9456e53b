#include "ClipFaultFixture.h"
#include "OrdinaryUser.h"
#include "QtPrinting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

// A history whose file or folder is lost while it is open.

namespace tessly::test {

namespace {

class ClipLostFile : public ClipFaults
{
protected:
    /// As one that puts a backup in its place does.
    void replaceBy(const HistoryFile& other)
    {
        const QString copy = QDir(history.folder()).filePath(u"copy"_s);
        ASSERT_TRUE(QFile::copy(other.path(), copy));
        ASSERT_EQ(
            std::rename(
                QFile::encodeName(copy).constData(), QFile::encodeName(history.path()).constData()),
            0);
    }
};

} // namespace

TEST_F(ClipLostFile, thatIsDeletedIsMadeAnewByTheNextSave)
{
    history.open();
    fill(3);
    for (const QString& companion : {u""_s, u"-wal"_s, u"-shm"_s}) {
        ASSERT_TRUE(QFile::remove(history.path() + companion));
    }
    ClipDatabase& database = history.database();
    EXPECT_EQ(all().size(), 3U) << "what is there can still be pasted";

    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    EXPECT_TRUE(database.ftsAvailable());
    history.saveText("that goes on");
    history.open();
    EXPECT_EQ(all().size(), 2U);
    expectSound();
}

TEST_F(ClipLostFile, thatIsReplacedIsFollowedWhateverIsDoneToAnEntry)
{
    history.open();
    fill(12);
    const std::vector<Clip> clips = all();
    history.close();
    const QString backup = QDir(history.folder()).filePath(u"backup"_s);
    ASSERT_TRUE(QFile::copy(history.path(), backup));
    const auto restore = [&] {
        history.saveText("since the backup");
        const QString copy = QDir(history.folder()).filePath(u"copy"_s);
        ASSERT_TRUE(QFile::copy(backup, copy));
        ASSERT_EQ(
            std::rename(
                QFile::encodeName(copy).constData(), QFile::encodeName(history.path()).constData()),
            0);
    };
    ClipDatabase& database = history.open();

    restore();
    database.setPinned(true, clips.back().id);
    EXPECT_EQ(all().size(), 12U);
    EXPECT_EQ(all().front().id, clips.back().id) << "pinned in the file that is there now";
    restore();
    database.markUsed(clips.back().id, true);
    EXPECT_EQ(all().front().id, clips.back().id);
    restore();
    database.remove(clips.front().id);
    EXPECT_EQ(all().size(), 11U);
    restore();
    database.trimHistory(10);
    EXPECT_EQ(all().size(), 10U);
    history.open();
    EXPECT_EQ(all().size(), 10U);
    expectSound();
}

TEST_F(ClipLostFile, thatIsReplacedDoesNotHaveTheOtherClearedBeforeItIsShown)
{
    history.open();
    fill(1);
    HistoryFile other;
    other.open();
    other.saveText("restored");
    other.close();
    replaceBy(other);
    EXPECT_EQ(
        errorOf([&] { history.database().clear(true); }).description(),
        u"Clipboard database operation failed: The database file was moved or deleted."_s);
    EXPECT_EQ(HistoryFile::previews(all()), QStringList{u"restored"_s});
    history.database().clear(true);
    EXPECT_EQ(all().size(), 0U);
}

TEST_F(ClipLostFile, inAFolderThatIsClosedMeanwhileLosesNothing)
{
    const OrdinaryUser user(history.folder());
    history.open();
    fill(1);
    ::chmod(QFile::encodeName(history.folder()).constData(), 0500);
    history.saveText("into the files that are open");
    history.database().remove(all().back().id);
    EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
    EXPECT_EQ(HistoryFile::previews(all()), QStringList{u"into the files that are open"_s});
    expectSound();
}

TEST_F(ClipLostFile, inAFolderThatIsNoLongerTheUsersIsLostForAsLongAsThat)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give a folder away";
    }
    const OrdinaryUser user(history.folder());
    history.open();
    fill(2);
    const auto give = [this](uid_t owner) {
        const QByteArray folder = QFile::encodeName(history.folder());
        const uid_t ordinary = ::geteuid();
        EXPECT_EQ(::seteuid(0), 0);
        EXPECT_EQ(::chown(folder.constData(), owner == 0 ? 0 : ordinary, 0), 0);
        EXPECT_EQ(::chmod(folder.constData(), 0755), 0);
        EXPECT_EQ(::seteuid(ordinary), 0);
    };
    ASSERT_TRUE(QFile::remove(history.path()));
    give(0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const ClipStoreError error = errorOf([this] { history.saveText("nowhere to go"); });
        EXPECT_EQ(error.errorCase(), ClipStoreError::Case::openDatabase);
        EXPECT_TRUE(error.message().contains(u"Operation not permitted"_s));
        EXPECT_EQ(all().size(), 2U) << "what is there can still be pasted";
    }
    give(1);
    history.saveText("a new beginning");
    history.open();
    EXPECT_EQ(all().size(), 1U);
    expectSound();
}

TEST_F(ClipLostFile, inAFolderThatIsRemovedIsMadeAnewByTheNextSave)
{
    history.open();
    fill(3);
    ASSERT_TRUE(QDir(history.folder()).removeRecursively());
    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    struct stat status{};
    ASSERT_EQ(::stat(QFile::encodeName(history.folder()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    ASSERT_EQ(::stat(QFile::encodeName(history.path()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ClipLostFile, whoseLogIsLeftBehindIsMadeAnewByTheNextSave)
{
    history.open();
    fill(3);
    ASSERT_TRUE(QFile::remove(history.path()));
    ASSERT_GT(QFileInfo(history.path() + u"-wal"_s).size(), 0);
    history.saveText("a new beginning");
    EXPECT_EQ(all().size(), 1U);
    history.saveText("that goes on");
    history.open();
    EXPECT_EQ(all().size(), 2U);
    expectSound();
}

TEST_F(ClipLostFile, thatIsMovedAwayLeavesNothingBehind)
{
    history.open();
    fill(3);
    const QString away = QDir(history.folder()).filePath(u"away"_s);
    ASSERT_TRUE(QFile::rename(history.path(), away));
    history.saveText("a new beginning");
    history.close();
    EXPECT_EQ(
        ClipDatabase(away, SQLiteConnection::Access::readOnly).search({}, std::nullopt, -1).size(),
        3U)
        << "its log went with it";
}

TEST_F(ClipLostFile, thatIsReplacedKeepsItsLogOutOfTheOther)
{
    HistoryFile other;
    other.open();
    for (int i = 0; i < 300; ++i) {
        other.saveText("other " + QByteArray::number(i));
    }
    other.close();
    history.open();
    for (int i = 0; i < 20; ++i) {
        history.saveText("own " + QByteArray::number(i));
    }
    replaceBy(other);
    ASSERT_GT(QFileInfo(history.path() + u"-wal"_s).size(), 0);
    history.saveText("one more");
    EXPECT_EQ(all().size(), 301U);
    EXPECT_TRUE(std::ranges::none_of(HistoryFile::previews(all()), [](const QString& text) {
        return text.startsWith(u"own"_s);
    }));
    history.open();
    EXPECT_EQ(all().size(), 301U);
    expectSound();
}

TEST_F(ClipLostFile, thatIsReplacedLeavesTheOtherAsItIs)
{
    history.open();
    fill(3);
    HistoryFile other;
    other.open();
    for (int i = 0; i < 7; ++i) {
        other.saveText("other " + QByteArray::number(i));
    }
    // With a log that is not copied back, as a restored backup may have.
    for (const QString& companion : {u""_s, u"-wal"_s}) {
        QFile::remove(history.path() + companion);
        ASSERT_TRUE(QFile::copy(other.path() + companion, history.path() + companion));
    }
    QFile::remove(history.path() + u"-shm"_s);
    history.saveText("one more");
    EXPECT_EQ(all().size(), 8U);
    history.open();
    EXPECT_EQ(all().size(), 8U);
    expectSound();
}

} // namespace tessly::test
