#include "AppPaths.h"

#include "FileError.h"
#include "OrdinaryUser.h"
#include "QtPrinting.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

mode_t permissions(const QString& path)
{
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
    return status.st_mode & 07777;
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(content);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// Sets $XDG_DATA_HOME, and $HOME to a folder of its own.
class AppPathsTest : public testing::Test
{
protected:
    AppPathsTest()
    {
        qputenv("HOME", m_home.path().toUtf8());
        qunsetenv("XDG_DATA_HOME");
    }
    ~AppPathsTest() override
    {
        qputenv("HOME", m_oldHome);
        qputenv("XDG_DATA_HOME", m_oldData);
    }

    QString home(const QString& path = {}) const { return m_home.filePath(path); }
    QStringList entries(const QString& folder) const
    {
        return QDir(folder).entryList(
            QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

private:
    QTemporaryDir m_home;
    QByteArray m_oldHome = qgetenv("HOME");
    QByteArray m_oldData = qgetenv("XDG_DATA_HOME");
};

const QStringList allFiles = {
    u"history.sqlite"_s, u"history.sqlite-wal"_s, u"history.sqlite-shm"_s,
    u"history.sqlite-journal"_s};

} // namespace

TEST_F(AppPathsTest, isTheDataHome)
{
    qputenv("XDG_DATA_HOME", "/somewhere/else");
    EXPECT_EQ(AppPaths::applicationSupportDirectory(), u"/somewhere/else/Tessly"_s);
    EXPECT_EQ(AppPaths::databasePath(), u"/somewhere/else/Tessly/history.sqlite"_s);
}

TEST_F(AppPathsTest, isInTheHomeFolderWithoutADataHome)
{
    const QString expected = home(u".local/share/Tessly"_s);
    EXPECT_EQ(AppPaths::applicationSupportDirectory(), expected);
    for (const QByteArray& useless : {QByteArray(""), QByteArray("relative/path")}) {
        qputenv("XDG_DATA_HOME", useless);
        EXPECT_EQ(AppPaths::applicationSupportDirectory(), expected);
    }
}

TEST_F(AppPathsTest, preparesAPrivateFolderWithAllThatLeadsToIt)
{
    const mode_t before = ::umask(0);
    AppPaths::prepareDirectories();
    AppPaths::prepareDirectories();
    ::umask(before);
    for (const QString& folder : {u".local"_s, u".local/share"_s, u".local/share/Tessly"_s}) {
        EXPECT_EQ(permissions(home(folder)), 0700U) << folder.toStdString();
    }
}

TEST_F(AppPathsTest, closesAFolderThatIsThere)
{
    ASSERT_TRUE(QDir().mkpath(home(u".local/share/Tessly"_s)));
    ::chmod(QFile::encodeName(home(u".local"_s)).constData(), 0755);
    ::chmod(QFile::encodeName(home(u".local/share/Tessly"_s)).constData(), 0755);
    AppPaths::prepareDirectories();
    EXPECT_EQ(permissions(home(u".local/share/Tessly"_s)), 0700U);
    EXPECT_EQ(permissions(home(u".local"_s)), 0755U) << "what is others' stays as it is";
}

TEST_F(AppPathsTest, saysWhatTheFileSystemRefused)
{
    write(home(u".local"_s), "a file in the way");
    try {
        AppPaths::prepareDirectories();
        FAIL() << "the folder was prepared";
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
        EXPECT_EQ(error.path(), home(u".local/share"_s));
        EXPECT_EQ(
            error.description(),
            u"Could not create the folder “%1”: Not a directory"_s.arg(home(u".local/share"_s)));
        EXPECT_EQ(QString::fromUtf8(error.what()), error.description());
    }
}

TEST_F(AppPathsTest, failsInAFolderThatCannotBeWritten)
{
    const OrdinaryUser user(home());
    ::chmod(QFile::encodeName(home()).constData(), 0500);
    try {
        AppPaths::prepareDirectories();
        FAIL() << "the folder was prepared";
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), std::errc::permission_denied);
    }
    ::chmod(QFile::encodeName(home()).constData(), 0700);
}

