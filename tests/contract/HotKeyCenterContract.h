#pragma once

#include "HotKeyCenter.h"
#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tessly::test {

/// What every desktop's hot keys do. `Subject` has
///   HotKeyCenter& center();
///   void endCenter();
///   void press(keyCode, modifiers);  // the user does, and lets go
///   bool takeElsewhere(keyCode, modifiers);     // another program does; false if refused
///   void releaseElsewhere(keyCode, modifiers);
///   void settle();  // until all that was on its way has arrived
template <typename Subject>
class HotKeyCenterContract : public testing::Test
{
protected:
    using Status = HotKeyCenter::Status;
    using Reference = HotKeyCenter::Reference;

    static constexpr quint32 one = 18;
    static constexpr quint32 two = 19;
    static constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;

    HotKeyCenter& center() { return m_subject.center(); }

    HotKeyCenter::Installation listen()
    {
        return center().installHandler([this](const HotKeyCenter::Press& press) {
            EXPECT_EQ(press.status, HotKeyCenter::done);
            m_heard.push_back(press.key.id);
            return HotKeyCenter::done;
        });
    }

    Status add(quint32 keyCode, quint32 modifiers, quint32 id, Reference* reference = nullptr)
    {
        auto registration = center().registerKey(keyCode, modifiers, {.signature = 1, .id = id});
        EXPECT_NE(registration.key, 0U);
        if (reference != nullptr) {
            *reference = registration.key;
        }
        return await(std::move(registration.status));
    }

    std::vector<quint32> heardAfterPressing(quint32 keyCode, quint32 modifiers)
    {
        m_heard.clear();
        m_subject.press(keyCode, modifiers);
        m_subject.settle();
        return m_heard;
    }

    Subject m_subject;
    std::vector<quint32> m_heard;
};

TYPED_TEST_SUITE_P(HotKeyCenterContract);

TYPED_TEST_P(HotKeyCenterContract, APressReachesTheHandlerWithTheKeysID)
{
    using testing::ElementsAre;
    EXPECT_EQ(this->listen().status, HotKeyCenter::done);
    ASSERT_EQ(this->add(this->one, this->optionShift, 7), HotKeyCenter::done);
    ASSERT_EQ(this->add(this->two, this->optionShift, 8), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->two, this->optionShift), ElementsAre(8));
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(7));
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(7));
}

TYPED_TEST_P(HotKeyCenterContract, OtherCombinationsAreNotHeard)
{
    using testing::IsEmpty;
    this->listen();
    ASSERT_EQ(this->add(this->one, this->optionShift, 7), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->two, this->optionShift), IsEmpty());
    EXPECT_THAT(this->heardAfterPressing(this->one, HotKeyCenter::optionKey), IsEmpty());
    EXPECT_THAT(
        this->heardAfterPressing(this->one, this->optionShift | HotKeyCenter::commandKey),
        IsEmpty());
}

TYPED_TEST_P(HotKeyCenterContract, EachModifierIsAModifierOfItsOwn)
{
    using testing::ElementsAre;
    this->listen();
    quint32 id = 0;
    for (const quint32 modifier :
         {HotKeyCenter::commandKey, HotKeyCenter::shiftKey, HotKeyCenter::optionKey,
          HotKeyCenter::controlKey}) {
        ASSERT_EQ(this->add(this->one, modifier, ++id), HotKeyCenter::done);
        EXPECT_THAT(this->heardAfterPressing(this->one, modifier), ElementsAre(id));
    }
}

TYPED_TEST_P(HotKeyCenterContract, AKeyThatIsHeldElsewhereIsRefusedAlone)
{
    using testing::ElementsAre;
    this->listen();
    ASSERT_TRUE(this->m_subject.takeElsewhere(this->one, this->optionShift));
    EXPECT_EQ(this->add(this->one, this->optionShift, 1), HotKeyCenter::taken);
    EXPECT_EQ(this->add(this->two, this->optionShift, 2), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->two, this->optionShift), ElementsAre(2));

    this->m_subject.releaseElsewhere(this->one, this->optionShift);
    EXPECT_EQ(this->add(this->one, this->optionShift, 3), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(3));
}

TYPED_TEST_P(HotKeyCenterContract, AKeyThatIsHeldHereIsRefusedToOthersUntilGivenUp)
{
    using testing::IsEmpty;
    this->listen();
    HotKeyCenter::Reference reference = 0;
    ASSERT_EQ(this->add(this->one, this->optionShift, 1, &reference), HotKeyCenter::done);
    EXPECT_FALSE(this->m_subject.takeElsewhere(this->one, this->optionShift));

    EXPECT_EQ(this->center().unregisterKey(reference), HotKeyCenter::done);
    this->m_subject.settle();
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), IsEmpty());
    EXPECT_TRUE(this->m_subject.takeElsewhere(this->one, this->optionShift));
}

