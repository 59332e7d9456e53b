#include "InstanceLock.h"

#include "FileError.h"
#include "PlantedFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

TEST(InstanceLock, IsHeldByOneAtATime)
{
    const QTemporaryDir folder;
    auto first = InstanceLock::acquire(folder.path());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(InstanceLock::acquire(folder.path()), nullptr);

    first.reset();
    EXPECT_NE(InstanceLock::acquire(folder.path()), nullptr);
}

TEST(InstanceLock, OfAnotherFolderIsAnotherLock)
{
    const QTemporaryDir one;
    const QTemporaryDir two;
    const auto first = InstanceLock::acquire(one.path());
    EXPECT_NE(InstanceLock::acquire(two.path()), nullptr);
}

TEST(InstanceLock, IsAFileThatOnlyItsOwnerReads)
{
    const QTemporaryDir folder;
    const auto lock = InstanceLock::acquire(folder.path());
    EXPECT_EQ(
        QFile::permissions(folder.filePath(u"tessly.lock"_s)) &
            (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
        QFile::Permissions());
}

TEST(InstanceLock, CanBeAskedForWithoutBeingTakenOrMade)
{
    const QTemporaryDir folder;
    EXPECT_FALSE(InstanceLock::isHeld(folder.path()));
    EXPECT_FALSE(QFile::exists(folder.filePath(u"tessly.lock"_s)));
    EXPECT_FALSE(InstanceLock::isHeld(folder.filePath(u"missing"_s)));

    auto lock = InstanceLock::acquire(folder.path());
    ASSERT_NE(lock, nullptr);
    EXPECT_TRUE(InstanceLock::isHeld(folder.path()));
    EXPECT_TRUE(InstanceLock::isHeld(folder.path()));
    EXPECT_EQ(InstanceLock::acquire(folder.path()), nullptr) << "asking has not let go of it";
    lock.reset();
    EXPECT_FALSE(InstanceLock::isHeld(folder.path()));
}

TEST(InstanceLock, SaysWhyItCannotBeMade)
{
    const QTemporaryDir folder;
    EXPECT_THROW((void)InstanceLock::acquire(folder.filePath(u"missing"_s)), FileError);
}

TEST(InstanceLock, IsTakenFromOthersWhereTheyCouldReadIt)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"tessly.lock"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0666), 0);
    const auto lock = InstanceLock::acquire(folder.path());
    struct stat status = {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

class PlantedLock : public testing::TestWithParam<test::Planted>
{
};

TEST_P(PlantedLock, IsNotTakenAndHoldsNobodyUp)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"tessly.lock"_s);
    const test::PlantedFile planted(GetParam(), path, folder.filePath(u"victim"_s));
    if (!planted.isPlanted()) {
        GTEST_SKIP() << "only the superuser can give a file to another";
    }
    try {
        (void)InstanceLock::acquire(folder.path());
        FAIL() << "it was taken";
    } catch (const FileError& error) {
        EXPECT_EQ(
            error.description(),
            u"Could not open the lock file “%1”: it %2"_s.arg(path, planted.reason()));
    }
    EXPECT_FALSE(InstanceLock::isHeld(folder.path()));
    planted.expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Everything, PlantedLock, testing::ValuesIn(test::everyPlanted));

} // namespace
} // namespace tessly
