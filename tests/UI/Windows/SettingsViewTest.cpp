#include "QtPrinting.h"
#include "SettingsModel.h"
#include "Tokens.h"
#include "WindowFixture.h"
#include "WindowViews.h"

#include <gmock/gmock.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

class SettingsViewTest : public WindowFixture
{
protected:
    SettingsViewTest() { m_view = makeSettingsView(m_shown); }
    ~SettingsViewTest() override { m_view.reset(); }

    void showTab(int tab)
    {
        m_shown.setSelectedTab(tab);
        show();
    }
    [[nodiscard]] bool isOn(const QString& name) { return item(name).property("isOn").toBool(); }
    [[nodiscard]] QColor color(const QString& name)
    {
        return item(name).property("color").value<QColor>();
    }
    [[nodiscard]] static TokenColors colors() { return tokenColors(QGuiApplication::palette()); }
    [[nodiscard]] bool asks() { return find(u"clear-confirmation"_s) != nullptr; }
    /// Everything that Tab comes by, in order, beginning with the tab strip.
    [[nodiscard]] QStringList focusChain()
    {
        QStringList chain;
        for (int i = 0; i < 30; ++i) {
            press(Qt::Key_Tab);
            if (chain.contains(focused())) {
                break;
            }
            chain.append(focused());
        }
        return chain;
    }

    SettingsModel m_shown{{*m_model, m_pasteboard, u"1.2.3"_s}};
};

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

// Privacy

TEST_F(SettingsViewTest, AccessIsGreenWhereAllIsWell)
{
    showTab(1);
    EXPECT_EQ(text(u"clipboard-access"_s), u"Available"_s);
    EXPECT_EQ(color(u"clipboard-access"_s), colors().good);
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Granted"_s);
    EXPECT_EQ(color(u"automatic-paste-access"_s), colors().good);
    EXPECT_EQ(find(u"allow-automatic-paste"_s), nullptr);
}

TEST_F(SettingsViewTest, AccessIsOrangeWhereSomethingIsToBeDone)
{
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    showTab(1);
    EXPECT_EQ(text(u"clipboard-access"_s), u"Denied"_s);
    EXPECT_EQ(color(u"clipboard-access"_s), colors().attention);
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Required"_s);
    EXPECT_EQ(color(u"automatic-paste-access"_s), colors().attention);
    click(u"allow-automatic-paste"_s);
    EXPECT_THAT(m_workspace.openedURLs(), SizeIs(1));
    m_keys.setAllowed(true);
    m_model->refreshAutomaticPasteAccess(false);
    run();
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Granted"_s);
    EXPECT_EQ(find(u"allow-automatic-paste"_s), nullptr);
}

TEST_F(SettingsViewTest, ExcludedApplicationsAreEditedLineByLine)
{
    m_settings.setIgnoredBundleIDsText(u"org.one"_s);
    showTab(1);
    EXPECT_GE(item(u"ignored-bundle-ids"_s).height(), 120);
    EXPECT_EQ(text(u"ignored-bundle-ids-text"_s), u"org.one"_s);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Return);
    driver().type(u"org.two"_s);
    run();
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s);
    m_settings.setIgnoredBundleIDsText(u"org.three"_s);
    run();
    EXPECT_EQ(text(u"ignored-bundle-ids-text"_s), u"org.three"_s) << "and follows the setting";
}

TEST_F(SettingsViewTest, TheEditorReachesTheClipboardThroughOurPasteboardOnly)
{
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s);
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s, QClipboard::Selection);
    m_settings.setIgnoredBundleIDsText({});
    showTab(1);
    EXPECT_TRUE(QGuiApplication::clipboard()->signalsBlocked());
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    m_pasteboard.copyText("org.one\r\norg.two");
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Insert, Qt::ShiftModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s) << "in place of it all";
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), QString());
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().plainText, "org.one\norg.two");
    EXPECT_EQ(m_pasteboard.writes()[1].front().plainText, "org.one\norg.two");
    click(u"ignored-bundle-ids-text"_s, Qt::MiddleButton);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), QString()) << "the middle button does nothing";
}

TEST_F(SettingsViewTest, CuttingKeepsWhatCannotBeCopied)
{
    m_settings.setIgnoredBundleIDsText(u"org.one"_s);
    showTab(1);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    m_pasteboard.refuseWrites();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one"_s);
}

