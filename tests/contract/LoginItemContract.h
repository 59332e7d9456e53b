#pragma once

#include "LoginItem.h"

#include <gtest/gtest.h>

#include <exception>

namespace tessly::test {

/// What every login item does. `Subject` has
///   LoginItem& item();
///   void switchOff();             // the user does, in the desktop's own settings
///   void makeRegisteringFail();
///   void makeUnregisteringFail();
template <typename Subject>
class LoginItemContract : public testing::Test
{
protected:
    LoginItem& item() { return m_subject.item(); }

    Subject m_subject;
};

TYPED_TEST_SUITE_P(LoginItemContract);

TYPED_TEST_P(LoginItemContract, ThereIsNoneAtFirst)
{
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, RegisteredItIsEnabled)
{
    this->item().registerItem();
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, RegisteringTwiceIsNoError)
{
    this->item().registerItem();
    this->item().registerItem();
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, UnregisteredItIsGone)
{
    this->item().registerItem();
    this->item().unregisterItem();
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, UnregisteringWhatIsNotThereIsNoError)
{
    EXPECT_NO_THROW(this->item().unregisterItem());
}

TYPED_TEST_P(LoginItemContract, SwitchedOffByTheUserItRequiresApprovalUntilRegisteredAgain)
{
    this->item().registerItem();
    this->m_subject.switchOff();
    EXPECT_EQ(this->item().status(), LoginItem::Status::requiresApproval);
    this->item().registerItem();
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, AFailedRegistrationThrowsAndRegistersNothing)
{
    this->m_subject.makeRegisteringFail();
    EXPECT_THROW(this->item().registerItem(), std::exception);
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, AFailedUnregistrationThrows)
{
    this->m_subject.makeUnregisteringFail();
    EXPECT_THROW(this->item().unregisterItem(), std::exception);
}

REGISTER_TYPED_TEST_SUITE_P(
    LoginItemContract, ThereIsNoneAtFirst, RegisteredItIsEnabled, RegisteringTwiceIsNoError,
    UnregisteredItIsGone, UnregisteringWhatIsNotThereIsNoError,
    SwitchedOffByTheUserItRequiresApprovalUntilRegisteredAgain,
    AFailedRegistrationThrowsAndRegistersNothing, AFailedUnregistrationThrows);

} // namespace tessly::test
