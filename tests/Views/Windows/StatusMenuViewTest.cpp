#include "QtPrinting.h"
#include "QuickStatusMenu.h"
#include "QuickStatusToolTip.h"
#include "StatusMenu.h"
#include "TestSupport.h"
#include "ViewDriver.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class StatusMenuViewTest : public testing::Test
{
protected:
    void show(QPoint position = {300, 100}) { show(makeStatusMenu(false), position); }
    void show(std::vector<StatusMenuItem> items, QPoint position)
    {
        m_menu.show(std::move(items), position, [this](const QString& action) {
            m_chosen.append(action);
            EXPECT_FALSE(window().isVisible()) << "told when the menu is gone";
        });
        ASSERT_TRUE(waitUntil([this] { return window().isExposed(); }));
        window().grabWindow();
    }
    [[nodiscard]] ViewWindow& window() { return m_menu.window(); }
    [[nodiscard]] ViewDriver driver() { return ViewDriver(window()); }
    /// Lets the choice arrive.
    [[nodiscard]] QStringList chosen()
    {
        QCoreApplication::processEvents();
        return m_chosen;
    }
    /// The action of the line that is lit.
    [[nodiscard]] QString current()
    {
        for (const StatusMenuItem& item : makeStatusMenu(false)) {
            const QString name = u"menu-"_s + item.action;
            if (!item.isSeparator && driver().item(name).property("isCurrent").toBool()) {
                return item.action;
            }
        }
        return {};
    }

    QStringList m_chosen;
    QuickStatusMenu m_menu;
};

TEST_F(StatusMenuViewTest, OpensWhereItIsAskedFor)
{
    show({300, 100});
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(window().position(), QPoint(300, 100));
    EXPECT_EQ(window().title(), u"Tessly Menu"_s);
}

TEST_F(StatusMenuViewTest, IsLargeEnoughForItsLines)
{
    show();
    const QQuickItem& last = driver().item(u"menu-quitApplication"_s);
    const QPointF corner = last.mapToScene(QPointF(last.width(), last.height()));
    EXPECT_LE(corner.y(), window().height());
    EXPECT_GT(corner.y(), window().height() - 10);
    EXPECT_LE(corner.x(), window().width());
    for (const StatusMenuItem& item : makeStatusMenu(false)) {
        if (!item.isSeparator) {
            const QQuickItem& line = driver().item(u"menu-"_s + item.action);
            EXPECT_GE(line.width(), line.implicitWidth()) << item.title.toStdString();
        }
    }
}

TEST_F(StatusMenuViewTest, StaysWholeOnItsScreen)
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    for (const QPoint corner :
         {screen.topLeft(), screen.topRight(), screen.bottomLeft(), screen.bottomRight()}) {
        show(corner);
        EXPECT_TRUE(screen.contains(window().geometry())) << corner.x() << ' ' << corner.y();
    }
}

TEST_F(StatusMenuViewTest, AClickChooses)
{
    show();
    driver().click(u"menu-openSettings"_s);
    EXPECT_EQ(chosen(), QStringList{u"openSettings"_s});
    EXPECT_FALSE(window().isVisible());
}

TEST_F(StatusMenuViewTest, ArrowsMoveRoundAndPastSeparators)
{
    show();
    EXPECT_EQ(current(), QString());
    QStringList visited;
    for (int i = 0; i < 6; ++i) {
        driver().press(Qt::Key_Down);
        visited.append(current());
    }
    EXPECT_EQ(
        visited, (QStringList{
                     u"openQuickPaste"_s, u"toggleMonitoring"_s, u"clearHistory"_s,
                     u"openSettings"_s, u"quitApplication"_s, u"openQuickPaste"_s}));
    driver().press(Qt::Key_Up);
    EXPECT_EQ(current(), u"quitApplication"_s);
    driver().press(Qt::Key_Home);
    EXPECT_EQ(current(), u"openQuickPaste"_s);
    driver().press(Qt::Key_End);
    EXPECT_EQ(current(), u"quitApplication"_s);
    driver().press(Qt::Key_Return);
    EXPECT_EQ(chosen(), QStringList{u"quitApplication"_s});
}

TEST_F(StatusMenuViewTest, ReturnWithoutALineChoosesNothing)
{
    show();
    driver().press(Qt::Key_Return);
    EXPECT_EQ(chosen(), QStringList());
    EXPECT_TRUE(window().isVisible());
}

TEST_F(StatusMenuViewTest, EscapeEndsItWithoutAChoice)
{
    show();
    driver().press(Qt::Key_Down);
    driver().press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(chosen(), QStringList());
}