TEST_F(SettingsViewTest, ManyExcludedApplicationsScroll)
{
    QStringList lines;
    for (int i = 0; i < 40; ++i) {
        lines.append(u"org.example.application%1"_s.arg(i));
    }
    m_settings.setIgnoredBundleIDsText(lines.join(u'\n'));
    showTab(1);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    press(Qt::Key_End, Qt::ControlModifier);
    const QQuickItem& area = item(u"ignored-bundle-ids-text"_s);
    const QQuickItem& editor = item(u"ignored-bundle-ids"_s);
    const QRectF cursor = area.property("cursorRectangle").toRectF();
    const QPointF bottom = area.mapToItem(&editor, cursor.bottomLeft());
    EXPECT_LE(bottom.y(), editor.height()) << "the cursor stays in sight";
    EXPECT_GT(bottom.y(), 0);
}

TEST_F(SettingsViewTest, TellsWhatIsStored)
{
    save("one");
    save("two");
    m_shown.reload();
    showTab(1);
    EXPECT_EQ(text(u"history-count"_s), u"2 items"_s);
    EXPECT_EQ(text(u"pinned-count"_s), u"0 items"_s);
    EXPECT_EQ(text(u"database-size"_s), m_shown.databaseSize());
}

TEST_F(SettingsViewTest, CancellingTheQuestionClearsNothing)
{
    save("one");
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-everything"_s));
    press(Qt::Key_Space);
    ASSERT_TRUE(asks());
    EXPECT_EQ(text(u"alert-title"_s), u"Clear all clipboard history?"_s);
    click(u"alert-cancel"_s);
    EXPECT_FALSE(asks());
    EXPECT_EQ(focused(), u"clear-everything"_s) << "the keyboard is where it was";
    press(Qt::Key_Return);
    ASSERT_TRUE(asks());
    press(Qt::Key_Escape);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(m_view->isShown()) << "Escape ended the question only";
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    EXPECT_FALSE(asks()) << "Return does not clear unless moved to";
    run();
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(SettingsViewTest, ConfirmingClearsWhatWasAskedFor)
{
    const Clip pinned = save("pinned");
    save("other");
    m_model->togglePin(&pinned);
    run();
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-unpinned-history"_s));
    press(Qt::Key_Space);
    EXPECT_EQ(text(u"alert-title"_s), u"Clear unpinned clipboard history?"_s);
    EXPECT_EQ(text(u"alert-message"_s), u"Pinned items will be kept. This cannot be undone."_s);
    EXPECT_EQ(driver().text(u"alert-confirm"_s, "title"), u"Clear Unpinned History"_s);
    click(u"alert-confirm"_s);
    EXPECT_FALSE(asks());
    ASSERT_THAT(stored(), SizeIs(1));
    EXPECT_TRUE(stored().front().isPinned);
    click(u"clear-everything"_s);
    EXPECT_EQ(driver().text(u"alert-confirm"_s, "title"), u"Clear Everything"_s);
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(SettingsViewTest, NothingElseCanBeUsedWhileItAsks)
{
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-everything"_s));
    press(Qt::Key_Space);
    for (const QString& expected :
         {u"alert-cancel"_s, u"alert-confirm"_s, u"alert-cancel"_s, u"alert-confirm"_s}) {
        EXPECT_EQ(focused(), expected);
        press(Qt::Key_Tab);
    }
    click(u"tab-about"_s);
    EXPECT_EQ(m_shown.selectedTab(), 1);
    EXPECT_TRUE(asks());
}

TEST_F(SettingsViewTest, TheSystemClipboardIsClearedAtOnce)
{
    m_pasteboard.copyText("secret");
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-system-clipboard"_s));
    press(Qt::Key_Space);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(m_pasteboard.isEmpty());
    EXPECT_TRUE(waitUntil([this] {
        return find(u"banner"_s) && text(u"banner-message"_s) == u"System clipboard cleared."_s;
    }));
}

// Shortcuts and About

TEST_F(SettingsViewTest, KeyCapsHaveToolTips)
{
    showTab(2);
    driver().point(u"shortcut-Pin or unpin"_s);
    QQuickItem& row = item(u"shortcut-Pin or unpin"_s);
    const QQuickItem* cap = nullptr;
    const std::function<void(QQuickItem&)> look = [&](QQuickItem& inside) {
        if (inside.property("minimumWidth").isValid()) {
            cap = &inside;
        }
        for (QQuickItem* const child : inside.childItems()) {
            look(*child);
        }
    };
    look(row);
    ASSERT_NE(cap, nullptr);
    const QPoint center = cap->mapToScene(QPointF(cap->width() / 2, cap->height() / 2)).toPoint();
    QTest::mouseMove(&window(), center + QPoint(1, 1));
    QTest::mouseMove(&window(), center);
    ASSERT_TRUE(waitUntil([this] { return find(u"tool-tip"_s) != nullptr; }));
    EXPECT_EQ(driver().text(u"tool-tip"_s, "text"), u"Ctrl+P"_s);
}

TEST_F(SettingsViewTest, TheShortcutsEndWithWhatTheKeysAreHere)
{
    showTab(2);
    EXPECT_EQ(text(u"keyboard-line"_s), u"On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s);
    const QQuickItem& line = item(u"keyboard-line"_s);
    const QQuickItem& last = item(u"shortcut-Delete"_s);
    EXPECT_GT(line.mapToScene(QPointF()).y(), last.mapToScene(QPointF()).y());
    EXPECT_LE(line.mapToScene(QPointF(0, line.height())).y(), window().height());
}

TEST_F(SettingsViewTest, AboutStandsInTheMiddle)
{
    showTab(3);
    EXPECT_EQ(text(u"local-only"_s), u"Local-only"_s);
    EXPECT_NEAR(driver().centerOf(u"about-symbol"_s).x(), window().width() / 2, 1);
    EXPECT_EQ(color(u"version"_s), colors().tertiaryText);
}

// Assistive technology

TEST_F(SettingsViewTest, TheGeneralTabIsReadInItsOrder)
{
    m_settings.setMaxHistory(500);
    m_settings.setMaxItemSizeMB(25);
    show();
    QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"Dialog|Tessly Settings"_s)),
        (QStringList{
            u"Dialog|Tessly Settings"_s,
            u"PageTabList|Settings"_s,
            u"PageTab|General"_s,
            u"PageTab|Privacy"_s,
            u"PageTab|Shortcuts"_s,
            u"PageTab|About"_s,
            u"Grouping|Startup"_s,
            u"Heading|Startup"_s,
            u"StaticText|Launch Tessly at login"_s,
            u"CheckBox|Launch Tessly at login"_s,
            u"Grouping|Capture"_s,
            u"Heading|Capture"_s,
            u"StaticText|Remember images"_s,
            u"CheckBox|Remember images"_s,
            u"StaticText|Remember copied files"_s,
            u"CheckBox|Remember copied files"_s,
            u"StaticText|Keep up to 500 unpinned items"_s,
            u"SpinBox|Keep up to 500 unpinned items"_s,
            u"StaticText|Maximum item size: 25 MB"_s,
            u"SpinBox|Maximum item size: 25 MB"_s,
            u"Grouping|Behavior"_s,
            u"Heading|Behavior"_s,
            u"StaticText|Move pasted items to the top"_s,
            u"CheckBox|Move pasted items to the top"_s,
            u"StaticText|Enable direct position shortcuts"_s,
            u"CheckBox|Enable direct position shortcuts"_s,
        }));
}