TYPED_TEST_P(HotKeyCenterContract, ACombinationIsRegisteredOnce)
{
    using testing::ElementsAre;
    this->listen();
    HotKeyCenter::Reference first = 0;
    ASSERT_EQ(this->add(this->one, this->optionShift, 1, &first), HotKeyCenter::done);
    EXPECT_EQ(this->add(this->one, this->optionShift, 2), HotKeyCenter::taken);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(1));
    EXPECT_EQ(this->center().unregisterKey(first), HotKeyCenter::done);
    EXPECT_EQ(this->add(this->one, this->optionShift, 3), HotKeyCenter::done);
}

TYPED_TEST_P(HotKeyCenterContract, AKeyMayBeGivenUpBeforeTheAnswer)
{
    using testing::ElementsAre;
    this->listen();
    auto given = this->center().registerKey(this->one, this->optionShift, {.id = 1});
    EXPECT_EQ(this->center().unregisterKey(given.key), HotKeyCenter::done);
    // Asked in the same breath: the first is out of its way.
    auto wanted = this->center().registerKey(this->one, this->optionShift, {.id = 2});
    EXPECT_EQ(await(std::move(wanted.status)), HotKeyCenter::done);
    static_cast<void>(await(std::move(given.status)));
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(2));
}

TYPED_TEST_P(HotKeyCenterContract, KeysAndModifiersThatDoNotExistAreInvalid)
{
    EXPECT_EQ(this->add(4711, this->optionShift, 1), HotKeyCenter::invalid);
    EXPECT_EQ(this->add(this->one, 0x1, 2), HotKeyCenter::invalid);
}

TYPED_TEST_P(HotKeyCenterContract, WhatIsNotRegisteredCannotBeGivenUp)
{
    EXPECT_EQ(this->center().unregisterKey(4711), HotKeyCenter::invalid);
    HotKeyCenter::Reference reference = 0;
    ASSERT_EQ(this->add(this->one, this->optionShift, 1, &reference), HotKeyCenter::done);
    EXPECT_EQ(this->center().unregisterKey(reference), HotKeyCenter::done);
    EXPECT_EQ(this->center().unregisterKey(reference), HotKeyCenter::invalid);
}

TYPED_TEST_P(HotKeyCenterContract, ThereIsOneHandlerUntilItIsRemoved)
{
    using testing::ElementsAre;
    using testing::IsEmpty;
    ASSERT_EQ(this->add(this->one, this->optionShift, 1), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), IsEmpty());

    const auto installed = this->listen();
    EXPECT_EQ(installed.status, HotKeyCenter::done);
    EXPECT_NE(installed.handler, 0U);
    const auto second = this->listen();
    EXPECT_NE(second.status, HotKeyCenter::done);
    EXPECT_EQ(second.handler, 0U);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(1));

    EXPECT_EQ(this->center().removeHandler(installed.handler), HotKeyCenter::done);
    EXPECT_NE(this->center().removeHandler(installed.handler), HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), IsEmpty());
    EXPECT_EQ(this->listen().status, HotKeyCenter::done);
    EXPECT_THAT(this->heardAfterPressing(this->one, this->optionShift), ElementsAre(1));
}

TYPED_TEST_P(HotKeyCenterContract, ItsEndGivesUpEveryKey)
{
    ASSERT_EQ(this->add(this->one, this->optionShift, 1), HotKeyCenter::done);
    ASSERT_EQ(this->add(this->two, this->optionShift, 2), HotKeyCenter::done);
    this->m_subject.endCenter();
    EXPECT_TRUE(
        waitUntil([this] { return this->m_subject.takeElsewhere(this->one, this->optionShift); }));
    EXPECT_TRUE(
        waitUntil([this] { return this->m_subject.takeElsewhere(this->two, this->optionShift); }));
}

TYPED_TEST_P(HotKeyCenterContract, AnAnswerThatComesAfterItsEndIsThatNothingIsHeld)
{
    auto registration = this->center().registerKey(this->one, this->optionShift, {.id = 1});
    this->m_subject.endCenter();
    EXPECT_EQ(await(std::move(registration.status)), HotKeyCenter::unavailable);
}

REGISTER_TYPED_TEST_SUITE_P(
    HotKeyCenterContract, APressReachesTheHandlerWithTheKeysID, OtherCombinationsAreNotHeard,
    EachModifierIsAModifierOfItsOwn, AKeyThatIsHeldElsewhereIsRefusedAlone,
    AKeyThatIsHeldHereIsRefusedToOthersUntilGivenUp, ACombinationIsRegisteredOnce,
    AKeyMayBeGivenUpBeforeTheAnswer, KeysAndModifiersThatDoNotExistAreInvalid,
    WhatIsNotRegisteredCannotBeGivenUp, ThereIsOneHandlerUntilItIsRemoved, ItsEndGivesUpEveryKey,
    AnAnswerThatComesAfterItsEndIsThatNothingIsHeld);

} // namespace tessly::test
