#include "InstanceLock.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <system_error>

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
    EXPECT_THROW((void)InstanceLock::acquire(folder.filePath(u"missing"_s)), std::system_error);
}

} // namespace
} // namespace tessly
