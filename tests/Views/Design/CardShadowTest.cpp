#include "CardShadow.h"

#include <gtest/gtest.h>

namespace tessly {
namespace {

constexpr ShadowShape shape{.reach = 20, .radius = 10, .color = QColor(0, 0, 0, 100)};

TEST(CardShadowTest, FadesFromTheEdgeOfTheCardOutwards)
{
    const QImage image = shadowImage(shape);
    ASSERT_EQ(image.size(), QSize(61, 61));
    const int middle = 30;
    EXPECT_EQ(qAlpha(image.pixel(middle, middle)), 100) << "whole under the card";
    EXPECT_EQ(qAlpha(image.pixel(21, middle)), 100);
    int before = 100;
    for (int x = 19; x >= 0; --x) {
        const int alpha = qAlpha(image.pixel(x, middle));
        EXPECT_LE(alpha, before) << x;
        before = alpha;
    }
    EXPECT_EQ(before, 0);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
}

TEST(CardShadowTest, IsTheSameOnAllSides)
{
    const QImage image = shadowImage(shape);
    const QPoint end(image.width() - 1, image.height() - 1);
    for (int y = 0; y <= end.y(); ++y) {
        for (int x = 0; x <= end.x(); ++x) {
            ASSERT_EQ(image.pixel(x, y), image.pixel(end.x() - x, y)) << x << ' ' << y;
            ASSERT_EQ(image.pixel(x, y), image.pixel(x, end.y() - y)) << x << ' ' << y;
        }
    }
}

TEST(CardShadowTest, TheColumnBetweenTheCornersIsTheEdgeOfTheCornersBesideIt)
{
    const QImage image = shadowImage(shape);
    for (int y = 0; y < image.height(); ++y) {
        EXPECT_NEAR(qAlpha(image.pixel(30, y)), qAlpha(image.pixel(29, y)), 1) << y;
    }
}

} // namespace
} // namespace tessly
