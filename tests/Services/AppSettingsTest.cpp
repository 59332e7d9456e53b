#include "AppSettings.h"

#include "FakeUserDefaults.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include <limits>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class AppSettingsTest : public testing::Test
{
protected:
    FakeUserDefaults m_defaults;
};

TEST_F(AppSettingsTest, AFreshStoreYieldsTheDefaults)
{
    const AppSettings settings(m_defaults);
    EXPECT_EQ(settings.maxHistory(), 500);
    EXPECT_TRUE(settings.captureImages());
    EXPECT_TRUE(settings.captureFiles());
    EXPECT_EQ(settings.maxItemSizeMB(), 25);
    EXPECT_EQ(
        settings.ignoredBundleIDsText(), u"com.apple.Passwords\n"
                                         "com.apple.keychainaccess\n"
                                         "com.agilebits.onepassword7\n"
                                         "com.1password.1password\n"
                                         "com.bitwarden.desktop\n"
                                         "org.keepassxc.keepassxc"_s);
    EXPECT_TRUE(settings.directPasteShortcuts());
    EXPECT_FALSE(settings.moveUsedItemsToTop());
    EXPECT_FALSE(settings.hasCompletedOnboarding());
}

TEST_F(AppSettingsTest, NothingIsTrimmedWhileTheStoredLimitIsNoNumber)
{
    for (const QString& stored : {u"10.000"_s, u"10,000"_s, u"many"_s, u""_s, u"1e4"_s}) {
        m_defaults.preset(u"maxHistory"_s, stored);
        const LogCapture log;
        AppSettings settings(m_defaults);
        EXPECT_EQ(settings.maxHistory(), 10) << stored.toStdString();
        EXPECT_EQ(settings.trimLimit(), std::numeric_limits<qint64>::max());
        EXPECT_EQ(log.lines(u"com.brackmoor.tessly.AppSettings"_s).size(), 1U);
        settings.setMaxHistory(700);
        EXPECT_EQ(settings.trimLimit(), 700);
    }
    for (const QString& stored : {u"3"_s, u"50000"_s, u"800"_s}) {
        m_defaults.preset(u"maxHistory"_s, stored);
        const AppSettings settings(m_defaults);
        EXPECT_EQ(settings.trimLimit(), settings.maxHistory());
    }
}