TEST_F(AppPathsTest, namesARescueFolderByTimeAndTag)
{
    const QDateTime time(QDate(2026, 3, 9), QTime(15, 5, 59, 999), QTimeZone(3600));
    EXPECT_EQ(
        AppPaths::recoveryFolderName(time, QUuid(u"{3f2a9c1b-0000-4000-8000-000000000000}"_s)),
        u"history-recovery-2026-03-09T14-05-59Z-3F2A9C1B"_s);
}

TEST_F(AppPathsTest, rescuesTheDatabaseAlone)
{
    write(home(u"history.sqlite"_s), "damaged");
    write(home(u"other"_s), "other");
    const std::optional<QString> rescue = AppPaths::recoverDatabaseFiles(home());
    ASSERT_TRUE(rescue);
    EXPECT_EQ(QFileInfo(*rescue).path(), home(u"Recovered History"_s));
    EXPECT_EQ(entries(*rescue), QStringList({u".unfinished"_s, u"history.sqlite"_s}));
    AppPaths::finishRecovery(*rescue);
    EXPECT_EQ(entries(*rescue), QStringList({u"history.sqlite"_s}));
    EXPECT_EQ(read(*rescue + u"/history.sqlite"_s), "damaged");
    EXPECT_EQ(entries(home()), QStringList({u"Recovered History"_s, u"other"_s}));
}

TEST_F(AppPathsTest, rescuesAllFilesOfTheDatabase)
{
    for (const QString& file : allFiles) {
        write(home(file), file.toUtf8());
    }
    const std::optional<QString> rescue = AppPaths::recoverDatabaseFiles(home());
    ASSERT_TRUE(rescue);
    for (const QString& file : allFiles) {
        EXPECT_EQ(read(*rescue + u'/' + file), file.toUtf8());
    }
    EXPECT_EQ(entries(home()), QStringList({u"Recovered History"_s}));
}

TEST_F(AppPathsTest, createsNothingWhenThereIsNothingToRescue)
{
    EXPECT_EQ(AppPaths::recoverDatabaseFiles(home()), std::nullopt);
    EXPECT_EQ(entries(home()), QStringList());
}

TEST_F(AppPathsTest, givesEachRescueAFolderOfItsOwn)
{
    QSet<QString> rescues;
    for (int i = 0; i < 5; ++i) {
        write(home(u"history.sqlite"_s), QByteArray::number(i));
        rescues.insert(AppPaths::recoverDatabaseFiles(home()).value());
    }
    EXPECT_EQ(rescues.size(), 5);
    EXPECT_EQ(entries(home(u"Recovered History"_s)).size(), 5);
    for (const QString& rescue : rescues) {
        EXPECT_FALSE(QFileInfo(rescue).fileName().contains(u':'));
        EXPECT_EQ(entries(rescue), QStringList({u".unfinished"_s, u"history.sqlite"_s}));
    }
}

TEST_F(AppPathsTest, knowsTheLatestRescueThatIsNotFinished)
{
    EXPECT_EQ(AppPaths::unfinishedRecovery(home()), std::nullopt);
    for (const QString& name : {u"history-recovery-2020"_s, u"history-recovery-9020"_s}) {
        ASSERT_TRUE(QDir().mkpath(home(u"Recovered History/"_s + name)));
    }
    EXPECT_EQ(AppPaths::unfinishedRecovery(home()), std::nullopt) << "those of old are none";
    write(home(u"history.sqlite"_s), "damaged");
    const QString rescue = AppPaths::recoverDatabaseFiles(home()).value();
    write(home(u"Recovered History/history-recovery-2020/.unfinished"_s), "");
    EXPECT_EQ(AppPaths::unfinishedRecovery(home()), rescue);
    EXPECT_TRUE(AppPaths::finishRecovery(rescue));
    EXPECT_EQ(
        AppPaths::unfinishedRecovery(home()), home(u"Recovered History/history-recovery-2020"_s));
    EXPECT_TRUE(AppPaths::finishRecovery(rescue)) << "it is gone already";
}

