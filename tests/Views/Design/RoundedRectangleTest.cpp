#include "RoundedRectangle.h"

#include <gtest/gtest.h>

#include <QQuickView>

#include <memory>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

const QColor blue(0x20, 0x60, 0xC0);
const QColor grey(0x80, 0x80, 0x80);

TEST(RoundedRectangle, IsFullInsideAndTransparentBeyondItsCorners)
{
    const QImage image = roundedImage({.size = {75, 31}, .radius = 9, .color = blue});
    EXPECT_EQ(image.size(), QSize(75, 31));
    for (const QPoint& corner : {QPoint(0, 0), QPoint(74, 0), QPoint(0, 30), QPoint(74, 30)}) {
        EXPECT_EQ(image.pixelColor(corner).alpha(), 0);
    }
    // No seam: whole rows and columns are of one colour between the corners.
    for (int x = 9; x < 75 - 9; ++x) {
        for (int y = 0; y < 31; ++y) {
            ASSERT_EQ(image.pixelColor(x, y), blue) << x << ',' << y;
        }
    }
    for (int y = 9; y < 31 - 9; ++y) {
        for (int x = 0; x < 75; ++x) {
            ASSERT_EQ(image.pixelColor(x, y), blue) << x << ',' << y;
        }
    }
}

TEST(RoundedRectangle, HasSmoothCornersThatAreAllAlike)
{
    const QImage image = roundedImage({.size = {40, 40}, .radius = 11, .color = blue});
    // As nearly as they are painted: from one end of a line to the other it is rounded once.
    constexpr int visible = 24;
    int partial = 0;
    for (int x = 0; x < 11; ++x) {
        for (int y = 0; y < 11; ++y) {
            const int alpha = image.pixelColor(x, y).alpha();
            partial += alpha > 0 && alpha < 255 ? 1 : 0;
            for (const QPoint& alike :
                 {QPoint(39 - x, y), QPoint(x, 39 - y), QPoint(39 - x, 39 - y)}) {
                EXPECT_NEAR(image.pixelColor(alike).alpha(), alpha, visible) << x << ',' << y;
            }
        }
    }
    EXPECT_GT(partial, 5);
}

TEST(RoundedRectangle, ACapsuleIsNoRounderThanItIsHigh)
{
    EXPECT_EQ(
        roundedImage({.size = {60, 21}, .radius = 100, .color = blue}),
        roundedImage({.size = {60, 21}, .radius = 10.5, .color = blue}));
}

TEST(RoundedRectangle, TheLineRunsInsideTheEdge)
{
    const QImage image = roundedImage(
        {.size = {30, 30}, .radius = 6, .color = blue, .lineWidth = 2, .lineColor = grey});
    for (const int edge : {0, 1, 28, 29}) {
        EXPECT_EQ(image.pixelColor(15, edge), grey);
        EXPECT_EQ(image.pixelColor(edge, 15), grey);
    }
    EXPECT_EQ(image.pixelColor(15, 2), blue);
    EXPECT_EQ(image.pixelColor(2, 15), blue);
}

/// As much of a window as is needed to draw one.
std::unique_ptr<QQuickView> windowWith(RoundedRectangle& rectangle)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    auto window = std::make_unique<QQuickView>();
    window->resize(100, 60);
    window->setColor(Qt::white);
    rectangle.setParentItem(window->contentItem());
    window->show();
    return window;
}

TEST(RoundedRectangle, FollowsItsPropertiesAndIsNothingWithoutAny)
{
    RoundedRectangle rectangle;
    const auto window = windowWith(rectangle);
    const auto colorAt = [&](int x, int y) {
        const QImage image = window->grabWindow();
        const qreal scale = image.devicePixelRatio();
        return image.pixelColor(qRound(x * scale), qRound(y * scale));
    };
    rectangle.setSize({50, 30});
    rectangle.setPosition({10, 10});
    rectangle.setRadius(10);
    rectangle.setColor(blue);
    EXPECT_EQ(colorAt(35, 25), blue);
    EXPECT_EQ(colorAt(10, 10), QColor(Qt::white));
    rectangle.setColor(grey);
    EXPECT_EQ(colorAt(35, 25), grey);
    rectangle.setRadius(0);
    EXPECT_EQ(colorAt(10, 10), grey);
    rectangle.border()->setProperty("width", 3);
    rectangle.border()->setProperty("color", blue);
    EXPECT_EQ(colorAt(35, 11), blue);
    rectangle.setWidth(80);
    EXPECT_EQ(colorAt(80, 25), grey);
    rectangle.border()->setProperty("width", 0);
    rectangle.setColor(Qt::transparent);
    EXPECT_EQ(colorAt(35, 25), QColor(Qt::white));
    rectangle.setParentItem(nullptr);
}

} // namespace
} // namespace tessly
