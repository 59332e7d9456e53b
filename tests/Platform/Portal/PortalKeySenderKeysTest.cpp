#include "PortalKeySenderTest.h"

namespace tessly::test {
namespace {

using PortalKeySenderKeysTest = PortalKeySenderTest;

// Keys

TEST_F(PortalKeySenderKeysTest, EachChordIsPressedAndReleasedAfterWhatMayBeHeld)
{
    startAllowed();
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_TRUE(
        areChords(mock().keys(), {{{control, true}, {v, true}, {v, false}, {control, false}}}));
}

TEST_F(PortalKeySenderKeysTest, TheTerminalsChord)
{
    startAllowed();
    EXPECT_EQ(Sending::sent, await(sender().send(PasteChord::controlShiftV, nullptr, [] {
                  return true;
              })));
    EXPECT_TRUE(areChords(
        mock().keys(), {{{control, true},
                         {shift, true},
                         {v, true},
                         {v, false},
                         {shift, false},
                         {control, false}}}));
}

TEST_F(PortalKeySenderKeysTest, TheChordOfOldTerminals)
{
    startAllowed();
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })));
    EXPECT_TRUE(areChords(
        mock().keys(), {{{shift, true}, {insert, true}, {insert, false}, {shift, false}}}));
}

TEST_F(PortalKeySenderKeysTest, TheKeysOfAChordAreAskedForEachTime)
{
    startAllowed();
    m_keyOfV = 52;
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), testing::Contains(Key(52, true)));
}

TEST_F(PortalKeySenderKeysTest, ChordsFollowOneAnother)
{
    startAllowed();
    auto first = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    auto second = sender().send(PasteChord::shiftInsert, nullptr, [] { return true; });
    EXPECT_EQ(await(std::move(second)), Sending::sent);
    EXPECT_EQ(await(std::move(first)), Sending::sent);
    EXPECT_TRUE(areChords(
        mock().keys(), {{{control, true}, {v, true}, {v, false}, {control, false}},
                        {{shift, true}, {insert, true}, {insert, false}, {shift, false}}}));
}

class PortalKeySenderReadyTest : public PortalKeySenderTest
{
protected:
    /// Whether it is ready, after this time and no earlier.
    [[nodiscard]] bool isReadyAfter(std::chrono::milliseconds duration)
    {
        auto waiting = sender().ready();
        if (duration > 0ms) {
            EXPECT_TRUE(waitUntil([this] { return m_clock.pending() == 1; }));
            m_clock.advance(duration - 1ms);
            settle();
            EXPECT_FALSE(waiting.isReady());
            m_clock.advance(1ms);
        }
        return await(std::move(waiting));
    }
};

TEST_F(PortalKeySenderReadyTest, WhereNothingIsKnownOfHeldKeysAMomentIsWaited)
{
    startAllowed();
    EXPECT_TRUE(isReadyAfter(100ms));
    sender().setHeldKeys(
        {.hotKeysUp =
             [] {
                 const LoopAnswer<bool> up(true);
                 return up.future();
             },
         .hadModifiers = {}});
    EXPECT_TRUE(isReadyAfter(100ms)) << "it was not one of the hot keys";
}

TEST_F(PortalKeySenderReadyTest, ModifiersThatThePanelSawAreWaitedForLonger)
{
    startAllowed();
    sender().setHeldKeys({.hotKeysUp = {}, .hadModifiers = [] { return true; }});
    EXPECT_TRUE(isReadyAfter(250ms));
}

TEST_F(PortalKeySenderReadyTest, TheHotKeyIsWaitedFor)
{
    startAllowed();
    for (const bool comesUp : {true, false}) {
        const LoopAnswer<bool> up(false);
        sender().setHeldKeys({.hotKeysUp = [up] { return up.future(); }, .hadModifiers = {}});
        auto waiting = sender().ready();
        settle();
        EXPECT_FALSE(waiting.isReady());
        up(comesUp);
        EXPECT_EQ(await(std::move(waiting)), comesUp);
    }
}

TEST_F(PortalKeySenderReadyTest, APortalThatDoesNotAnswerTakesNoKeys)
{
    startAllowed();
    mock().hangsAt = {u"Properties.Get"_s};
    auto waiting = sender().ready();
    m_clock.advance(100ms);
    const auto asked = mock().calls(u"Properties.Get"_s).size();
    ASSERT_TRUE(waitUntil([&] { return mock().calls(u"Properties.Get"_s).size() > asked; }));
    EXPECT_FALSE(waiting.isReady());
    m_clock.advance(300ms);
    EXPECT_FALSE(await(std::move(waiting)));
    EXPECT_THAT(mock().keys(), IsEmpty());
    mock().hangsAt.clear();
    EXPECT_TRUE(isReadyAfter(100ms));
}

