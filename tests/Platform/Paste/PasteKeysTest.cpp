#include "PasteKeys.h"

#include <gtest/gtest.h>

#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <string>

namespace tessly::test {
namespace {

constexpr PasteKeys::KeyCode leftControl = 37;
constexpr PasteKeys::KeyCode rightControl = 105;
constexpr PasteKeys::KeyCode leftShift = 50;
constexpr PasteKeys::KeyCode rightShift = 62;
constexpr PasteKeys::KeyCode capsLock = 66;
constexpr PasteKeys::KeyCode usualV = 55;
constexpr PasteKeys::KeyCode dvorakV = 60;
constexpr PasteKeys::KeyCode insert = 118;

using Keys = std::optional<PasteKeys>;

Keys made(
    std::vector<PasteKeys::KeyCode> modifiers, PasteKeys::KeyCode key, std::uint8_t group,
    std::uint8_t lockedModifiers = 0)
{
    return PasteKeys{
        .modifiers = std::move(modifiers),
        .lockedModifiers = lockedModifiers,
        .key = key,
        .group = group,
    };
}

class Keyboard
{
public:
    /// As the rules of xkeyboard-config make it.
    explicit Keyboard(const char* layout, const char* variant = "", const char* options = "")
    {
        const xkb_rule_names names = {
            .rules = "evdev",
            .model = "pc105",
            .layout = layout,
            .variant = variant,
            .options = options,
        };
        m_keymap.reset(
            xkb_keymap_new_from_names(m_context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    }
    /// As written.
    explicit Keyboard(const std::string& source)
    {
        m_keymap.reset(xkb_keymap_new_from_string(
            m_context.get(), source.c_str(), XKB_KEYMAP_FORMAT_TEXT_V1,
            XKB_KEYMAP_COMPILE_NO_FLAGS));
    }

    [[nodiscard]] Keys keys(PasteChord chord, std::uint8_t group = 0) const
    {
        EXPECT_NE(m_keymap, nullptr);
        return PasteKeys::find(m_keymap.get(), chord, group);
    }

private:
    std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> m_context{
        xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref};
    std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> m_keymap{nullptr, &xkb_keymap_unref};
};

TEST(PasteKeysTest, makesEveryChordOnAnOrdinaryKeyboard)
{
    const Keyboard us("us");
    EXPECT_EQ(us.keys(PasteChord::controlV), made({leftControl}, usualV, 0));
    EXPECT_EQ(us.keys(PasteChord::controlShiftV), made({leftControl, leftShift}, usualV, 0));
    EXPECT_EQ(us.keys(PasteChord::shiftInsert), made({leftShift}, insert, 0));
}

TEST(PasteKeysTest, findsTheLetterWhereTheLayoutHasIt)
{
    const auto keyOfV = [](const Keyboard& keyboard) {
        const auto keys = keyboard.keys(PasteChord::controlV);
        return keys ? keys->key : 0;
    };
    EXPECT_EQ(keyOfV(Keyboard("de")), usualV);
    EXPECT_EQ(keyOfV(Keyboard("fr")), usualV);
    EXPECT_EQ(keyOfV(Keyboard("us", "dvorak")), dvorakV);
    EXPECT_EQ(keyOfV(Keyboard("fr", "bepo")), 30);
    EXPECT_EQ(keyOfV(Keyboard("tr", "f")), 54);
}

TEST(PasteKeysTest, takesTheLetterOfTheEffectiveGroup)
{
    const Keyboard both("us,us", ",dvorak");
    EXPECT_EQ(both.keys(PasteChord::controlV, 0), made({leftControl}, usualV, 0));
    EXPECT_EQ(both.keys(PasteChord::controlV, 1), made({leftControl}, dvorakV, 1));
}

TEST(PasteKeysTest, fromALayoutWithoutTheLetterGoesToTheFirstThatHasIt)
{
    EXPECT_EQ(Keyboard("us,ru").keys(PasteChord::controlV, 1), made({leftControl}, usualV, 0));
    EXPECT_EQ(
        Keyboard("ru,us", ",dvorak").keys(PasteChord::controlV, 0),
        made({leftControl}, dvorakV, 1));
    EXPECT_EQ(
        Keyboard("gr,ru,de").keys(PasteChord::controlShiftV, 1),
        made({leftControl, leftShift}, usualV, 2));
}

TEST(PasteKeysTest, withoutTheLetterAnywhereOnlyShiftInsertCanBeMade)
{
    for (const char* layout : {"ru", "gr", "il", "gr,ru"}) {
        const Keyboard keyboard(layout);
        EXPECT_EQ(keyboard.keys(PasteChord::controlV), std::nullopt) << layout;
        EXPECT_EQ(keyboard.keys(PasteChord::controlShiftV), std::nullopt) << layout;
        EXPECT_EQ(keyboard.keys(PasteChord::shiftInsert), made({leftShift}, insert, 0)) << layout;
    }
}

TEST(PasteKeysTest, keysThatAreTheSameInAllLayoutsNeedNoOtherGroup)
{
    EXPECT_EQ(Keyboard("us,ru").keys(PasteChord::shiftInsert, 1), made({leftShift}, insert, 1));
}

TEST(PasteKeysTest, goesByWhatModifierKeysDo)
{
    EXPECT_EQ(
        Keyboard("us", "", "ctrl:swapcaps").keys(PasteChord::controlV),
        made({capsLock}, usualV, 0));
    EXPECT_EQ(
        Keyboard("us,ru", "", "grp:lctrl_toggle").keys(PasteChord::controlV),
        made({rightControl}, usualV, 0));
}

TEST(PasteKeysTest, avoidsThePairOfModifiersThatSwitchesLayouts)
{
    const Keyboard leftPair("us,ru", "", "grp:lctrl_lshift_toggle");
    EXPECT_EQ(leftPair.keys(PasteChord::controlShiftV), made({leftControl, rightShift}, usualV, 0));
}

TEST(PasteKeysTest, locksAModifierThatNoKeySetsAlone)
{
    const Keyboard anyPair("us,ru", "", "grp:ctrl_shift_toggle");
    EXPECT_EQ(anyPair.keys(PasteChord::controlV), made({leftControl}, usualV, 0));
    EXPECT_EQ(
        anyPair.keys(PasteChord::controlShiftV),
        made({leftControl}, usualV, 0, PasteKeys::shiftMask));
    const Keyboard withoutModifiers(std::string(R"(xkb_keymap {
        xkb_keycodes { minimum = 8; maximum = 255; <AB04> = 55; <INS> = 118; };
        xkb_types { include "complete" };
        xkb_compat { include "complete" };
        xkb_symbols { key <AB04> { [ v, V ] }; key <INS> { [ Insert ] }; };
    };)"));
    EXPECT_EQ(
        withoutModifiers.keys(PasteChord::controlV), made({}, usualV, 0, PasteKeys::controlMask));
}

TEST(PasteKeysTest, aChordWithoutItsKeyCannotBeMade)
{
    const Keyboard keypad(std::string(R"(xkb_keymap {
        xkb_keycodes { minimum = 8; maximum = 255; <KP1> = 87; <LFSH> = 50; <LCTL> = 37; };
        xkb_types { include "complete" };
        xkb_compat { include "complete" };
        xkb_symbols {
            key <KP1> { [ KP_1 ] };
            key <LFSH> { [ Shift_L ] };
            key <LCTL> { [ Control_L ] };
            modifier_map Shift { <LFSH> };
            modifier_map Control { <LCTL> };
        };
    };)"));
    EXPECT_EQ(keypad.keys(PasteChord::controlV), std::nullopt);
    EXPECT_EQ(keypad.keys(PasteChord::shiftInsert), std::nullopt);
}

} // namespace
} // namespace tessly::test
