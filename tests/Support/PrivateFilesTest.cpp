#include "PrivateFiles.h"

#include "FileError.h"
#include "PlantedFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class PrivateFiles : public testing::Test
{
protected:
    static mode_t mode(const QString& path)
    {
        struct stat status{};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
        return status.st_mode & 07777U;
    }

    QTemporaryDir folder;
    QString path = folder.filePath(u"file"_s);
};

class PlantedInPrivateFiles : public testing::TestWithParam<Planted>
{
protected:
    void SetUp() override
    {
        if (!planted.isPlanted()) {
            GTEST_SKIP() << "only the superuser can give a file to another";
        }
    }

    QTemporaryDir folder;
    QString path = folder.filePath(u"file"_s);
    PlantedFile planted{GetParam(), path, folder.filePath(u"victim"_s)};
};

} // namespace

TEST_F(PrivateFiles, areOrdinaryFilesOfTheUsers)
{
    EXPECT_EQ(objectionTo(path), std::nullopt) << "nothing is there";
    createPrivateFile(path);
    EXPECT_EQ(objectionTo(path), std::nullopt);
    EXPECT_EQ(mode(path), 0600U);
}

TEST_F(PrivateFiles, areMadePrivateWithoutLosingTheirLocks)
{
    createPrivateFile(path);
    ::chmod(QFile::encodeName(path).constData(), 0644);
    const int file = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    ASSERT_EQ(::fcntl(file, F_SETLK, &lock), 0);
    EXPECT_TRUE(makeFilePrivate(path));
    EXPECT_EQ(mode(path), 0600U);
    // The process's own locks are no obstacle to itself: seen as another open file sees them.
    struct flock seen = lock;
    seen.l_pid = 0;
    const int other = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::fcntl(other, F_OFD_GETLK, &seen), 0);
    EXPECT_EQ(seen.l_type, F_WRLCK) << "the lock is still held";
    ::close(other);
    ::close(file);
}

TEST_F(PrivateFiles, haveFoldersThatNeedNotBeReadable)
{
    const QString closed = folder.filePath(u"closed"_s);
    createPrivateFolder(closed);
    ::chmod(QFile::encodeName(closed).constData(), 0055);
    preparePrivateFolder(closed, Parents::mustExist);
    EXPECT_EQ(mode(closed), 0700U);
}

TEST_P(PlantedInPrivateFiles, areObjectedToAndStayAsTheyAre)
{
    EXPECT_EQ(objectionTo(path), planted.reason());
    EXPECT_FALSE(makeFilePrivate(path));
    createPrivateFile(path);
    planted.expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Everything, PlantedInPrivateFiles, testing::ValuesIn(everyPlanted));

} // namespace tessly::test
