#include "WaylandDesktopTest.h"
#include "WaylandKeymap.h"

namespace tessly::test {

using WaylandDesktopKeysTest = WaylandDesktopTest;

// Keys.

TEST_F(WaylandDesktopKeysTest, oneKeyboardIsMadeAtTheStartAndKept)
{
    desktop();
    ASSERT_TRUE(waitUntil([this] { return !keymaps().empty(); })) << "before there is a paste";
    EXPECT_TRUE(send());
    EXPECT_TRUE(send());
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.made(); }), 1);
    EXPECT_EQ(keymaps().size(), 1U);
    auto twice = controlV;
    twice.insert(twice.end(), controlV.begin(), controlV.end());
    EXPECT_EQ(keys(), twice);
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.modifiers(); }), 0U);
}

TEST_F(WaylandDesktopKeysTest, theKeyMapIsTheUsers)
{
    const QByteArray dvorak = keymapText("us", "dvorak");
    compositor().setKeymap(dvorak);
    EXPECT_EQ(desktop().strokes(PasteChord::controlV)->at(1).key, std::uint32_t{KEY_DOT})
        << "known from the start";
    EXPECT_TRUE(send());
    EXPECT_THAT(keys(), Contains(Key{KEY_DOT, true, control}));
    EXPECT_THAT(keymaps(), ElementsAre(dvorak + '\0'));
}

TEST_F(WaylandDesktopKeysTest, aKeyMapThatChangesIsUsedFromTheNextPasteOn)
{
    compositor().setKeymap(keymapText("us"));
    EXPECT_TRUE(send());
    compositor().setKeymap(keymapText("us", "dvorak"));
    ASSERT_TRUE(letterIs(KEY_DOT));
    EXPECT_EQ(keymaps().size(), 1U);
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps().size(), 2U);
    EXPECT_EQ(keys().at(5), (Key{KEY_DOT, true, control}));
    // Its own, told back to it.
    compositor().setKeymap(keymaps().back().chopped(1));
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps().size(), 2U);
}

TEST_F(WaylandDesktopKeysTest, keyMapsMayTakeTurns)
{
    const QByteArray us = keymapText("us");
    const QByteArray dvorak = keymapText("us", "dvorak");
    const QByteArray french = keymapText("fr", "bepo");
    for (int turn = 0; turn < 3; ++turn) {
        compositor().setKeymap(us);
        EXPECT_TRUE(letterIs(KEY_V));
        compositor().setKeymap(dvorak);
        EXPECT_TRUE(letterIs(KEY_DOT));
    }
    compositor().setKeymap(french);
    EXPECT_TRUE(letterIs(KEY_U));
    compositor().setKeymap(us);
    EXPECT_TRUE(letterIs(KEY_V));
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
}

TEST_F(WaylandDesktopKeysTest, withoutTheLetterAnAmericanKeyMapIsUsed)
{
    compositor().setKeymap(keymapText("us", "dvorak"));
    ASSERT_TRUE(letterIs(KEY_DOT));
    compositor().setKeymap(keymapText("ru"));
    ASSERT_TRUE(waitUntil([this] { return !desktop().strokes(PasteChord::controlV); }));
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
    const auto given = keymaps();
    EXPECT_EQ(WaylandKeymap::fromText(given.back().chopped(1)).value().text(), keymapText("us"));
    // Its own, told back to it.
    compositor().setKeymap(keymapText("us"));
    compositor().setKeymap(keymapText("ru"));
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps(), given);
}

TEST_F(WaylandDesktopKeysTest, whatIsNoKeyMapDoesNotCount)
{
    const QByteArray dvorak = keymapText("us", "dvorak");
    compositor().setKeymap(dvorak);
    ASSERT_TRUE(letterIs(KEY_DOT));
    const QByteArray us = keymapText("us");
    const auto size = static_cast<std::uint32_t>(us.size()) + 1;
    constexpr std::uint32_t xkb = 1;
    compositor().setKeymap("no key map at all");
    compositor().setKeymap(us, 0, size);
    compositor().setKeymap(us, xkb, size + 1);
    compositor().setKeymap(us, xkb, 0xffffffff);
    compositor().setKeymap(us, xkb, 0);
    compositor().setKeymap(us, xkb, 100);
    EXPECT_TRUE(send());
    EXPECT_TRUE(letterIs(KEY_DOT));
    EXPECT_THAT(keymaps(), ElementsAre(dvorak + '\0'));
}

TEST_F(WaylandDesktopKeysTest, noKeysArePressedOnceAnotherWindowIsInFront)
{
    open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    freeze([](auto& toplevels) { toplevels.open("other", true); });
    auto sending = sender.send(PasteChord::controlV, target, [] { return true; });
    EXPECT_TRUE(target->isActive()) << "as far as is known";
    compositor().thaw();
    EXPECT_EQ(await(std::move(sending)), KeySender::Sending::notInFront);
    inFront(u"other"_s);
    EXPECT_THAT(keys(), IsEmpty());
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, target, [] { return true; })),
        KeySender::Sending::notInFront);
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, nullptr, [] { return true; })),
        KeySender::Sending::notInFront);
    EXPECT_THAT(keys(), IsEmpty());
    EXPECT_TRUE(send());
}

TEST_F(WaylandDesktopKeysTest, noKeysArePressedForATargetThatHasClosed)
{
    const auto window = open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    freeze([window](auto& toplevels) { toplevels.close(window); });
    auto sending = sender.send(PasteChord::controlV, target, [] { return true; });
    compositor().thaw();
    EXPECT_EQ(await(std::move(sending)), KeySender::Sending::notInFront);
    EXPECT_THAT(keys(), IsEmpty());
}

TEST_F(WaylandDesktopKeysTest, whatAFrozenCompositorDoesNotGetToInTimeIsNotPressedLater)
{
    m_timeout = std::chrono::milliseconds(500);
    open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    compositor().freeze();
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, target, [] { return true; })),
        KeySender::Sending::failed);
    compositor().thaw();
    // By then it has got to what was asked of it before.
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
}

TEST_F(WaylandDesktopKeysTest, keysAloneAreThoseOfTheUsersKeyboard)
{
    EXPECT_EQ(
        desktop().strokes(PasteChord::controlV),
        (KeyStrokes{{KEY_LEFTCTRL, true}, {KEY_V, true}, {KEY_V, false}, {KEY_LEFTCTRL, false}}))
        << "an American one where none is known";
    compositor().setKeymap(keymapText("us", "dvorak", "ctrl:swapcaps"));
    EXPECT_TRUE(waitUntil([this] {
        return desktop().strokes(PasteChord::controlV) ==
               KeyStrokes{
                   {KEY_CAPSLOCK, true}, {KEY_DOT, true}, {KEY_DOT, false}, {KEY_CAPSLOCK, false}};
    }));
    compositor().setKeymap(keymapText("ru"));
    EXPECT_TRUE(
        waitUntil([this] { return desktop().strokes(PasteChord::controlV) == std::nullopt; }));
    EXPECT_TRUE(desktop().strokes(PasteChord::shiftInsert));
}

} // namespace tessly::test