TEST_F(SettingsViewTest, ThePrivacyTabIsReadInItsOrder)
{
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    showTab(1);
    QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"Grouping|Clipboard access"_s)),
        (QStringList{
            u"Grouping|Clipboard access"_s,
            u"Heading|Clipboard access"_s,
            u"StaticText|Background history"_s,
            u"StaticText|Available"_s,
            u"Grouping|Automatic paste"_s,
            u"Heading|Automatic paste"_s,
            u"StaticText|Access"_s,
            u"StaticText|Required"_s,
            u"Button|Allow"_s,
            u"Grouping|Excluded bundle IDs"_s,
            u"Heading|Excluded bundle IDs"_s,
            u"EditableText|Excluded bundle IDs"_s,
            u"Grouping|Stored data"_s,
            u"Heading|Stored data"_s,
            u"StaticText|History"_s,
            u"StaticText|0 items"_s,
            u"StaticText|Pinned"_s,
            u"StaticText|0 items"_s,
            u"StaticText|Database"_s,
            u"StaticText|Zero KB"_s,
            u"Button|Clear Unpinned History"_s,
            u"Button|Clear Everything"_s,
            u"Button|Clear System Clipboard"_s,
        }));
}

TEST_F(SettingsViewTest, TheOtherTabsAreReadToo)
{
    showTab(2);
    const QStringList shortcuts = driver().accessibleObjects();
    for (const QString& object :
         {u"Heading|Global direct paste"_s, u"StaticText|Positions 1–9"_s,
          u"StaticText|Alt+Shift+1…9"_s, u"StaticText|Ctrl+Backspace"_s,
          u"StaticText|On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s}) {
        EXPECT_TRUE(shortcuts.contains(object)) << object.toStdString();
    }
    m_shown.setSelectedTab(3);
    run();
    const QStringList about = driver().accessibleObjects();
    for (const QString& object :
         {u"StaticText|Tessly"_s, u"StaticText|Local-only"_s, u"StaticText|Version 1.2.3"_s}) {
        EXPECT_TRUE(about.contains(object)) << object.toStdString();
    }
}

TEST_F(SettingsViewTest, StatesAreToldToAssistiveTechnology)
{
    m_settings.setCaptureImages(true);
    m_settings.setCaptureFiles(false);
    show();
    EXPECT_TRUE(driver().accessible(u"tab-general"_s)->state().selected);
    EXPECT_FALSE(driver().accessible(u"tab-privacy"_s)->state().selected);
    EXPECT_TRUE(driver().accessible(u"capture-images"_s)->state().checked);
    EXPECT_FALSE(driver().accessible(u"capture-files"_s)->state().checked);
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().checkable);
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().focusable);
    ASSERT_TRUE(tabTo(u"capture-files"_s));
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().focused);
    EXPECT_FALSE(driver().accessible(u"capture-images"_s)->state().focused);
}

