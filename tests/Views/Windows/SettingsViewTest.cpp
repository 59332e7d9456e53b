#include "SettingsViewTest.h"

namespace tessly::test {
namespace {

// The window

TEST_F(SettingsViewTest, HasTheSizeOfTheDesignInTheMiddleOfTheScreen)
{
    show();
    EXPECT_EQ(window().size(), QSize(610, 440));
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
    EXPECT_EQ(window().title(), u"Tessly Settings"_s);
    EXPECT_FALSE(window().icon().isNull());
    const QRect screen = window().screen()->availableGeometry();
    EXPECT_NEAR(window().geometry().center().x(), screen.center().x(), 1);
    EXPECT_NEAR(window().geometry().center().y(), screen.center().y(), 1);
}

TEST_F(SettingsViewTest, TellsWhenItIsClosed)
{
    int closings = 0;
    m_view->setEvents({.didClose = [&closings] { ++closings; }});
    show();
    EXPECT_TRUE(m_view->isShown());
    window().close();
    run();
    EXPECT_FALSE(m_view->isShown());
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(closings, 1);
    show();
    m_view->close();
    m_view->close();
    EXPECT_EQ(closings, 2) << "once each time";
}

TEST_F(SettingsViewTest, EscapeCloses)
{
    show();
    press(Qt::Key_Escape);
    EXPECT_FALSE(m_view->isShown());
    show();
    tabTo(u"capture-images"_s);
    press(Qt::Key_Escape);
    EXPECT_FALSE(m_view->isShown()) << "whatever has the keyboard";
}

TEST_F(SettingsViewTest, CtrlWCloses)
{
    show();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(m_view->isShown());
}

// Tabs

TEST_F(SettingsViewTest, ATabIsSelectedByAClick)
{
    show();
    EXPECT_NE(find(u"launch-at-login"_s), nullptr);
    click(u"tab-about"_s);
    EXPECT_EQ(m_shown.selectedTab(), 3);
    EXPECT_EQ(find(u"launch-at-login"_s), nullptr);
    EXPECT_EQ(text(u"version"_s), u"Version 1.2.3"_s);
}

TEST_F(SettingsViewTest, ArrowsMoveFromTabToTab)
{
    show();
    ASSERT_TRUE(tabTo(u"tab-general"_s));
    press(Qt::Key_Right);
    EXPECT_EQ(m_shown.selectedTab(), 1);
    EXPECT_EQ(focused(), u"tab-privacy"_s);
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(m_shown.selectedTab(), 3) << "round and round";
    EXPECT_EQ(focused(), u"tab-about"_s);
    press(Qt::Key_Right);
    EXPECT_EQ(m_shown.selectedTab(), 0);
}

TEST_F(SettingsViewTest, CtrlPageKeysMoveFromTabToTab)
{
    show();
    ASSERT_TRUE(tabTo(u"capture-files"_s));
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(m_shown.selectedTab(), 1);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(m_shown.selectedTab(), 0);
}

TEST_F(SettingsViewTest, TabComesByEverything)
{
    show();
    EXPECT_EQ(
        focusChain(), (QStringList{
                          u"tab-general"_s, u"launch-at-login"_s, u"capture-images"_s,
                          u"capture-files"_s, u"max-history"_s, u"max-item-size"_s,
                          u"move-used-items"_s, u"direct-paste-shortcuts"_s}));
    m_shown.setSelectedTab(1);
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    run();
    ASSERT_TRUE(tabTo(u"tab-privacy"_s));
    EXPECT_EQ(
        focusChain(),
        (QStringList{
            u"allow-automatic-paste"_s, u"ignored-bundle-ids-text"_s, u"clear-unpinned-history"_s,
            u"clear-everything"_s, u"clear-system-clipboard"_s, u"tab-privacy"_s}));
    ASSERT_TRUE(tabTo(u"tab-privacy"_s));
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), u"clear-system-clipboard"_s) << "and back";
    press(Qt::Key_Tab, Qt::ShiftModifier);
    press(Qt::Key_Tab, Qt::ShiftModifier);
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), u"ignored-bundle-ids-text"_s);
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), u"allow-automatic-paste"_s);
}

TEST_F(SettingsViewTest, WhatTheKeyboardIsOnShowsToThoseWhoUseIt)
{
    show();
    click(u"capture-images"_s);
    EXPECT_EQ(focused(), u"capture-images"_s);
    EXPECT_EQ(find(u"focus-ring"_s), nullptr);
    press(Qt::Key_Tab);
    ASSERT_NE(find(u"focus-ring"_s), nullptr);
    EXPECT_EQ(find(u"focus-ring"_s)->parentItem(), &item(u"capture-files"_s));
    click(u"capture-files"_s);
    EXPECT_EQ(find(u"focus-ring"_s), nullptr);
}

TEST_F(SettingsViewTest, WhatGetsTheKeyboardComesIntoSight)
{
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-everything"_s));
    const QQuickItem& button = item(u"clear-everything"_s);
    const qreal bottom = button.mapToScene(QPointF(0, button.height())).y();
    EXPECT_LE(bottom, window().height());
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    const QQuickItem& page = item(u"page"_s);
    EXPECT_GE(item(u"ignored-bundle-ids"_s).mapToItem(&page, QPointF()).y(), 0);
}

// General

