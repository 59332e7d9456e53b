#include "PanelViewTest.h"

namespace tessly::test {
namespace {

using PanelMenuTest = PanelViewTest;

// The menu of a row

TEST_F(PanelMenuTest, TheOtherButtonOpensTheMenuOfARow)
{
    save("older");
    save("newer");
    show();
    EXPECT_FALSE(menuIsOpen());
    click(u"row-1"_s, Qt::RightButton);
    ASSERT_TRUE(menuIsOpen());
    EXPECT_EQ(text(u"menu-copy"_s, "title"), u"Copy"_s);
    EXPECT_EQ(text(u"menu-copy-plain"_s, "title"), u"Copy as Plain Text"_s);
    EXPECT_EQ(text(u"menu-pin"_s, "title"), u"Pin"_s);
    EXPECT_EQ(text(u"menu-delete"_s, "title"), u"Delete"_s);
    EXPECT_TRUE(item(u"menu-delete"_s).property("isDestructive").toBool());
    qreal above = 0;
    for (const QString& name :
         {u"menu-copy"_s, u"menu-copy-plain"_s, u"menu-pin"_s, u"menu-delete"_s}) {
        EXPECT_GT(centerOf(name).y(), above);
        above = centerOf(name).y();
    }
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(PanelMenuTest, TheMenuCopies)
{
    save(ClipPayload({.plainText = "older", .rtf = "{rtf}"}));
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-copy"_s);
    EXPECT_FALSE(window().isVisible());
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-copy-plain"_s);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().rtf, "{rtf}");
    EXPECT_EQ(m_pasteboard.writes()[1].front().plainText, "older");
    EXPECT_EQ(m_pasteboard.writes()[1].front().rtf, std::nullopt);
}

TEST_F(PanelMenuTest, TheMenuPinsAndUnpins)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-pin"_s);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_THAT(texts(), ElementsAre("older", "newer"));
    click(u"row-0"_s, Qt::RightButton);
    EXPECT_EQ(text(u"menu-pin"_s, "title"), u"Unpin"_s);
    click(u"menu-pin"_s);
    EXPECT_THAT(texts(), ElementsAre("newer", "older"));
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PanelMenuTest, TheMenuDeletes)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-delete"_s);
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(PanelMenuTest, TheMenuActsOnItsClipThoughTheRowsHaveMoved)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    save("newest");
    m_model->reload(AppModel::Debounce::no);
    run();
    click(u"menu-delete"_s);
    EXPECT_THAT(texts(), ElementsAre("newest", "newer"));
}

TEST_F(PanelMenuTest, TheMenuTakesTheKeysWhileItIsOpen)
{
    save("older");
    save("newer");
    show();
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(isSelected(0)) << "the rows do not hear of it";
    press(Qt::Key_Up);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(texts(), ElementsAre("older"));
    EXPECT_TRUE(window().isVisible());
    type(u"x"_s);
    EXPECT_EQ(searchText(), u"x"_s) << "the keyboard is back";
}

TEST_F(PanelMenuTest, APointerThatRestsBesideTheMenusCommandsLeavesTheMenuToTheKeys)
{
    save("older");
    save("newer");
    show();
    point(u"row-0"_s);
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Up);
    rest(u"row-0"_s);
    EXPECT_TRUE(isCurrent(u"menu-delete"_s));
    press(Qt::Key_Return);
    EXPECT_THAT(texts(), ElementsAre("older"));
}

TEST_F(PanelMenuTest, APointerThatRestsOnACommandOfTheMenuLeavesTheMenuToTheKeys)
{
    save("older");
    save("newer");
    show();
    click(u"row-0"_s, Qt::RightButton);
    point(u"menu-copy"_s);
    EXPECT_TRUE(isCurrent(u"menu-copy"_s));
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    rest(u"menu-copy"_s);
    EXPECT_TRUE(isCurrent(u"menu-pin"_s));
    press(Qt::Key_Return);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(PanelMenuTest, ThePointerLightsTheCommandOfTheMenuThatItIsOn)
{
    saveMany(3);
    show();
    click(u"row-0"_s, Qt::RightButton);
    for (const QString& name :
         {u"menu-copy"_s, u"menu-copy-plain"_s, u"menu-pin"_s, u"menu-delete"_s}) {
        point(name);
        EXPECT_TRUE(isCurrent(name)) << name.toStdString();
    }
    EXPECT_TRUE(isSelected(0)) << "nothing behind the menu hears of it";
    point(u"row-0"_s);
    EXPECT_FALSE(isCurrent(u"menu-delete"_s)) << "beside the menu";
    press(Qt::Key_Return);
    EXPECT_TRUE(menuIsOpen());
}

TEST_F(PanelMenuTest, EscapeClosesTheMenuFirst)
{
    save("one");
    show();
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Escape);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_TRUE(window().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PanelMenuTest, APressBesideTheMenuOnlyClosesIt)
{
    save("one");
    save("two");
    show();
    click(u"row-0"_s, Qt::RightButton);
    click(u"filter-link"_s);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_EQ(m_model->selectedKind(), std::nullopt);
    EXPECT_TRUE(searchHasFocus());
}

TEST_F(PanelMenuTest, TheMenuIsGoneAtTheNextOpening)
{
    save("one");
    show();
    click(u"row-0"_s, Qt::RightButton);
    m_controller.close();
    show();
    EXPECT_FALSE(menuIsOpen());
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
}

TEST_F(PanelMenuTest, TheMenuStaysInsideThePanel)
{
    saveMany(8);
    show();
    QTest::mouseClick(&window(), Qt::RightButton, {}, QPoint(645, 500));
    run();
    ASSERT_TRUE(menuIsOpen());
    const QQuickItem& menu = item(u"row-menu"_s);
    const QRectF area = menu.mapRectToScene(QRectF(0, 0, menu.width(), menu.height()));
    EXPECT_TRUE(QRectF(0, 0, 660, 560).contains(area));
}

} // namespace
} // namespace tessly::test
