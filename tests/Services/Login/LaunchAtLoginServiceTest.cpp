#include "LaunchAtLoginService.h"

#include "FakeBundle.h"
#include "FakeLoginItem.h"
#include "FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

using Status = LoginItem::Status;
using RegistrationError = LaunchAtLoginService::RegistrationError;

const QString key = u"launchAtLoginRegistrationIdentity"_s;
const QString identity = u"/usr/bin/tessly|com.brackmoor.tessly|1.2|45"_s;

class LaunchAtLoginServiceTest : public testing::Test
{
protected:
    std::optional<QString> stored() const { return m_defaults.stored(key); }

    void runFromDownloads() { m_bundle.path = u"/home/user/Downloads/tessly"_s; }

    FakeLoginItem m_item;
    FakeBundle m_bundle;
    FakeUserDefaults m_defaults;
    LaunchAtLoginService m_service{{.service = m_item, .bundle = m_bundle, .defaults = m_defaults}};
};

// Whether it is enabled

TEST_F(LaunchAtLoginServiceTest, ItIsEnabledOnlyByTheStatusEnabled)
{
    for (const Status status :
         {Status::notRegistered, Status::requiresApproval, Status::notFound}) {
        m_item.setStatus(status);
        EXPECT_FALSE(m_service.isEnabled());
    }
    m_item.setStatus(Status::enabled);
    EXPECT_TRUE(m_service.isEnabled());
}

TEST_F(LaunchAtLoginServiceTest, ACopyElsewhereIsNotEnabled)
{
    m_item.setStatus(Status::enabled);
    runFromDownloads();
    EXPECT_FALSE(m_service.isEnabled());
}

TEST_F(LaunchAtLoginServiceTest, RedundantDotsInThePathDoNotMatter)
{
    m_item.setStatus(Status::enabled);
    m_bundle.path = u"/usr/./lib/../bin/tessly"_s;
    EXPECT_TRUE(m_service.isEnabled());
    m_bundle.path = u"/usr/bin/Tessly"_s;
    EXPECT_FALSE(m_service.isEnabled());
}

// Enabling

TEST_F(LaunchAtLoginServiceTest, EnablingRegistersAndStoresTheIdentity)
{
    m_service.setEnabled(true);
    EXPECT_THAT(m_item.calls(), ElementsAre(u"register"_s));
    EXPECT_EQ(stored(), identity);
    EXPECT_TRUE(m_service.isEnabled());
}

TEST_F(LaunchAtLoginServiceTest, TheIdentityHasThePathWithoutRedundantDots)
{
    m_bundle.path = u"/usr/bin/./tessly"_s;
    m_service.setEnabled(true);
    EXPECT_EQ(stored(), identity);
}

TEST_F(LaunchAtLoginServiceTest, WhatTheBundleDoesNotTellIsEmptyInTheIdentity)
{
    m_bundle.identifier.reset();
    m_bundle.information = {{u"CFBundleShortVersionString"_s, 1.2}};
    m_service.setEnabled(true);
    EXPECT_EQ(stored(), u"/usr/bin/tessly|||"_s);
}

