#include "PortalShortcut.h"

#include <gtest/gtest.h>

#include <array>
#include <linux/input-event-codes.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

TEST(PortalShortcutTest, TriggersAreInTheSyntaxOfShortcuts)
{
    constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
    constexpr std::array<quint32, 10> codes = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};
    for (std::size_t index = 0; index < codes.size(); ++index) {
        EXPECT_EQ(
            portalTrigger(codes.at(index), optionShift),
            u"ALT+SHIFT+%1"_s.arg((index + 1) % codes.size()));
    }
    EXPECT_EQ(
        portalTrigger(18, optionShift | HotKeyCenter::commandKey | HotKeyCenter::controlKey),
        u"CTRL+ALT+SHIFT+LOGO+1"_s);
    EXPECT_EQ(portalTrigger(29, 0), u"0"_s);
}

TEST(PortalShortcutTest, KDETakesWhatTheKeyTypesInPlaceOfShift)
{
    constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
    const SymbolWithShift american = [](std::uint32_t key) -> QByteArray {
        return key == KEY_1 ? "exclam" : key == KEY_0 ? "parenright" : "";
    };
    EXPECT_EQ(kdeTrigger(18, optionShift, american), u"ALT+exclam"_s);
    EXPECT_EQ(kdeTrigger(29, optionShift, american), u"ALT+parenright"_s);
    EXPECT_EQ(kdeTrigger(18, HotKeyCenter::shiftKey, american), u"exclam"_s);
    EXPECT_EQ(kdeTrigger(18, HotKeyCenter::optionKey, american), u"ALT+1"_s);
    EXPECT_EQ(kdeTrigger(19, optionShift, american), u"ALT+SHIFT+2"_s)
        << "what it types is unknown";
    EXPECT_EQ(kdeTrigger(4711, optionShift, american), std::nullopt);
    EXPECT_EQ(kdeTrigger(18, HotKeyCenter::shiftKey | 0x1U, american), std::nullopt);
}

TEST(PortalShortcutTest, KeysAndModifiersThatDoNotExistHaveNone)
{
    EXPECT_EQ(portalTrigger(4711, HotKeyCenter::shiftKey), std::nullopt);
    EXPECT_EQ(portalTrigger(18, HotKeyCenter::shiftKey | 0x1U), std::nullopt);
}

TEST(PortalShortcutTest, DirectPasteIsNamedByThePosition)
{
    const auto shortcut = directPasteShortcut({.signature = 1, .id = 10});
    EXPECT_EQ(shortcut.id, u"paste-10"_s);
    EXPECT_EQ(directPasteShortcut({.signature = 1, .id = 9}).id, u"paste-09"_s);
    EXPECT_EQ(shortcut.properties.value(u"description"_s), u"Paste entry 10"_s);
}

} // namespace

} // namespace tessly::test
