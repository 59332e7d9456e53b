#include "InstalledBundle.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

TEST(InstalledBundleTest, ItIsTheExecutableThatRuns)
{
    EXPECT_EQ(
        InstalledBundle().bundlePath(),
        QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath());
}

TEST(InstalledBundleTest, AnUpdateThatReplacedTheExecutableDoesNotMoveIt)
{
    const QTemporaryDir folder;
    const QString link = folder.filePath(u"exe"_s);
    ASSERT_TRUE(QFile::link(u"/usr/bin/tessly (deleted)"_s, link));
    EXPECT_EQ(InstalledBundle(link).bundlePath(), u"/usr/bin/tessly"_s);
}

TEST(InstalledBundleTest, ItCarriesTheProgramsID)
{
    EXPECT_EQ(InstalledBundle().bundleIdentifier(), u"com.brackmoor.tessly"_s);
}

TEST(InstalledBundleTest, VersionAndBuildNumberAreStrings)
{
    const InstalledBundle bundle;
    const QVariant version = bundle.objectForInfoDictionaryKey(u"CFBundleShortVersionString"_s);
    const QVariant build = bundle.objectForInfoDictionaryKey(u"CFBundleVersion"_s);
    ASSERT_EQ(version.typeId(), QMetaType::QString);
    ASSERT_EQ(build.typeId(), QMetaType::QString);
    EXPECT_EQ(version.toString(), u"" TESSLY_VERSION ""_s);
    // Each part of the version counts a thousand times the next.
    const QStringList parts = version.toString().split(u'.');
    ASSERT_EQ(parts.size(), 3);
    EXPECT_EQ(
        build.toString().toLongLong(),
        (parts[0].toLongLong() * 1000 + parts[1].toLongLong()) * 1000 + parts[2].toLongLong());
}

TEST(InstalledBundleTest, OtherInformationIsNotThere)
{
    EXPECT_FALSE(InstalledBundle().objectForInfoDictionaryKey(u"CFBundleName"_s).isValid());
}

} // namespace

} // namespace tessly::test