TEST_F(LaunchAtLoginServiceTest, EnablingACopyInDownloadsIsRefusedAndStoresNothing)
{
    runFromDownloads();
    try {
        m_service.setEnabled(true);
        FAIL() << "nothing was thrown";
    } catch (const RegistrationError& error) {
        EXPECT_EQ(error, RegistrationError(RegistrationError::Case::requiresInstalledApp));
        EXPECT_EQ(error.description(), u"Move Tessly to Applications first."_s);
        EXPECT_STREQ(error.what(), "Move Tessly to Applications first.");
    }
    EXPECT_THAT(m_item.calls(), IsEmpty());
    EXPECT_THAT(m_defaults.writes(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, EnablingACopyElsewhereIsRefusedAlsoWhenRegistered)
{
    runFromDownloads();
    m_item.setStatus(Status::enabled);
    EXPECT_THROW(m_service.setEnabled(true), RegistrationError);
    EXPECT_THAT(m_item.calls(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, EnablingWhatIsEnabledByThisBuildDoesNothing)
{
    m_item.setStatus(Status::enabled);
    m_defaults.preset(key, identity);
    m_service.setEnabled(true);
    EXPECT_THAT(m_item.calls(), IsEmpty());
    EXPECT_THAT(m_defaults.writes(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, EnablingWhatIsEnabledByAnotherBuildRepairs)
{
    m_item.setStatus(Status::enabled);
    m_defaults.preset(key, u"/usr/bin/tessly|com.brackmoor.tessly|1.1|44"_s);
    m_service.setEnabled(true);
    EXPECT_THAT(m_item.calls(), ElementsAre(u"unregister"_s, u"register"_s));
    EXPECT_EQ(stored(), identity);
}

TEST_F(LaunchAtLoginServiceTest, ARepairThatFailsFailsTheEnabling)
{
    m_item.setStatus(Status::enabled);
    m_item.failUnregistering();
    EXPECT_THROW(m_service.setEnabled(true), FakeLoginItem::Failure);
}

TEST_F(LaunchAtLoginServiceTest, EnablingWhatTheUserSwitchedOffInTheDesktopRegisters)
{
    m_item.setStatus(Status::requiresApproval);
    m_service.setEnabled(true);
    EXPECT_THAT(m_item.calls(), ElementsAre(u"register"_s));
    EXPECT_EQ(stored(), identity);
}

TEST_F(LaunchAtLoginServiceTest, ARegistrationThatFailsIsPassedOnAndStoresNothing)
{
    m_item.failRegistering();
    try {
        m_service.setEnabled(true);
        FAIL() << "nothing was thrown";
    } catch (const FakeLoginItem::Failure& failure) {
        EXPECT_STREQ(failure.what(), "Could not register.");
    }
    EXPECT_THAT(m_defaults.writes(), IsEmpty());
}

// Disabling

TEST_F(LaunchAtLoginServiceTest, DisablingUnregistersAndForgetsTheIdentity)
{
    m_service.setEnabled(true);
    m_item.forgetCalls();
    m_service.setEnabled(false);
    EXPECT_THAT(m_item.calls(), ElementsAre(u"unregister"_s));
    EXPECT_EQ(stored(), std::nullopt);
    EXPECT_FALSE(m_service.isEnabled());
}

TEST_F(LaunchAtLoginServiceTest, DisablingWhatRequiresApprovalDoesNothing)
{
    m_item.setStatus(Status::requiresApproval);
    m_defaults.preset(key, identity);
    m_service.setEnabled(false);
    EXPECT_THAT(m_item.calls(), IsEmpty());
    EXPECT_EQ(stored(), identity);
}

TEST_F(LaunchAtLoginServiceTest, DisablingWorksFromACopyElsewhere)
{
    m_service.setEnabled(true);
    runFromDownloads();
    m_service.setEnabled(false);
    EXPECT_EQ(m_item.status(), Status::notRegistered);
    EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(LaunchAtLoginServiceTest, AnUnregistrationThatFailsIsPassedOnAndKeepsTheIdentity)
{
    m_service.setEnabled(true);
    m_item.failUnregistering();
    EXPECT_THROW(m_service.setEnabled(false), FakeLoginItem::Failure);
    EXPECT_EQ(stored(), identity);
    EXPECT_TRUE(m_service.isEnabled());
}

// Repairing

TEST_F(LaunchAtLoginServiceTest, TheFirstStartOfANewBuildRegistersAgainAndTheSecondDoesNothing)
{
    m_service.setEnabled(true);
    m_item.forgetCalls();
    m_bundle.setVersion(u"1.3"_s, u"46"_s);
    m_service.repairRegistrationIfNeeded();
    EXPECT_THAT(m_item.calls(), ElementsAre(u"unregister"_s, u"register"_s));
    EXPECT_EQ(stored(), u"/usr/bin/tessly|com.brackmoor.tessly|1.3|46"_s);

    m_item.forgetCalls();
    m_service.repairRegistrationIfNeeded();
    EXPECT_THAT(m_item.calls(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, AMissingIdentityIsRepaired)
{
    m_item.setStatus(Status::enabled);
    m_service.repairRegistrationIfNeeded();
    EXPECT_THAT(m_item.calls(), ElementsAre(u"unregister"_s, u"register"_s));
    EXPECT_EQ(stored(), identity);
}

TEST_F(LaunchAtLoginServiceTest, RepairNeverTurnsTheLoginItemOn)
{
    for (const Status status :
         {Status::notRegistered, Status::requiresApproval, Status::notFound}) {
        m_item.setStatus(status);
        m_service.repairRegistrationIfNeeded();
    }
    EXPECT_THAT(m_item.calls(), IsEmpty());
    EXPECT_THAT(m_defaults.writes(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, ACopyElsewhereRepairsNothing)
{
    m_item.setStatus(Status::enabled);
    runFromDownloads();
    m_service.repairRegistrationIfNeeded();
    EXPECT_THAT(m_item.calls(), IsEmpty());
    EXPECT_THAT(m_defaults.writes(), IsEmpty());
}

TEST_F(LaunchAtLoginServiceTest, ARepairThatCannotUnregisterDoesNotRegister)
{
    m_item.setStatus(Status::enabled);
    m_defaults.preset(key, u"old"_s);
    m_item.failUnregistering();
    EXPECT_THROW(m_service.repairRegistrationIfNeeded(), FakeLoginItem::Failure);
    EXPECT_THAT(m_item.calls(), ElementsAre(u"unregister"_s));
    EXPECT_EQ(stored(), u"old"_s);
}

TEST_F(LaunchAtLoginServiceTest, ARepairThatCannotRegisterLeavesTheItemUnregistered)
{
    m_item.setStatus(Status::enabled);
    m_defaults.preset(key, u"old"_s);
    m_item.failRegistering();
    EXPECT_THROW(m_service.repairRegistrationIfNeeded(), FakeLoginItem::Failure);
    EXPECT_EQ(m_item.status(), Status::notRegistered);
    EXPECT_EQ(stored(), u"old"_s);

    m_item.failRegistering(false);
    m_service.setEnabled(true);
    EXPECT_EQ(m_item.status(), Status::enabled);
    EXPECT_EQ(stored(), identity);
}

} // namespace

} // namespace tessly::test
