#include "IgnoredApplicationNames.h"

#include "AppSettings.h"
#include "FakeUserDefaults.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

const QSet<QString> none;

QSet<QString> builtIn()
{
    FakeUserDefaults defaults;
    return AppSettings(defaults).ignoredBundleIDs();
}

TEST(IgnoredApplicationNames, anyNameOfAnApplicationCounts)
{
    const QStringList writer = {
        u"libreoffice-writer"_s, u"libreoffice"_s, u"org.libreoffice.Writer"_s};
    for (const auto& entry :
         {u"libreoffice-writer"_s, u"libreoffice"_s, u"org.libreoffice.writer"_s}) {
        EXPECT_TRUE(isIgnoredApplication(writer, {entry})) << entry.toStdString();
    }
    EXPECT_FALSE(isIgnoredApplication(writer, {u"writer"_s}));
    EXPECT_FALSE(isIgnoredApplication(writer, none));
}

TEST(IgnoredApplicationNames, letterCaseDoesNotMatter)
{
    EXPECT_TRUE(isIgnoredApplication({u"Org.KeePassXC.KeePassXC"_s}, builtIn()));
    EXPECT_TRUE(isIgnoredApplication({u"Straße"_s, u"ÄRGER"_s}, {u"ärger"_s}));
}

TEST(IgnoredApplicationNames, anApplicationWithoutNamesIsNotIgnored)
{
    EXPECT_FALSE(isIgnoredApplication({}, builtIn()));
    EXPECT_FALSE(isIgnoredApplication({QString()}, builtIn()));
}

TEST(IgnoredApplicationNames, theBuiltInListKnowsTheProgramsOfLinux)
{
    for (const auto& name :
         {u"1Password"_s, u"bitwarden"_s, u"Bitwarden"_s, u"KeePassXC"_s,
          u"org.gnome.seahorse.Application"_s, u"org.gnome.World.Secrets"_s,
          u"org.kde.kwalletmanager"_s, u"org.kde.kwalletmanager5"_s}) {
        EXPECT_TRUE(isIgnoredApplication({name}, builtIn())) << name.toStdString();
        EXPECT_FALSE(isIgnoredApplication({name}, none)) << name.toStdString();
    }
    EXPECT_FALSE(isIgnoredApplication({u"org.gnome.TextEditor"_s}, builtIn()));
}

TEST(IgnoredApplicationNames, anEntryThatWasTakenOutStandsForNothing)
{
    auto ignored = builtIn();
    ignored.remove(u"com.bitwarden.desktop"_s);
    EXPECT_FALSE(isIgnoredApplication({u"bitwarden"_s}, ignored));
    EXPECT_TRUE(isIgnoredApplication({u"1password"_s}, ignored));
    ignored.remove(u"com.1password.1password"_s);
    EXPECT_TRUE(isIgnoredApplication({u"1password"_s}, ignored)) << "the other one stands for it";
    ignored.remove(u"com.agilebits.onepassword7"_s);
    EXPECT_FALSE(isIgnoredApplication({u"1password"_s}, ignored));
    ignored.remove(u"com.apple.passwords"_s);
    EXPECT_TRUE(isIgnoredApplication({u"org.kde.kwalletmanager5"_s}, ignored));
    ignored.remove(u"com.apple.keychainaccess"_s);
    EXPECT_FALSE(isIgnoredApplication({u"org.kde.kwalletmanager5"_s}, ignored));
}

} // namespace
} // namespace tessly::test