TEST_F(SettingsViewTest, SwitchesShowAndSetTheirSettings)
{
    show();
    const QList<std::pair<QString, std::function<bool()>>> switches = {
        {u"launch-at-login"_s, [this] { return m_launchAtLogin.isEnabled(); }},
        {u"capture-images"_s, [this] { return m_settings.captureImages(); }},
        {u"capture-files"_s, [this] { return m_settings.captureFiles(); }},
        {u"move-used-items"_s, [this] { return m_settings.moveUsedItemsToTop(); }},
        {u"direct-paste-shortcuts"_s, [this] { return m_settings.directPasteShortcuts(); }},
    };
    for (const auto& [name, value] : switches) {
        const bool before = value();
        EXPECT_EQ(isOn(name), before) << name.toStdString();
        click(name);
        EXPECT_EQ(value(), !before) << name.toStdString();
        EXPECT_EQ(isOn(name), !before) << name.toStdString();
        EXPECT_EQ(focused(), name);
        press(Qt::Key_Space);
        EXPECT_EQ(value(), before) << name.toStdString();
        EXPECT_EQ(isOn(name), before) << name.toStdString();
    }
}

TEST_F(SettingsViewTest, ALoginItemThatFailsLeavesTheSwitchAsItIs)
{
    m_loginItem.failRegistering();
    show();
    click(u"launch-at-login"_s);
    EXPECT_FALSE(isOn(u"launch-at-login"_s));
    EXPECT_TRUE(waitUntil([this] { return find(u"banner"_s) != nullptr; })) << "it is told here";
    EXPECT_EQ(text(u"banner-message"_s), message());
    m_loginItem.failRegistering(false);
    click(u"launch-at-login"_s);
    EXPECT_TRUE(isOn(u"launch-at-login"_s)) << "and can be tried again";
}

TEST_F(SettingsViewTest, TheHistorysStepperMovesByFifty)
{
    m_settings.setMaxHistory(10);
    show();
    click(u"max-history-increase"_s);
    EXPECT_EQ(m_settings.maxHistory(), 60);
    click(u"max-history-increase"_s);
    EXPECT_EQ(m_settings.maxHistory(), 110);
    click(u"max-history-decrease"_s);
    click(u"max-history-decrease"_s);
    EXPECT_EQ(m_settings.maxHistory(), 10);
    click(u"max-history-decrease"_s);
    EXPECT_EQ(m_settings.maxHistory(), 10) << "never below";
    EXPECT_EQ(item(u"max-history"_s).property("label").toString(), m_shown.maxHistoryLabel());
}

TEST_F(SettingsViewTest, TheHistorysStepperStopsAtItsTop)
{
    m_settings.setMaxHistory(9'960);
    show();
    click(u"max-history-increase"_s);
    EXPECT_EQ(m_settings.maxHistory(), 10'000);
    click(u"max-history-increase"_s);
    EXPECT_EQ(m_settings.maxHistory(), 10'000);
    click(u"max-history-decrease"_s);
    EXPECT_EQ(m_settings.maxHistory(), 9'950);
}

TEST_F(SettingsViewTest, TheSizesStepperMovesByOne)
{
    m_settings.setMaxItemSizeMB(2);
    show();
    click(u"max-item-size-decrease"_s);
    click(u"max-item-size-decrease"_s);
    EXPECT_EQ(m_settings.maxItemSizeMB(), 1);
    m_settings.setMaxItemSizeMB(249);
    click(u"max-item-size-increase"_s);
    click(u"max-item-size-increase"_s);
    EXPECT_EQ(m_settings.maxItemSizeMB(), 250);
}

TEST_F(SettingsViewTest, AClickBetweenASteppersButtonsOnlyBringsTheKeyboard)
{
    m_settings.setMaxHistory(500);
    show();
    click(u"max-history"_s);
    EXPECT_EQ(m_settings.maxHistory(), 500);
    EXPECT_EQ(focused(), u"max-history"_s);
}

TEST_F(SettingsViewTest, KeysMoveASteppersNumber)
{
    m_settings.setMaxHistory(500);
    show();
    ASSERT_TRUE(tabTo(u"max-history"_s));
    press(Qt::Key_Up);
    EXPECT_EQ(m_settings.maxHistory(), 550);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(m_settings.maxHistory(), 450);
    press(Qt::Key_Right);
    EXPECT_EQ(m_settings.maxHistory(), 500);
    press(Qt::Key_Left);
    EXPECT_EQ(m_settings.maxHistory(), 450);
    press(Qt::Key_PageUp);
    EXPECT_EQ(m_settings.maxHistory(), 950);
    press(Qt::Key_PageDown);
    press(Qt::Key_PageDown);
    EXPECT_EQ(m_settings.maxHistory(), 10);
}

TEST_F(SettingsViewTest, AStepperThatIsHeldGoesOn)
{
    m_settings.setMaxItemSizeMB(10);
    show();
    const QPoint place = driver().centerOf(u"max-item-size-increase"_s);
    QTest::mousePress(&window(), Qt::LeftButton, {}, place);
    EXPECT_TRUE(waitUntil([this] { return m_settings.maxItemSizeMB() > 12; }));
    QTest::mouseRelease(&window(), Qt::LeftButton, {}, place);
    run();
}

TEST_F(SettingsViewTest, WhatChangesElsewhereShows)
{
    show();
    m_settings.setCaptureImages(false);
    m_settings.setMaxHistory(30);
    run();
    EXPECT_FALSE(isOn(u"capture-images"_s));
    EXPECT_EQ(item(u"max-history"_s).property("value").toInt(), 30);
    EXPECT_TRUE(
        driver().accessibleObjects().contains(u"StaticText|Keep up to 30 unpinned items"_s));
}

} // namespace
} // namespace tessly::test
