#include "AppPaths.h"
#include "ClosedHistory.h"
#include "FaultVFS.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A history that is damaged, set aside, and begun afresh.
class ClipRescueTest : public testing::Test
{
protected:
    static QByteArray text(int i)
    {
        return "text " + QByteArray::number(i) + ' ' + QByteArray(300, 'x');
    }

    void fill(int clips)
    {
        history.open();
        for (int i = 0; i < clips; ++i) {
            history.saveText(text(i));
        }
        pinned = history.database().search({}, std::nullopt, 3);
        for (const Clip& clip : pinned) {
            history.database().setPinned(true, clip.id);
        }
        history.database().scrub();
        before = all();
    }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }

    static QByteArray bytes(const QString& path)
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void setBytes(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }

    /// Overwrites the leaf pages of the table that hold these texts, each with its neighbours.
    void damagePagesOf(const QByteArrayList& texts)
    {
        QByteArray content = bytes(history.path());
        for (const QByteArray& lost : texts) {
            for (qsizetype at = 0; (at = content.indexOf(lost, at)) >= 0;) {
                constexpr qsizetype size = HistoryFile::pageSize;
                content.replace(at / size * size, size, QByteArray(size, '\x55'));
            }
        }
        setBytes(history.path(), content);
    }

    void expectDamaged()
    {
        try {
            history.open();
            FAIL() << "the damage is not found";
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(error.errorCase(), ClipStoreError::Case::corruptedDatabase) << error.what();
        }
    }

    /// Sets the history aside, as a start does, and opens a fresh one; the database set aside.
    QString setAside()
    {
        const std::optional<QString> folder = AppPaths::recoverDatabaseFiles(history.folder());
        if (!folder) {
            throw std::runtime_error("nothing was set aside");
        }
        history.open();
        EXPECT_TRUE(all().empty());
        return QDir(*folder).filePath(u"history.sqlite"_s);
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    const LogCapture log;
    HistoryFile history;
    std::vector<Clip> pinned;
    std::vector<Clip> before;
};

} // namespace

TEST_F(ClipRescueTest, bringsOverAllThatCanBeRead)
{
    fill(300);
    history.close();
    const QByteArrayList lost = {text(20), text(120), text(200)};
    damagePagesOf(lost);
    expectDamaged();
    const QString damaged = setAside();
    const QByteArray damagedBytes = bytes(damaged);
    const QStringList files = QDir(QFileInfo(damaged).path()).entryList(QDir::Files);
    const ClipRescue rescue = history.database().rescue(damaged, 1000);

    const std::vector<Clip> after = all();
    EXPECT_EQ(rescue.kept, static_cast<qint64>(after.size()));
    EXPECT_GE(after.size(), 250U);
    EXPECT_LT(after.size(), 300U);
    // In their order, with everything that belongs to them.
    std::vector<Clip> expected = before;
    std::erase_if(
        expected, [&](const Clip& clip) { return std::ranges::find(after, clip) == after.end(); });
    EXPECT_EQ(after, expected);
    EXPECT_TRUE(after.front().isPinned);
    for (const Clip& clip : after) {
        EXPECT_FALSE(lost.contains(*clip.payload.held()->plainText()));
    }
    EXPECT_EQ(history.database().search(u"text 299"_s, std::nullopt, -1).size(), 1U);
    expectSound();
    EXPECT_EQ(bytes(damaged), damagedBytes);
    EXPECT_EQ(QDir(QFileInfo(damaged).path()).entryList(QDir::Files), files);
    EXPECT_EQ(log.lines(u"com.brackmoor.tessly.ClipStore"_s).back().level, QtWarningMsg);
}

