#include "StatusIcon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessly::test {

namespace {

double linear(std::uint8_t part)
{
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// As WCAG has it.
double luminance(StatusIcon::Colour colour)
{
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) +
           0.0722 * linear(colour.blue);
}

double meanOpacity(std::span<const std::uint8_t> opacity)
{
    return std::accumulate(opacity.begin(), opacity.end(), 0.0) /
           static_cast<double>(opacity.size());
}

TEST(StatusIconTest, EveryDrawingIsAWholeSquareWithAShapeInIt)
{
    int previous = 0;
    for (const auto& drawing : StatusIcon::drawings()) {
        EXPECT_GT(drawing.size, previous);
        previous = drawing.size;
        ASSERT_EQ(drawing.opacity.size(), static_cast<std::size_t>(drawing.size * drawing.size));
        EXPECT_EQ(std::ranges::max(drawing.opacity), 255);
        EXPECT_EQ(drawing.opacity.front(), 0);
        EXPECT_EQ(drawing.opacity.back(), 0);
    }
    EXPECT_EQ(StatusIcon::drawings().front().size, 16);
    EXPECT_EQ(previous, 128);
}

TEST(StatusIconTest, ADrawnSizeIsTakenAsItIs)
{
    for (const auto& drawing : StatusIcon::drawings()) {
        EXPECT_TRUE(std::ranges::equal(StatusIcon::opacity(drawing.size), drawing.opacity));
    }
}

TEST(StatusIconTest, OtherSizesKeepTheShape)
{
    const double expected = meanOpacity(StatusIcon::drawings().back().opacity);
    for (const int size : {1, 7, 17, 26, 63, 100, 129, 200}) {
        const auto opacity = StatusIcon::opacity(size);
        ASSERT_EQ(opacity.size(), static_cast<std::size_t>(size * size));
        EXPECT_NEAR(meanOpacity(opacity), expected, 8) << size;
    }
}

TEST(StatusIconTest, TheDefaultColourStandsOutFromBlackAndFromWhite)
{
    const double own = luminance(StatusIcon::defaultColour) + 0.05;
    EXPECT_GE(1.05 / own, 3);
    EXPECT_GE(own / 0.05, 3);
}

} // namespace

} // namespace tessly::test