TEST_F(PortalKeySenderReadyTest, ItMayEndWhileKeysAreWaitedFor)
{
    startAllowed();
    auto waiting = sender().ready();
    m_sender.reset();
    m_clock.advance(100ms);
    EXPECT_FALSE(await(std::move(waiting)));
}

// The target

TEST_F(PortalKeySenderKeysTest, ATargetThatLeftWhileKeysWereLiftedGetsNone)
{
    startAllowed();
    const auto target = std::make_shared<FakePasteTarget>(u"Editor"_s);
    target->setActive(true);
    auto sending = sender().send(PasteChord::controlV, target, [] { return true; });
    target->setActive(false);
    EXPECT_EQ(await(std::move(sending)), Sending::notInFront);
    EXPECT_TRUE(areChords(mock().keys(), {{}}));
    EXPECT_TRUE(sender().isAllowed());
}

TEST_F(PortalKeySenderKeysTest, WhatIsDownWhenTheTargetLeavesIsLetGo)
{
    startAllowed();
    const auto target = std::make_shared<FakePasteTarget>(u"Editor"_s);
    target->setActive(true);
    mock().keyArrived = [&](const Key& key) {
        if (key.second) {
            target->setActive(false);
        }
    };
    EXPECT_EQ(
        await(sender().send(PasteChord::controlShiftV, target, [] { return true; })),
        Sending::notInFront);
    EXPECT_TRUE(areChords(mock().keys(), {{{control, true}, {control, false}}}));
}

TEST_F(PortalKeySenderKeysTest, AKeyboardWithoutKeysForAChordIsToldSo)
{
    startAllowed();
    m_keyOfV.reset();
    EXPECT_EQ(
        await(sender().send(PasteChord::controlV, nullptr, [] { return true; })), Sending::noKeys);
    EXPECT_THAT(mock().keys(), IsEmpty());
    EXPECT_TRUE(sender().isAllowed());
    EXPECT_EQ(
        await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })), Sending::sent);
}

TEST_F(PortalKeySenderKeysTest, WithoutAccessNoKeyIsSent)
{
    startSenderAndWait();
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), IsEmpty());
}

TEST_F(PortalKeySenderKeysTest, APortalThatDiesBetweenTheKeysHasNotTakenThem)
{
    startAllowed();
    mock().diesAtKey = 10;
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_THAT(mock().keys(), SizeIs(10));
    EXPECT_TRUE(becomesForbidden());
}

TEST_F(PortalKeySenderKeysTest, WhereNothingIsToBeLiftedTheChordCountsAlone)
{
    const LogCapture log;
    mock().refusesLifting = true;
    startAllowed();
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::shiftInsert, nullptr, [] { return true; })));
    EXPECT_THAT(
        mock().keys(),
        ElementsAre(
            Key(control, true), Key(v, true), Key(v, false), Key(control, false), Key(shift, true),
            Key(insert, true), Key(insert, false), Key(shift, false)));
    EXPECT_THAT(mock().calls(u"RemoteDesktop.CreateSession"_s), SizeIs(1));
    EXPECT_THAT(log.lines(logCategory), SizeIs(1)) << "that the start has been granted";
}

TEST_F(PortalKeySenderKeysTest, KeysThatAreRefusedHaveNotBeenTakenAndAccessIsTakenUpAnew)
{
    startAllowed();
    mock().failsAt = {u"RemoteDesktop.NotifyKeyboardKeycode"_s};
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    mock().failsAt.clear();
    ASSERT_TRUE(becomesAllowed());
    EXPECT_EQ(mock().questions(), 1);
    EXPECT_EQ(
        Sending::sent, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
}

TEST_F(PortalKeySenderKeysTest, APortalThatHangsHasNothingToPressWhenItWakes)
{
    startAllowed();
    mock().hangsAt = {u"RemoteDesktop.NotifyKeyboardKeycode"_s, u"RemoteDesktop.CreateSession"_s};
    auto sending = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    settle();
    EXPECT_FALSE(sending.isReady());
    m_clock.advance(3s);
    EXPECT_EQ(await(std::move(sending)), Sending::failed);
    EXPECT_FALSE(sender().isAllowed());
    EXPECT_EQ(
        Sending::failed, await(sender().send(PasteChord::controlV, nullptr, [] { return true; })));
    settle();
    const auto calls = mock().calls(u"RemoteDesktop.NotifyKeyboardKeycode"_s);
    EXPECT_THAT(calls, SizeIs(releases().size()));
    for (const auto& call : calls) {
        EXPECT_EQ(call.arguments.value(3), 0U) << "only released";
    }
}

TEST_F(PortalKeySenderKeysTest, ItMayEndWhileKeysAreOnTheirWay)
{
    startAllowed();
    auto sending = sender().send(PasteChord::controlV, nullptr, [] { return true; });
    m_sender.reset();
    static_cast<void>(await(std::move(sending)));
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }))
        << "with it goes what is still pressed";
}

} // namespace
} // namespace tessly::test