TEST_F(ClipRescueTest, bringsOverWhatIsInTheLog)
{
    fill(100);
    history.saveText("only in the log");
    const Clip latest = all()[pinned.size()];
    // What a kill leaves.
    const QByteArray file = bytes(history.path());
    const QByteArray logged = bytes(history.path() + u"-wal"_s);
    ASSERT_FALSE(logged.isEmpty());
    history.close();
    setBytes(history.path(), file);
    setBytes(history.path() + u"-wal"_s, logged);
    damagePagesOf({text(20)});
    const QByteArray damagedFile = bytes(history.path());

    expectDamaged();
    EXPECT_EQ(bytes(history.path()), damagedFile) << "looking at it changed nothing";
    EXPECT_EQ(bytes(history.path() + u"-wal"_s), logged);
    const QString damaged = setAside();
    const ClipRescue rescue = history.database().rescue(damaged, 1000);
    EXPECT_GE(rescue.kept, 85);
    EXPECT_EQ(all()[pinned.size()], latest);
    EXPECT_EQ(bytes(damaged), damagedFile) << "nor did reading it";
    EXPECT_EQ(bytes(damaged + u"-wal"_s), logged);
    expectSound();
}

TEST_F(ClipRescueTest, bringsOverTheLatestWithinTheMaximumAndAllThatArePinned)
{
    fill(100);
    history.close();
    damagePagesOf({text(0)});
    expectDamaged();
    const QString damaged = setAside();
    EXPECT_EQ(history.database().rescue(damaged, 20).kept, 23);
    EXPECT_EQ(all(), std::vector<Clip>(before.begin(), before.begin() + 23));
}

TEST_F(ClipRescueTest, leavesOutWhatIsNoLongerWhatWasStored)
{
    fill(100);
    history.close();
    QByteArray content = bytes(history.path());
    content.replace(text(50), QByteArray(text(50)).replace("text", "pest"));
    setBytes(history.path(), content);
    damagePagesOf({text(0)});
    expectDamaged();
    const QString damaged = setAside();
    (void)history.database().rescue(damaged, 1000);
    EXPECT_TRUE(history.database().search(u"pest"_s, std::nullopt, -1).empty());
    EXPECT_GE(all().size(), 80U);
}

TEST_F(ClipRescueTest, keepsWhatTheNewHistoryHasAlready)
{
    fill(50);
    history.close();
    damagePagesOf({text(0)});
    expectDamaged();
    const QString damaged = setAside();
    history.now = 3'000'000;
    const Clip copied = history.saveText(text(30));
    const ClipRescue rescue = history.database().rescue(damaged, 1000);
    EXPECT_EQ(rescue.kept, rescue.found - 1);
    EXPECT_EQ(all()[pinned.size()], copied);
    const std::vector<Clip> once = all();
    EXPECT_EQ(history.database().rescue(damaged, 1000), rescue);
    EXPECT_EQ(all(), once) << "nothing comes twice";
}

TEST_F(ClipRescueTest, goesOnAtTheNextStart)
{
    fill(300);
    history.close();
    damagePagesOf({text(0)});
    expectDamaged();
    const QString damaged = setAside();
    const QString folder = QFileInfo(damaged).path();
    EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), folder);

    // The pinned ones and the latest have come when the process ends.
    ASSERT_EQ(history.database().rescueSome(damaged, 1000), std::nullopt);
    std::vector<Clip> expected = all();
    ASSERT_GE(expected.size(), 50U);
    ASSERT_LT(expected.size(), 250U);
    EXPECT_EQ(
        expected, std::vector<Clip>(before.begin(), before.begin() + qint64(expected.size())));
    history.open();
    const Clip deleted = expected[pinned.size() + 2];
    history.database().remove(deleted.id);
    EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), folder);
    const ClipRescue rescue = history.database().rescue(damaged, 1000);
    EXPECT_EQ(rescue.kept, rescue.found - 1) << "what was deleted meanwhile stays away";
    EXPECT_EQ(static_cast<qint64>(all().size()), rescue.kept);
    EXPECT_EQ(std::ranges::count(all(), deleted), 0);
    EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), std::nullopt);
    EXPECT_EQ(history.ask("PRAGMA user_version"), QByteArrayList({"0"}));
}

