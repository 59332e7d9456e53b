#include "WaylandKeymap.h"

#include "TestKeymap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

using testing::ElementsAre;

namespace tessly {

static void PrintTo(const WaylandKeymap::Step& step, std::ostream* stream)
{
    *stream << (step.isPress ? '+' : '-') << step.key << '/' << step.modifiers.depressed << '/'
            << step.modifiers.latched << '/' << step.modifiers.locked << '/'
            << step.modifiers.group;
}

namespace test {
namespace {

using Steps = WaylandKeymap::Steps;

constexpr std::uint32_t shift = 1;
constexpr std::uint32_t control = 4;

WaylandKeymap keymap(const char* layout, const char* variant = "", const char* options = "")
{
    return WaylandKeymap::fromText(keymapText(layout, variant, options)).value();
}

WaylandKeymap::Step
down(std::uint32_t key, std::uint32_t modifiers, std::uint32_t group = 0, std::uint32_t locked = 0)
{
    return {
        .key = key,
        .isPress = true,
        .modifiers = {.depressed = modifiers, .locked = locked, .group = group}};
}

WaylandKeymap::Step
up(std::uint32_t key, std::uint32_t modifiers, std::uint32_t group = 0, std::uint32_t locked = 0)
{
    return {
        .key = key,
        .isPress = false,
        .modifiers = {.depressed = modifiers, .locked = locked, .group = group}};
}

WaylandKeymap::Step set(std::uint32_t group)
{
    return {.modifiers = {.group = group}};
}

WaylandKeymap::Step hold(std::uint32_t modifiers, std::uint32_t locked)
{
    return {.modifiers = {.depressed = modifiers, .locked = locked}};
}

Steps controlV(std::uint32_t key, std::uint32_t group)
{
    return {
        set(group),
        down(KEY_LEFTCTRL, control, group),
        down(key, control, group),
        up(key, control, group),
        up(KEY_LEFTCTRL, 0, group),
        set(0)};
}

std::vector<QByteArray> upperRowWithShift(const char* layout)
{
    const auto of = keymap(layout);
    std::vector<QByteArray> symbols;
    for (std::uint32_t key = KEY_1; key <= KEY_0; ++key) {
        symbols.push_back(of.symbolWithShift(key));
    }
    return symbols;
}

TEST(WaylandKeymapTest, tellsWhatTheUpperRowTypesWithShift)
{
    EXPECT_THAT(
        upperRowWithShift("us"),
        ElementsAre(
            "exclam", "at", "numbersign", "dollar", "percent", "asciicircum", "ampersand",
            "asterisk", "parenleft", "parenright"));
    EXPECT_THAT(
        upperRowWithShift("de"), ElementsAre(
                                     "exclam", "quotedbl", "section", "dollar", "percent",
                                     "ampersand", "slash", "parenleft", "parenright", "equal"));
    EXPECT_THAT(
        upperRowWithShift("fr"), ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9", "0"));
    EXPECT_THAT(
        upperRowWithShift("ru,us"),
        ElementsAre(
            "exclam", "quotedbl", "numerosign", "semicolon", "percent", "colon", "question",
            "asterisk", "parenleft", "parenright"));
    EXPECT_THAT(keymap("us").symbolWithShift(KEY_A), QByteArray());
}

TEST(WaylandKeymapTest, makesEveryChordOnAnAmericanKeyboard)
{
    const auto us = WaylandKeymap::american().value();
    EXPECT_TRUE(us.canMakeAll());
    EXPECT_EQ(WaylandKeymap::fromText(us.text()).value().text(), keymap("us").text());
    EXPECT_EQ(us.steps(PasteChord::controlV), controlV(KEY_V, 0));
    EXPECT_THAT(
        us.steps(PasteChord::controlShiftV),
        ElementsAre(
            set(0), down(KEY_LEFTCTRL, control), down(KEY_LEFTSHIFT, control | shift),
            down(KEY_V, control | shift), up(KEY_V, control | shift), up(KEY_LEFTSHIFT, control),
            up(KEY_LEFTCTRL, 0), set(0)));
    EXPECT_THAT(
        us.steps(PasteChord::shiftInsert),
        ElementsAre(
            set(0), down(KEY_LEFTSHIFT, shift), down(KEY_INSERT, shift), up(KEY_INSERT, shift),
            up(KEY_LEFTSHIFT, 0), set(0)));
}

TEST(WaylandKeymapTest, findsTheLetterWhereTheLayoutHasIt)
{
    const auto dvorak = keymap("us", "dvorak");
    EXPECT_EQ(dvorak.steps(PasteChord::controlV), controlV(KEY_DOT, 0));
    EXPECT_EQ(keymap("de", "neo").steps(PasteChord::controlV), controlV(KEY_W, 0));
    EXPECT_EQ(keymap("fr").steps(PasteChord::controlV), controlV(KEY_V, 0));
}

TEST(WaylandKeymapTest, takesTheFirstLayoutThatHasTheLetter)
{
    EXPECT_EQ(keymap("us,ru").steps(PasteChord::controlV), controlV(KEY_V, 0));
    EXPECT_EQ(keymap("ru,us").steps(PasteChord::controlV), controlV(KEY_V, 1));
    const auto second = keymap("ru,us", ",dvorak");
    EXPECT_EQ(second.steps(PasteChord::controlV), controlV(KEY_DOT, 1));
    EXPECT_EQ(keymap("us,us", "dvorak,").steps(PasteChord::controlV), controlV(KEY_DOT, 0));
}

TEST(WaylandKeymapTest, withoutTheLetterNotEveryChordCanBeMade)
{
    const auto russian = keymap("ru");
    EXPECT_FALSE(russian.canMakeAll());
    EXPECT_EQ(russian.steps(PasteChord::controlV), Steps());
    EXPECT_EQ(russian.steps(PasteChord::controlShiftV), Steps());
    EXPECT_FALSE(russian.steps(PasteChord::shiftInsert).empty());
}

TEST(WaylandKeymapTest, goesByWhatModifierKeysDo)
{
    EXPECT_EQ(
        keymap("us", "", "ctrl:swapcaps").steps(PasteChord::controlV).at(1),
        down(KEY_CAPSLOCK, control));
}

TEST(WaylandKeymapTest, locksAModifierThatNoKeySetsAlone)
{
    EXPECT_THAT(
        keymap("us,ru", "", "grp:ctrl_shift_toggle").steps(PasteChord::controlShiftV),
        ElementsAre(
            set(0), down(KEY_LEFTCTRL, control), hold(control, shift),
            down(KEY_V, control, 0, shift), up(KEY_V, control, 0, shift), hold(control, 0),
            up(KEY_LEFTCTRL, 0), set(0)));
}

TEST(WaylandKeymapTest, keysAloneMeanTheSameWhateverLayoutIsInEffect)
{
    const auto controlV = [](std::uint32_t key, std::uint32_t controlKey = KEY_LEFTCTRL) {
        return KeyStrokes{{controlKey, true}, {key, true}, {key, false}, {controlKey, false}};
    };
    const auto strokes = [](const WaylandKeymap& map) { return map.strokes(PasteChord::controlV); };
    EXPECT_EQ(strokes(keymap("us")), controlV(KEY_V));
    EXPECT_EQ(strokes(keymap("us", "dvorak")), controlV(KEY_DOT));
    EXPECT_EQ(strokes(keymap("us,de,fr")), controlV(KEY_V));
    EXPECT_EQ(strokes(keymap("us,ru")), controlV(KEY_V));
    EXPECT_EQ(strokes(keymap("ru,us")), controlV(KEY_V));
    EXPECT_EQ(strokes(keymap("gr,il,us")), controlV(KEY_V));
    EXPECT_EQ(strokes(keymap("us", "", "ctrl:swapcaps")), controlV(KEY_V, KEY_CAPSLOCK));
    // Ctrl+K, Ctrl+P and Ctrl+. in the second.
    EXPECT_EQ(strokes(keymap("us,us", ",dvorak")), std::nullopt);
    EXPECT_EQ(strokes(keymap("us,de", ",neo")), std::nullopt);
    EXPECT_EQ(strokes(keymap("us,fr", ",bepo")), std::nullopt);
    EXPECT_EQ(strokes(keymap("ru,us,us", ",,dvorak")), std::nullopt);
    EXPECT_EQ(strokes(keymap("ru")), std::nullopt);
    for (const auto& map : {keymap("ru"), keymap("us,us", ",dvorak"), keymap("us,ru")}) {
        EXPECT_EQ(
            map.strokes(PasteChord::shiftInsert), (KeyStrokes{
                                                      {KEY_LEFTSHIFT, true},
                                                      {KEY_INSERT, true},
                                                      {KEY_INSERT, false},
                                                      {KEY_LEFTSHIFT, false}}));
    }
    // Shift would have to be locked.
    const auto toggled = keymap("us,ru", "", "grp:ctrl_shift_toggle");
    EXPECT_EQ(toggled.strokes(PasteChord::controlV), controlV(KEY_V));
    EXPECT_EQ(toggled.strokes(PasteChord::controlShiftV), std::nullopt);
    EXPECT_TRUE(toggled.strokes(PasteChord::shiftInsert));
}

TEST(WaylandKeymapTest, textsAreTheSameForTheSameKeyMap)
{
    const auto once = keymap("us,ru", "", "compose:caps");
    EXPECT_EQ(WaylandKeymap::fromText(once.text()).value().text(), once.text());
    // As compositors send it.
    const QByteArray withZero = once.text() + '\0';
    EXPECT_EQ(WaylandKeymap::fromText(withZero).value().text(), once.text());
    EXPECT_NE(keymap("us").text(), once.text());
}

TEST(WaylandKeymapTest, whatIsNoKeyMapIsNone)
{
    EXPECT_FALSE(WaylandKeymap::fromText(QByteArray()));
    EXPECT_FALSE(WaylandKeymap::fromText("xkb_keymap {"));
    EXPECT_FALSE(WaylandKeymap::fromText(QByteArray(100'000, 'x')));
    EXPECT_FALSE(WaylandKeymap::fromText(QByteArray(1000, '\0')));
}

} // namespace
} // namespace test
} // namespace tessly