TEST_F(SettingsViewTest, AssistiveTechnologyCanUseTheControls)
{
    m_settings.setMaxHistory(500);
    show();
    const auto act = [this](const QString& name, const QString& action) {
        QAccessibleActionInterface* const actions = driver().accessible(name)->actionInterface();
        ASSERT_NE(actions, nullptr);
        ASSERT_TRUE(actions->actionNames().contains(action)) << action.toStdString();
        actions->doAction(action);
        run();
    };
    const bool before = m_settings.captureImages();
    act(u"capture-images"_s, QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(m_settings.captureImages(), !before);
    act(u"max-history"_s, QAccessibleActionInterface::increaseAction());
    EXPECT_EQ(m_settings.maxHistory(), 550);
    QAccessibleValueInterface* const value =
        driver().accessible(u"max-history"_s)->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toInt(), 550);
    EXPECT_EQ(value->minimumValue().toInt(), 10);
    EXPECT_EQ(value->maximumValue().toInt(), 10'000);
    EXPECT_EQ(value->minimumStepSize().toInt(), 50);
    act(u"tab-about"_s, QAccessibleActionInterface::pressAction());
    EXPECT_EQ(m_shown.selectedTab(), 3);
}

TEST_F(SettingsViewTest, TheQuestionIsReadWithItsAnswers)
{
    showTab(1);
    m_shown.clearEverything();
    run();
    const QStringList objects = driver().accessibleObjects();
    for (const QString& object :
         {u"StaticText|Clear all clipboard history?"_s,
          u"StaticText|Pinned and unpinned items will be removed. This cannot be undone."_s,
          u"Button|Clear Everything"_s, u"Button|Cancel"_s}) {
        EXPECT_TRUE(objects.contains(object)) << object.toStdString();
    }
    EXPECT_TRUE(driver().accessible(u"alert-cancel"_s)->state().focused);
}

// Colours

TEST_F(SettingsViewTest, ColoursFollowThePaletteWhileItIsOpen)
{
    show();
    const QPalette before = QGuiApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(dark);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(dark).window);
    QGuiApplication::setPalette(before);
}

} // namespace
} // namespace tessly::test