TEST_F(AppSettingsTest, NothingIsTrimmedWhileTheStoreCouldNotBeRead)
{
    m_defaults.preset(u"maxHistory"_s, u"10000"_s);
    m_defaults.makeUnreadable();
    const LogCapture log;
    AppSettings settings(m_defaults);
    EXPECT_EQ(settings.maxHistory(), 500);
    EXPECT_EQ(settings.trimLimit(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(log.lines(u"com.brackmoor.tessly.AppSettings"_s).size(), 1U);
    settings.setMaxHistory(700);
    EXPECT_EQ(settings.trimLimit(), 700) << "the user has said so";
}

TEST_F(AppSettingsTest, DefaultsAreNotWrittenToTheStore)
{
    const AppSettings settings(m_defaults);
    EXPECT_TRUE(m_defaults.writes().empty());
}

TEST_F(AppSettingsTest, NumbersOutOfRangeAreClampedWhenRead)
{
    const auto maxHistory = [this](const QString& stored) {
        m_defaults.preset(u"maxHistory"_s, stored);
        return AppSettings(m_defaults).maxHistory();
    };
    EXPECT_EQ(maxHistory(u"3"_s), 10);
    EXPECT_EQ(maxHistory(u"-5"_s), 10);
    EXPECT_EQ(maxHistory(u"10"_s), 10);
    EXPECT_EQ(maxHistory(u"10000"_s), 10'000);
    EXPECT_EQ(maxHistory(u"50000"_s), 10'000);
    const auto maxItemSizeMB = [this](const QString& stored) {
        m_defaults.preset(u"maxItemSizeMB"_s, stored);
        return AppSettings(m_defaults).maxItemSizeMB();
    };
    EXPECT_EQ(maxItemSizeMB(u"0"_s), 1);
    EXPECT_EQ(maxItemSizeMB(u"250"_s), 250);
    EXPECT_EQ(maxItemSizeMB(u"1000"_s), 250);
}

TEST_F(AppSettingsTest, ValuesThatCannotBeReadFallBack)
{
    for (const QString& key :
         {u"maxHistory"_s, u"captureImages"_s, u"maxItemSizeMB"_s, u"directPasteShortcuts"_s}) {
        m_defaults.preset(key, u"nonsense"_s);
    }
    const AppSettings settings(m_defaults);
    EXPECT_EQ(settings.maxHistory(), 10);
    EXPECT_FALSE(settings.captureImages());
    EXPECT_EQ(settings.maxItemSizeMB(), 1);
    EXPECT_FALSE(settings.directPasteShortcuts());
}

TEST_F(AppSettingsTest, EveryAssignmentIsWrittenUnderItsKey)
{
    AppSettings settings(m_defaults);
    settings.setMaxHistory(20);
    settings.setCaptureImages(false);
    settings.setCaptureFiles(false);
    settings.setMaxItemSizeMB(30);
    settings.setIgnoredBundleIDsText(u"a\nb"_s);
    settings.setDirectPasteShortcuts(false);
    settings.setMoveUsedItemsToTop(true);
    settings.setHasCompletedOnboarding(true);
    EXPECT_EQ(m_defaults.integer(u"maxHistory"_s), 20);
    EXPECT_EQ(m_defaults.stored(u"captureImages"_s), u"false"_s);
    EXPECT_EQ(m_defaults.stored(u"captureFiles"_s), u"false"_s);
    EXPECT_EQ(m_defaults.integer(u"maxItemSizeMB"_s), 30);
    EXPECT_EQ(m_defaults.stored(u"ignoredBundleIDs"_s), u"a\nb"_s);
    EXPECT_EQ(m_defaults.stored(u"directPasteShortcuts"_s), u"false"_s);
    EXPECT_EQ(m_defaults.stored(u"moveUsedItemsToTop"_s), u"true"_s);
    EXPECT_EQ(m_defaults.stored(u"hasCompletedOnboarding"_s), u"true"_s);

    const AppSettings next(m_defaults);
    EXPECT_EQ(next.maxHistory(), 20);
    EXPECT_FALSE(next.captureImages());
    EXPECT_FALSE(next.captureFiles());
    EXPECT_EQ(next.maxItemSizeMB(), 30);
    EXPECT_EQ(next.ignoredBundleIDsText(), u"a\nb"_s);
    EXPECT_FALSE(next.directPasteShortcuts());
    EXPECT_TRUE(next.moveUsedItemsToTop());
    EXPECT_TRUE(next.hasCompletedOnboarding());
}

TEST_F(AppSettingsTest, SettersDoNotClamp)
{
    AppSettings settings(m_defaults);
    settings.setMaxHistory(3);
    settings.setMaxItemSizeMB(1000);
    EXPECT_EQ(settings.maxHistory(), 3);
    EXPECT_EQ(settings.maxItemSizeMB(), 1000);
    EXPECT_EQ(m_defaults.integer(u"maxHistory"_s), 3);
    EXPECT_EQ(AppSettings(m_defaults).maxHistory(), 10);
}

TEST_F(AppSettingsTest, ObserversHearOfChangesOnlyAndTheStoreOfEveryAssignment)
{
    AppSettings settings(m_defaults);
    const auto expectOneSignal = [this](auto&& spy, auto&& assignOld, auto&& assignNew) {
        const std::size_t writes = m_defaults.writes().size();
        assignOld();
        EXPECT_EQ(spy.count(), 0) << spy.signal().constData();
        EXPECT_EQ(m_defaults.writes().size(), writes + 1) << spy.signal().constData();
        assignNew();
        EXPECT_EQ(spy.count(), 1) << spy.signal().constData();
        EXPECT_EQ(m_defaults.writes().size(), writes + 2) << spy.signal().constData();
    };
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::maxHistoryChanged),
        [&] { settings.setMaxHistory(500); }, [&] { settings.setMaxHistory(501); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::captureImagesChanged),
        [&] { settings.setCaptureImages(true); }, [&] { settings.setCaptureImages(false); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::captureFilesChanged),
        [&] { settings.setCaptureFiles(true); }, [&] { settings.setCaptureFiles(false); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::maxItemSizeMBChanged),
        [&] { settings.setMaxItemSizeMB(25); }, [&] { settings.setMaxItemSizeMB(26); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::ignoredBundleIDsTextChanged),
        [&] { settings.setIgnoredBundleIDsText(settings.ignoredBundleIDsText()); },
        [&] { settings.setIgnoredBundleIDsText({}); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::directPasteShortcutsChanged),
        [&] { settings.setDirectPasteShortcuts(true); },
        [&] { settings.setDirectPasteShortcuts(false); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::moveUsedItemsToTopChanged),
        [&] { settings.setMoveUsedItemsToTop(false); },
        [&] { settings.setMoveUsedItemsToTop(true); });
    expectOneSignal(
        QSignalSpy(&settings, &AppSettings::hasCompletedOnboardingChanged),
        [&] { settings.setHasCompletedOnboarding(false); },
        [&] { settings.setHasCompletedOnboarding(true); });
}

TEST_F(AppSettingsTest, IgnoredIDsAreTrimmedLowerCasedAndFreeOfDuplicates)
{
    AppSettings settings(m_defaults);
    settings.setIgnoredBundleIDsText(u"  COM.Example.App \n\n\ncom.example.app\r\n"_s);
    EXPECT_EQ(settings.ignoredBundleIDs(), QSet{u"com.example.app"_s});
}

TEST_F(AppSettingsTest, EveryKindOfLineEndSeparatesIgnoredIDsAndNothingElseDoes)
{
    AppSettings settings(m_defaults);
    settings.setIgnoredBundleIDsText(u"a\nb\rc\vd\fe\u0085f\u2028g\u2029h i,j\tk"_s);
    EXPECT_EQ(
        settings.ignoredBundleIDs(),
        (QSet{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s, u"h i,j\tk"_s}));
}

TEST_F(AppSettingsTest, AnEmptyTextIgnoresNothing)
{
    AppSettings settings(m_defaults);
    EXPECT_TRUE(settings.ignoredBundleIDs().contains(u"com.apple.passwords"_s));
    settings.setIgnoredBundleIDsText({});
    EXPECT_TRUE(settings.ignoredBundleIDs().isEmpty());
}

TEST_F(AppSettingsTest, AnEmptyStoredTextIsNotTheDefault)
{
    m_defaults.preset(u"ignoredBundleIDs"_s, {});
    EXPECT_TRUE(AppSettings(m_defaults).ignoredBundleIDs().isEmpty());
}

} // namespace
} // namespace tessly::test
