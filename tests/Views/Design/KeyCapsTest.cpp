#include "KeyCaps.h"

#include "QtPrinting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

TEST(KeyCapsTest, AreDrawnAsTheyAreWhereThereAreGlyphs)
{
    const auto all = [](QChar) { return true; };
    EXPECT_EQ(drawableKeys(u"⌥⇧1"_s, all), u"⌥⇧1"_s);
}

TEST(KeyCapsTest, GiveWayToNamesWhereAGlyphIsMissing)
{
    const auto latin = [](QChar key) { return key.unicode() < 0x100; };
    EXPECT_EQ(drawableKeys(u"⌥⇧1"_s, latin), u"Alt+Shift+1"_s);
    EXPECT_EQ(drawableKeys(u"↩"_s, latin), u"Return"_s);
    EXPECT_EQ(drawableKeys(u"P"_s, latin), u"P"_s);
}

TEST(KeyCapsTest, TheFontsHereHaveAllOfThem)
{
    for (const QString& label : {u"⌘"_s, u"⌥⇧0"_s, u"↩"_s, u"⌫"_s, u"1…9"_s}) {
        EXPECT_EQ(drawableKeys(label), label) << "fonts-dejavu-core has them";
    }
}

} // namespace
} // namespace tessly
