#include "ScreenPixels.h"

#include <gtest/gtest.h>

namespace tessly::test {

namespace {

TEST(ScreenPixelsTest, OnAnOrdinaryScreenNothingChanges)
{
    const ScreenPixels screen = {.geometry = QRect(100, 0, 1280, 800), .pixelRatio = 1};
    EXPECT_EQ(screen.toIndependent(QRect(1200, 770, 24, 24)), QRect(1200, 770, 24, 24));
}

TEST(ScreenPixelsTest, OnAFineScreenDistancesFromItsCornerShrink)
{
    const ScreenPixels screen = {.geometry = QRect(1920, 0, 1280, 720), .pixelRatio = 2};
    EXPECT_EQ(screen.nativeGeometry(), QRect(1920, 0, 2560, 1440));
    EXPECT_EQ(screen.toIndependent(QRect(4400, 1400, 40, 40)), QRect(3160, 700, 20, 20));
}

TEST(ScreenPixelsTest, APointStaysAPoint)
{
    const ScreenPixels screen = {.geometry = QRect(0, 0, 1280, 720), .pixelRatio = 3};
    EXPECT_EQ(screen.toIndependent(QRect(300, 300, 1, 1)), QRect(100, 100, 1, 1));
}

TEST(ScreenPixelsTest, WithoutAnApplicationThatShowsWindowsNothingChanges)
{
    EXPECT_EQ(toIndependentPixels(QRect(10, 20, 30, 40)), QRect(10, 20, 30, 40));
}

} // namespace

} // namespace tessly::test
