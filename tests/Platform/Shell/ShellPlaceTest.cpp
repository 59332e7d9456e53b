#include "ShellPlace.h"

#include <gtest/gtest.h>

namespace tessly::test {

namespace {

const QRect left(0, 0, 1280, 800);
const QRect right(1280, 0, 1920, 1080);
const std::vector<ScreenPixels> screens = {
    {.geometry = left, .pixelRatio = 1}, {.geometry = right, .pixelRatio = 1}};

ShellPlace placeWithPointer(QPoint pointer)
{
    return {
        .pointer = pointer,
        .pointerMonitor = left.contains(pointer) ? left : right,
        .focusMonitor = right,
        .desktop = QSize(3200, 1080)};
}

TEST(ShellPlaceTest, ThePointerIsTheAnchor)
{
    EXPECT_EQ(anchorAt(placeWithPointer({600, 400}), screens), QRect(600, 400, 1, 1));
    EXPECT_EQ(anchorAt(placeWithPointer({2000, 400}), screens), QRect(2000, 400, 1, 1));
}

TEST(ShellPlaceTest, APointerThatIsNowhereLeavesTheScreenWithTheFocus)
{
    EXPECT_EQ(anchorAt(placeWithPointer({600, 1000}), screens), right);
    EXPECT_EQ(anchorAt(placeWithPointer({-5, -5}), screens), right);
}

TEST(ShellPlaceTest, WhereTheXServerHasSeveralPixelsForOneTheyAreCounted)
{
    const std::vector<ScreenPixels> fine = {
        {.geometry = QRect(0, 0, 1280, 800), .pixelRatio = 2},
        {.geometry = QRect(2560, 0, 1920, 1080), .pixelRatio = 2}};
    EXPECT_EQ(anchorAt(placeWithPointer({600, 400}), fine), QRect(600, 400, 1, 1));
    EXPECT_EQ(anchorAt(placeWithPointer({1380, 50}), fine), QRect(2660, 50, 1, 1));
    EXPECT_EQ(anchorAt(placeWithPointer({-5, -5}), fine), QRect(2560, 0, 1920, 1080));
}

TEST(ShellPlaceTest, WithoutScreensOrADesktopNothingIsKnown)
{
    EXPECT_TRUE(anchorAt(placeWithPointer({600, 400}), {}).isEmpty());
    ShellPlace nowhere = placeWithPointer({600, 400});
    nowhere.desktop = QSize(0, 0);
    EXPECT_TRUE(anchorAt(nowhere, screens).isEmpty());
}

TEST(ShellPlaceTest, AWindowIsOnTheScreenOfItsMiddle)
{
    EXPECT_EQ(screenAround(QRect(1000, 100, 800, 600), screens), right);
    EXPECT_EQ(screenAround(QRect(700, 100, 800, 600), screens), left);
    EXPECT_TRUE(screenAround(QRect(9000, 100, 800, 600), screens).isEmpty());
}

} // namespace

} // namespace tessly::test
