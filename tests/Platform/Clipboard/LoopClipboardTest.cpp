#include "LoopClipboard.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

using Origin = LoopClipboard::State::Origin;

TEST(LoopClipboardStateTest, WhatAnotherProgramReplacesAtOnceIsNotMissed)
{
    LoopClipboard::State state;
    const qint64 before = state.changeCount();
    state.change(Origin::otherProgram);
    state.change(Origin::otherProgram);
    EXPECT_EQ(state.copiesMissed(before, 1h), 0);
    EXPECT_EQ(state.copiesMissed(before, 0ns), 1) << "it was there for long enough";
}

TEST(LoopClipboardStateTest, WhatTheProgramItselfReplacesIsMissed)
{
    LoopClipboard::State state;
    const qint64 before = state.changeCount();
    state.change(Origin::otherProgram);
    const qint64 copied = state.changeCount();
    state.change(Origin::program, WriteTicket(1));
    EXPECT_EQ(state.copiesMissed(before, 1h), 1);
    EXPECT_EQ(state.copiesMissed(copied, 1h), 0) << "that one was looked at";
}

TEST(LoopClipboardStateTest, OwnContentAndNoContentAreNotMissed)
{
    LoopClipboard::State state;
    const qint64 before = state.changeCount();
    state.change(Origin::program, WriteTicket(1));
    state.change(Origin::nobody);
    state.change(Origin::program);
    state.change(Origin::otherProgram);
    EXPECT_EQ(state.copiesMissed(before, 0ns), 0);
}

TEST(LoopClipboardStateTest, EveryProgramThatComesAtOnceFollowsTheOwnerThatLeft)
{
    LoopClipboard::State state;
    state.change(Origin::otherProgram);
    state.ownerLeft();
    state.change(Origin::otherProgram);
    EXPECT_TRUE(state.followsOwnerThatLeft(state.changeCount()));
    state.change(Origin::otherProgram);
    EXPECT_TRUE(state.followsOwnerThatLeft(state.changeCount()));
    state.change(Origin::nobody);
    EXPECT_FALSE(state.followsOwnerThatLeft(state.changeCount()));
    state.change(Origin::otherProgram);
    EXPECT_FALSE(state.followsOwnerThatLeft(state.changeCount())) << "the clipboard was cleared";
}

TEST(LoopClipboardStateTest, WhatComesLaterThanTwoSecondsFollowsNobody)
{
    std::chrono::steady_clock::time_point now{1h};
    LoopClipboard::State state(LoopClipboard::State::usualTakeover, [&now] { return now; });
    state.change(Origin::otherProgram);
    state.ownerLeft();
    now += 2s;
    state.change(Origin::otherProgram);
    EXPECT_TRUE(state.followsOwnerThatLeft(state.changeCount()));
    now += 1ns;
    state.change(Origin::otherProgram);
    EXPECT_FALSE(state.followsOwnerThatLeft(state.changeCount()));
}

TEST(LoopClipboardStateTest, APasteBeginsWithWhatWasWrittenForItAndCountsFetchesAnew)
{
    LoopClipboard::State state;
    state.change(Origin::program, WriteTicket(1));
    state.fetchCount = 3;
    EXPECT_TRUE(state.beginPaste(WriteTicket(1), false));
    EXPECT_EQ(state.fetchCount, 0U);
    EXPECT_FALSE(state.beginPaste(WriteTicket(2), false));
    EXPECT_FALSE(state.beginPaste({}, false));
    state.release();
    EXPECT_FALSE(state.beginPaste(WriteTicket(1), false));
}

TEST(LoopClipboardStateTest, WherePrimaryIsPastedThatCountsToo)
{
    LoopClipboard::State state;
    state.change(Origin::program, WriteTicket(1));
    EXPECT_FALSE(state.beginPaste(WriteTicket(1), true));
    state.changePrimary(WriteTicket(1));
    EXPECT_TRUE(state.beginPaste(WriteTicket(1), true));
    state.releasePrimary();
    EXPECT_FALSE(state.beginPaste(WriteTicket(1), true));
    EXPECT_TRUE(state.beginPaste(WriteTicket(1), false));
}

} // namespace

} // namespace tessly::test