TEST_F(StatusMenuViewTest, TheLinesKeysChooseThem)
{
    show();
    driver().press(Qt::Key_Q);
    EXPECT_TRUE(window().isVisible()) << "only with Ctrl";
    driver().press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(chosen(), QStringList{u"quitApplication"_s});
    show();
    driver().press(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(chosen(), (QStringList{u"quitApplication"_s, u"openSettings"_s}));
}

TEST_F(StatusMenuViewTest, APressElsewhereEndsIt)
{
    show();
    QTest::mousePress(&window(), Qt::LeftButton, {}, QPoint(-20, -20));
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(chosen(), QStringList());
}

TEST_F(StatusMenuViewTest, ItCannotBeResized)
{
    show();
    EXPECT_EQ(window().minimumSize(), window().size());
    EXPECT_EQ(window().maximumSize(), window().size());
}

TEST_F(StatusMenuViewTest, AnotherWindowWithTheFocusEndsIt)
{
    show();
    ASSERT_TRUE(waitUntil([this] { return window().isActive(); }));
    driver().press(Qt::Key_Down);
    QWindow other;
    other.resize(100, 100);
    other.show();
    other.requestActivate();
    EXPECT_TRUE(waitUntil([this] { return !window().isVisible(); }));
    EXPECT_EQ(chosen(), QStringList());
}

TEST_F(StatusMenuViewTest, ThePointerLightsLines)
{
    show();
    driver().point(u"menu-clearHistory"_s);
    EXPECT_EQ(current(), u"clearHistory"_s);
    driver().press(Qt::Key_Down);
    EXPECT_EQ(current(), u"openSettings"_s) << "keys go on from there";
    driver().rest(u"menu-clearHistory"_s);
    EXPECT_EQ(current(), u"openSettings"_s) << "the pointer has not moved";
}

TEST_F(StatusMenuViewTest, APointerUnderWhichItOpensLeavesItToTheKeys)
{
    show();
    driver().point(u"menu-clearHistory"_s);
    show();
    driver().press(Qt::Key_Down);
    EXPECT_EQ(current(), u"openQuickPaste"_s);
    driver().rest(u"menu-openSettings"_s);
    EXPECT_EQ(current(), u"openQuickPaste"_s);
    driver().rest(u"menu-openSettings"_s);
    EXPECT_EQ(current(), u"openQuickPaste"_s);
}

TEST_F(StatusMenuViewTest, ALineThatIsDisabledCannotBeChosen)
{
    auto items = makeStatusMenu(false);
    items[0].isEnabled = false;
    show(items, {300, 100});
    driver().click(u"menu-openQuickPaste"_s);
    EXPECT_EQ(chosen(), QStringList());
    EXPECT_TRUE(window().isVisible());
    driver().press(Qt::Key_Down);
    EXPECT_EQ(current(), u"toggleMonitoring"_s);
}

TEST_F(StatusMenuViewTest, ANewMenuTakesThePlaceOfTheOld)
{
    show();
    driver().press(Qt::Key_Down);
    show(makeStatusMenu(true), {400, 120});
    EXPECT_EQ(current(), QString());
    EXPECT_EQ(window().position(), QPoint(400, 120));
    EXPECT_EQ(driver().text(u"menu-toggleMonitoring"_s, "title"), u"Resume Clipboard Recording"_s);
}

TEST_F(StatusMenuViewTest, ClosingItChoosesNothing)
{
    show();
    m_menu.close();
    m_menu.close();
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(chosen(), QStringList());
}

TEST_F(StatusMenuViewTest, WithoutItKeysGoWhereTheyBelong)
{
    show();
    m_menu.close();
    show();
    m_menu.close();
    QQuickWindow other;
    other.show();
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QCoreApplication::sendEvent(&other, &event);
    EXPECT_EQ(current(), QString());
}

TEST_F(StatusMenuViewTest, IsReadInItsOrder)
{
    show();
    const QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"PopupMenu|Tessly"_s)),
        (QStringList{
            u"PopupMenu|Tessly"_s, u"MenuItem|Open Quick Paste"_s,
            u"MenuItem|Pause Clipboard Recording"_s, u"MenuItem|Clear Unpinned History"_s,
            u"MenuItem|Settings…"_s, u"MenuItem|Quit Tessly"_s}));
}

TEST(StatusToolTipViewTest, StandsBesideTheIconAndAsLargeAsItsText)
{
    QuickStatusToolTip toolTip;
    const QRect icon(400, 0, 24, 24);
    toolTip.show(u"Tessly — Open Quick Paste"_s, icon);
    EXPECT_TRUE(toolTip.window().isVisible());
    EXPECT_EQ(toolTip.window().title(), u"Tessly Tool Tip"_s);
    const QRect geometry = toolTip.window().geometry();
    EXPECT_FALSE(geometry.intersects(icon));
    EXPECT_TRUE(QGuiApplication::primaryScreen()->geometry().contains(geometry));
    const QQuickItem& text = ViewDriver(toolTip.window()).item(u"status-tool-tip"_s);
    EXPECT_GE(geometry.width(), text.implicitWidth());
    toolTip.show(u"Short"_s, icon);
    EXPECT_LT(toolTip.window().width(), geometry.width());
    toolTip.hide();
    EXPECT_FALSE(toolTip.window().isVisible());
}

} // namespace
} // namespace tessly::test
