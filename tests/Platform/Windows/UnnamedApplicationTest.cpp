#include "UnnamedApplication.h"

#include <gtest/gtest.h>

namespace tessly::test {

namespace {

TEST(UnnamedApplicationTest, NothingIsToldOfIt)
{
    const UnnamedApplication application([] { return false; });
    EXPECT_EQ(application.localizedName(), std::nullopt);
    EXPECT_EQ(application.bundleIdentifier(), std::nullopt);
    EXPECT_FALSE(application.isTerminated());
    EXPECT_EQ(application.pasteChord(), PasteChord::controlV);
    EXPECT_EQ(application.textPasteChord(), PasteChord::shiftInsert) << "it may be a terminal";
}

TEST(UnnamedApplicationTest, ItIsActiveAsSoonAsTheProgramItselfHasNotTheKeyboard)
{
    bool hasOwnFocus = true;
    UnnamedApplication application([&hasOwnFocus] { return hasOwnFocus; });
    EXPECT_FALSE(application.isActive());
    application.activate();
    EXPECT_FALSE(application.isActive()) << "the keyboard is the user's to give";
    hasOwnFocus = false;
    EXPECT_TRUE(application.isActive());
    hasOwnFocus = true;
    EXPECT_FALSE(application.isActive());
}

TEST(UnnamedApplicationTest, WhereTheProgramShowsNoWindowItIsActive)
{
    EXPECT_TRUE(UnnamedApplication().isActive());
}

} // namespace

} // namespace tessly::test
