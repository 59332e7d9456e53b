#include "UnnamedWorkspace.h"

#include "FakeRunningApplication.h"
#include "FakeWorkspace.h"
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

} // namespace
} // namespace tessly::test