TEST_F(ClipRescueTest, goesOnWhereAFullDiskEndedIt)
{
    fill(300);
    history.close();
    damagePagesOf({text(0)});
    expectDamaged();
    FaultVFS vfs;
    const QString damaged = setAside();
    ASSERT_EQ(history.database().rescueSome(damaged, 1000), std::nullopt);
    const std::vector<Clip> some = all();
    vfs.fail(FaultVFS::Call::write, FaultVFS::Fault::noSpace, 1, FaultVFS::Span::fromThenOn);
    EXPECT_THROW((void)history.database().rescue(damaged, 1000), ClipStoreError);
    EXPECT_EQ(all(), some);
    vfs.failNothing();
    history.open();
    EXPECT_TRUE(AppPaths::unfinishedRecovery(history.folder()));
    const ClipRescue rescue = history.database().rescue(damaged, 1000);
    EXPECT_EQ(rescue.kept, rescue.found);
    EXPECT_EQ(static_cast<qint64>(all().size()), rescue.kept);
    expectSound();
    history.close();
}

TEST_F(ClipRescueTest, comesInPartsOfAFewMegabytes)
{
    history.open();
    for (int i = 0; i < 20; ++i) {
        history.saveText(text(i) + QByteArray(1'000'000, 'y'));
    }
    history.database().scrub();
    history.close();
    const QString damaged = setAside();
    ASSERT_EQ(history.database().rescueSome(damaged, 1000), std::nullopt);
    EXPECT_EQ(all().size(), 5U);
    EXPECT_EQ(history.database().rescue(damaged, 1000).kept, 20);
}

TEST_F(ClipRescueTest, endsWhenTheHistoryIsCleared)
{
    fill(300);
    history.close();
    damagePagesOf({text(0)});
    expectDamaged();
    const QString damaged = setAside();
    ASSERT_EQ(history.database().rescueSome(damaged, 1000), std::nullopt);
    history.database().clear(true);
    EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), std::nullopt);
    EXPECT_EQ(history.database().rescueSome(damaged, 1000), ClipRescue());
    EXPECT_TRUE(all().empty());
}

TEST_F(ClipRescueTest, thatCouldNotBeginIsEndedByClearingToo)
{
    fill(40);
    damagePagesOf({text(20)});
    expectDamaged();
    static_cast<void>(setAside());
    history.open();
    ASSERT_NE(AppPaths::unfinishedRecovery(history.folder()), std::nullopt);
    history.database().clear(true);
    EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), std::nullopt);
}

TEST_F(ClipRescueTest, ofWhatIsNoHistoryBringsNothing)
{
    const QString file = QDir(history.folder()).filePath(u"other"_s);
    history.open();
    setBytes(file, QByteArray(20'000, '\x37'));
    EXPECT_EQ(history.database().rescue(file, 100), ClipRescue());
    setBytes(file, {});
    setBytes(file + u"-wal"_s, QByteArray(5000, 'w'));
    EXPECT_EQ(history.database().rescue(file, 100), ClipRescue());
    QFile::remove(file);
    EXPECT_EQ(history.database().rescue(file, 100), ClipRescue());
    EXPECT_EQ(bytes(file + u"-wal"_s), QByteArray(5000, 'w'));
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(ClipRescueTest, aLogWithoutItsFileIsSetAside)
{
    for (const bool isEmpty : {false, true}) {
        const QString wal = history.path() + u"-wal"_s;
        setBytes(wal, "what is left");
        if (isEmpty) {
            setBytes(history.path(), {});
        }
        EXPECT_THROW(
            (void)ClosedHistory::summaries(history.path(), {}, std::nullopt, -1), ClipStoreError);
        expectDamaged();
        EXPECT_EQ(bytes(wal), "what is left");
        const QString damaged = setAside();
        EXPECT_EQ(bytes(damaged + u"-wal"_s), "what is left");
        history.close();
        QFile::remove(history.path());
    }
}

} // namespace tessly::test