TEST_F(AppPathsTest, keepsRescuedFilesFromOthers)
{
    const mode_t before = ::umask(0);
    ASSERT_TRUE(QDir().mkdir(home(u"Recovered History"_s)));
    write(home(u"history.sqlite"_s), "damaged");
    const std::optional<QString> rescue = AppPaths::recoverDatabaseFiles(home());
    ::umask(before);
    EXPECT_EQ(permissions(home(u"Recovered History"_s)), 0700U);
    EXPECT_EQ(permissions(rescue.value()), 0700U);
}

TEST_F(AppPathsTest, takesEarlierRescuesFromOthers)
{
    const QString rescue = home(u".local/share/Tessly/Recovered History/history-recovery-1"_s);
    ASSERT_TRUE(QDir().mkpath(rescue));
    write(home(u"elsewhere"_s), "another's");
    for (const QString& file : allFiles) {
        write(rescue + u'/' + file, "old");
        ::chmod(QFile::encodeName(rescue + u'/' + file).constData(), 0644);
    }
    const QString link = rescue + u"/link"_s;
    ASSERT_TRUE(QFile::link(home(u"elsewhere"_s), link));
    ASSERT_TRUE(QFile::link(home(), QFileInfo(rescue).path() + u"/link"_s));
    const QString recovered = QFileInfo(rescue).path();
    for (const QString& path : {home(), home(u"elsewhere"_s), recovered, rescue}) {
        ::chmod(QFile::encodeName(path).constData(), 0755);
    }
    AppPaths::prepareDirectories();
    EXPECT_EQ(permissions(recovered), 0700U);
    EXPECT_EQ(permissions(rescue), 0700U);
    for (const QString& file : allFiles) {
        EXPECT_EQ(permissions(rescue + u'/' + file), 0600U) << file.toStdString();
    }
    EXPECT_EQ(permissions(home()), 0755U) << "a link is not followed";
    EXPECT_EQ(permissions(home(u"elsewhere"_s)), 0755U) << "a link is not followed";
}

TEST_F(AppPathsTest, doesNotRescueIntoAFolderThatALinkLeadsTo)
{
    ASSERT_TRUE(QDir().mkdir(home(u"elsewhere"_s)));
    ::chmod(QFile::encodeName(home(u"elsewhere"_s)).constData(), 0755);
    ASSERT_TRUE(QFile::link(home(u"elsewhere"_s), home(u"Recovered History"_s)));
    write(home(u"history.sqlite"_s), "damaged");
    EXPECT_THROW(AppPaths::recoverDatabaseFiles(home()), FileError);
    EXPECT_EQ(permissions(home(u"elsewhere"_s)), 0755U);
    EXPECT_EQ(entries(home(u"elsewhere"_s)), QStringList());
    EXPECT_EQ(read(home(u"history.sqlite"_s)), "damaged");
}

TEST_F(AppPathsTest, followsALinkInThePlaceOfTheDataFolder)
{
    ASSERT_TRUE(QDir().mkpath(home(u".local/share"_s)));
    ASSERT_TRUE(QDir().mkdir(home(u"elsewhere"_s)));
    ::chmod(QFile::encodeName(home(u"elsewhere"_s)).constData(), 0755);
    ASSERT_TRUE(QFile::link(home(u"elsewhere"_s), home(u".local/share/Tessly"_s)));
    AppPaths::prepareDirectories();
    EXPECT_EQ(permissions(home(u"elsewhere"_s)), 0700U);
}

TEST_F(AppPathsTest, aRescueThatFailsHalfWayDeletesNothing)
{
    for (const QString& file : allFiles) {
        write(home(file), file.toUtf8());
    }
    const OrdinaryUser user(home());
    ::chmod(QFile::encodeName(home()).constData(), 0500);
    EXPECT_THROW(AppPaths::recoverDatabaseFiles(home()), FileError);
    ::chmod(QFile::encodeName(home()).constData(), 0700);
    EXPECT_EQ(entries(home()).size(), allFiles.size());
}

} // namespace tessly::test
