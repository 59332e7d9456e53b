#include "UnnamedWorkspace.h"

#include "FakeRunningApplication.h"
#include "FakeWorkspace.h"
#include "TestSupport.h"
#include "UnnamedApplication.h"

#include <gtest/gtest.h>

namespace tessly::test {
namespace {

TEST(UnnamedWorkspace, WhatIsNotToldIsTheUnnamedApplication)
{
    const UnnamedWorkspace workspace(nullptr);
    const auto front = workspace.frontmostApplication();
    EXPECT_NE(std::dynamic_pointer_cast<UnnamedApplication>(front), nullptr);
    EXPECT_EQ(workspace.frontmostApplication(), front) << "the same each time";
}

TEST(UnnamedWorkspace, WhatIsToldGoesFirst)
{
    FakeWorkspace told;
    const UnnamedWorkspace workspace(&told);
    EXPECT_NE(
        std::dynamic_pointer_cast<UnnamedApplication>(workspace.frontmostApplication()), nullptr);
    const auto editor =
        std::make_shared<FakeRunningApplication>(QStringLiteral("org.example.editor"));
    told.setFrontmost(editor);
    EXPECT_EQ(workspace.frontmostApplication(), editor);
}

TEST(UnnamedWorkspace, WhatIsInFrontNowAndNotToldIsTheUnnamedApplication)
{
    UnnamedWorkspace alone(nullptr);
    EXPECT_EQ(
        await(alone.inFrontDuring(std::chrono::seconds(1))),
        std::vector({alone.frontmostApplication()}));

    FakeWorkspace told;
    UnnamedWorkspace workspace(&told);
    const auto unnamed = workspace.frontmostApplication();
    const auto editor =
        std::make_shared<FakeRunningApplication>(QStringLiteral("org.example.editor"));
    told.setFrontmost(editor);
    EXPECT_EQ(
        await(workspace.inFrontDuring(std::chrono::seconds(1))),
        std::vector<std::shared_ptr<RunningApplication>>({editor}));
    told.setFrontmost(nullptr);
    EXPECT_EQ(
        await(workspace.inFrontDuring(std::chrono::seconds(1))),
        std::vector<std::shared_ptr<RunningApplication>>({editor, unnamed}));
}

TEST(UnnamedWorkspace, PassesOnWhatIsToldOfTheFront)
{
    FakeWorkspace told;
    UnnamedWorkspace workspace(&told);
    int changes = 0;
    workspace.setFrontmostChanged([&] { ++changes; });
    told.setFrontmost(
        std::make_shared<FakeRunningApplication>(QStringLiteral("org.example.editor")));
    EXPECT_EQ(changes, 1);
    UnnamedWorkspace(nullptr).setFrontmostChanged([] {});
}

} // namespace
} // namespace tessly::test
