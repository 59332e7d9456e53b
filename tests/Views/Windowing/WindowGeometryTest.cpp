#include "WindowGeometry.h"

#include <gtest/gtest.h>

namespace tessly {
namespace {

constexpr QSize panelSize(660, 560);
constexpr QRect screen(0, 0, 1920, 1080);

QRect geometry(const QRect& anchor, const QRect& workArea = screen)
{
    const QRect panel = panelGeometry(anchor, panelSize, workArea);
    EXPECT_TRUE(workArea.contains(panel)) << "whole on the work area";
    EXPECT_FALSE(panel.intersects(anchor)) << "beside its anchor";
    return panel;
}

TEST(PanelGeometryTest, HangsBelowAnIconAtTheTop)
{
    const QRect anchor(900, 0, 24, 24);
    const QRect panel = geometry(anchor, screen.adjusted(0, 24, 0, 0));
    EXPECT_EQ(panel.size(), panelSize);
    EXPECT_NEAR(panel.center().x(), anchor.center().x(), 1);
    EXPECT_GT(panel.top(), anchor.bottom());
    EXPECT_LT(panel.top(), anchor.bottom() + 12);
}

TEST(PanelGeometryTest, StandsAboveAnIconAtTheBottom)
{
    const QRect anchor(900, 1056, 24, 24);
    const QRect panel = geometry(anchor, screen.adjusted(0, 0, 0, -24));
    EXPECT_LT(panel.bottom(), anchor.top());
    EXPECT_GT(panel.bottom(), anchor.top() - 12);
}

TEST(PanelGeometryTest, StaysInTheCorners)
{
    EXPECT_EQ(geometry(QRect(1900, 0, 20, 20)).right(), screen.right());
    EXPECT_EQ(geometry(QRect(0, 0, 20, 20)).left(), screen.left());
    EXPECT_EQ(geometry(QRect(1900, 1060, 20, 20)).right(), screen.right());
}

TEST(PanelGeometryTest, StandsBesideAnIconHalfWayUp)
{
    EXPECT_GT(geometry(QRect(0, 530, 24, 24)).left(), 23);
    EXPECT_LT(geometry(QRect(1896, 530, 24, 24)).right(), 1896);
}

TEST(PanelGeometryTest, KeepsToTheScreenOfItsAnchor)
{
    const QRect left(-1280, -200, 1280, 1024);
    EXPECT_TRUE(left.contains(geometry(QRect(-40, -200, 20, 20), left)));
}

TEST(PanelGeometryTest, AWholeScreenHasThePanelInItsMiddle)
{
    const QRect right(1920, 100, 1280, 1024);
    const QRect panel = panelGeometry(right, panelSize, right.adjusted(0, 24, 0, 0));
    EXPECT_LE((panel.center() - right.center()).manhattanLength(), 2);
}

TEST(PanelGeometryTest, AnAnchorBeyondTheWorkAreaIsMetAtItsEdge)
{
    const QRect panel = geometry(QRect(600, 1100, 10, 10));
    EXPECT_EQ(panel.bottom(), screen.bottom());
}

TEST(PanelGeometryTest, ShrinksOnlyWhereTheScreenIsSmaller)
{
    const QRect small(0, 0, 640, 480);
    EXPECT_EQ(panelGeometry(QRect(600, 460, 20, 20), panelSize, small), small);
    const QRect low(0, 0, 1366, 500);
    const QRect panel = panelGeometry(QRect(600, 0, 20, 20), panelSize, low);
    EXPECT_EQ(panel.size(), QSize(660, 500));
    EXPECT_TRUE(low.contains(panel));
}

TEST(MenuGeometryTest, HasACornerWhereItIsAskedFor)
{
    const QSize size(200, 150);
    EXPECT_EQ(menuGeometry({100, 50}, size, screen), QRect(QPoint(100, 50), size));
    const QRect left = menuGeometry({1900, 50}, size, screen);
    EXPECT_EQ(left.right(), 1899) << "to the left where there is no room";
    EXPECT_EQ(left.top(), 50);
    const QRect above = menuGeometry({100, 1070}, size, screen);
    EXPECT_EQ(above.bottom(), 1069) << "above where there is no room below";
    EXPECT_EQ(above.left(), 100);
}

TEST(MenuGeometryTest, IsWholeOnItsScreen)
{
    const QRect left(-1280, -200, 1280, 1024);
    for (const QPoint point :
         {left.topLeft(), left.topRight(), left.bottomLeft(), left.bottomRight(),
          QPoint(-2000, 4000)}) {
        EXPECT_TRUE(left.contains(menuGeometry(point, QSize(200, 150), left)));
        EXPECT_EQ(menuGeometry(point, QSize(2000, 2000), left), left);
    }
}

TEST(CardGeometryTest, IsToTheRightOfThePanelWhereThereIsRoom)
{
    const QRect area(100, 50, 1920, 1000);
    const QRect panel(700, 80, 660, 560);
    EXPECT_EQ(cardGeometry(panel, 240, 420, area), QRect(1368, 80, 420, 560));
}

TEST(CardGeometryTest, ElseToTheLeft)
{
    const QRect area(100, 50, 1920, 1000);
    const QRect panel(1360, 80, 660, 560);
    EXPECT_EQ(cardGeometry(panel, 240, 420, area), QRect(932, 80, 420, 560));
}

TEST(CardGeometryTest, IsNarrowerWhereThereIsLessRoom)
{
    const QRect area(0, 0, 1280, 720);
    EXPECT_EQ(cardGeometry(QRect(310, 60, 660, 560), 240, 420, area), QRect(978, 60, 294, 560));
    EXPECT_EQ(cardGeometry(QRect(360, 60, 660, 560), 240, 420, area), QRect(8, 60, 344, 560));
}

TEST(CardGeometryTest, IsWholeBesideThePanelOrNowhere)
{
    for (int width = 660; width < 2200; width += 20) {
        const QRect area(-300, 100, width, 700);
        for (int x = area.left(); x + 660 <= area.right() + 1; x += 10) {
            const QRect panel(x, 150, 660, 560);
            const int room =
                std::max(panel.left() - area.left(), area.right() - panel.right()) - 16;
            const auto card = cardGeometry(panel, 240, 420, area);
            ASSERT_EQ(card.has_value(), room >= 240) << width << ' ' << x;
            if (card) {
                EXPECT_TRUE(area.contains(*card));
                EXPECT_FALSE(card->intersects(panel));
                EXPECT_EQ(card->width(), std::min(room, 420));
            }
        }
    }
}

TEST(CentredGeometryTest, IsInTheMiddle)
{
    const QRect window = centredGeometry(QSize(610, 440), screen);
    EXPECT_EQ(window.size(), QSize(610, 440));
    EXPECT_NEAR(window.center().x(), screen.center().x(), 1);
    EXPECT_NEAR(window.center().y(), screen.center().y(), 1);
    const QRect small(100, 100, 320, 240);
    EXPECT_EQ(centredGeometry(QSize(610, 440), small), small);
}

TEST(RoundedRegionTest, CutsTheCornersAndNothingElse)
{
    const QRegion region = roundedRegion(QSize(100, 80), 12);
    EXPECT_EQ(region.boundingRect(), QRect(0, 0, 100, 80));
    EXPECT_FALSE(region.contains(QPoint(0, 0)));
    EXPECT_FALSE(region.contains(QPoint(99, 0)));
    EXPECT_FALSE(region.contains(QPoint(0, 79)));
    EXPECT_FALSE(region.contains(QPoint(99, 79)));
    EXPECT_TRUE(region.contains(QPoint(12, 0)));
    EXPECT_TRUE(region.contains(QPoint(0, 12)));
    EXPECT_TRUE(region.contains(QPoint(4, 4)));
    EXPECT_TRUE(region.contains(QRect(0, 12, 100, 56)));
}

TEST(RoundedRegionTest, IsTheSameInAllCorners)
{
    const QRegion region = roundedRegion(QSize(100, 80), 12);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 12; ++x) {
            const bool isIn = region.contains(QPoint(x, y));
            EXPECT_EQ(region.contains(QPoint(99 - x, y)), isIn) << x << ' ' << y;
            EXPECT_EQ(region.contains(QPoint(x, 79 - y)), isIn) << x << ' ' << y;
            EXPECT_EQ(region.contains(QPoint(99 - x, 79 - y)), isIn) << x << ' ' << y;
            EXPECT_EQ(region.contains(QPoint(y, x)), isIn) << x << ' ' << y;
        }
    }
}

TEST(RoundedRegionTest, WithoutARadiusIsTheRectangle)
{
    EXPECT_EQ(roundedRegion(QSize(10, 10), 0), QRegion(0, 0, 10, 10));
}

TEST(ShadowMarginsTest, ReachAllAroundAndFurtherDownWhereThereIsRoom)
{
    const QMargins margins = shadowMargins({500, 300, 660, 560}, 28, 8, screen);
    EXPECT_EQ(margins, QMargins(28, 20, 28, 36));
}

TEST(ShadowMarginsTest, EndAtTheEdgesOfTheRoomInWholeSteps)
{
    const QRect room(100, 50, 690, 600);
    EXPECT_EQ(shadowMargins({110, 57, 660, 560}, 28, 8, room), QMargins(8, 4, 20, 32));
    EXPECT_EQ(shadowMargins({100, 50, 690, 600}, 28, 8, room), QMargins());
}

TEST(ShadowMarginsTest, AreNoneBesideARoomThatTheCardIsNotIn)
{
    EXPECT_EQ(shadowMargins({-900, -700, 660, 560}, 28, 8, screen), QMargins(0, 0, 28, 36));
}

} // namespace
} // namespace tessly
