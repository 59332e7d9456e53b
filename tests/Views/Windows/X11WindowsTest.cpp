#include "AppModelFixture.h"
#include "CardWindow.h"
#include "ClipboardOwner.h"
#include "OnboardingModel.h"
#include "QuickConfirmation.h"
#include "QuickStatusMenu.h"
#include "QuickStatusToolTip.h"
#include "SettingsModel.h"
#include "StatusMenu.h"
#include "ViewDriver.h"
#include "WindowGeometry.h"
#include "WindowViews.h"
#include "XClient.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The server and the window manager that the toolkit is connected to.
XSession* session = nullptr;

/// The windows on a real X server, beside another program's.
class X11WindowsTest : public AppModelFixture
{
protected:
    X11WindowsTest()
        : m_other(session->display())
        , m_editor(m_other.show({.windowClass = XClient::windowClass("editor", "Editor")}))
    {
        EXPECT_TRUE(waitUntil([this] { return m_other.focused() == m_editor; }));
    }

    static void use(const QStringList& arguments) { session->run(u"xdotool"_s, arguments); }
    static void click(QPoint place)
    {
        use(
            {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s,
             u"1"_s});
    }
    [[nodiscard]] bool hasFocus(QWindow& window)
    {
        return m_other.focused() == static_cast<xcb_window_t>(window.winId());
    }
    /// The window manager's own keys are for what it takes for active, which is a moment later.
    [[nodiscard]] static bool isActive(QWindow& window)
    {
        return session->run(u"xprop"_s, {u"-root"_s, u"_NET_ACTIVE_WINDOW"_s})
            .contains("# 0x" + QByteArray::number(window.winId(), 16) + '\n');
    }
    /// Waits until the window has the keyboard, and is where its window manager put it.
    [[nodiscard]] bool comesUp(ViewWindow& window)
    {
        const QPoint middle = window.screen()->availableGeometry().center();
        return waitUntil([&] {
            // The window manager may count its frame in.
            const QPoint off = window.geometry().center() - middle;
            return hasFocus(window) && window.isExposed() && std::abs(off.x()) <= 2 &&
                   std::abs(off.y()) <= 40;
        });
    }
    /// On the desktop.
    [[nodiscard]] static QPoint centerOf(ViewWindow& window, const QString& item)
    {
        return window.mapToGlobal(ViewDriver(window).centerOf(item));
    }

    XClient m_other;
    xcb_window_t m_editor;
};

class X11SettingsTest : public X11WindowsTest
{
protected:
    SettingsModel m_shown{{*m_model, m_pasteboard, QString()}};
    std::unique_ptr<QuickWindowView> m_view = makeSettingsView(m_shown);
};

TEST_F(X11SettingsTest, GetsTheKeyboardThoughAnotherProgramHasIt)
{
    m_view->show();
    EXPECT_TRUE(waitUntil([this] { return hasFocus(m_view->window()); }));
    m_other.focus(m_editor);
    ASSERT_TRUE(waitUntil([this] { return !hasFocus(m_view->window()); }));
    m_view->show();
    EXPECT_TRUE(waitUntil([this] { return hasFocus(m_view->window()); })) << "each time";
}

TEST_F(X11SettingsTest, StandsInTheMiddleAndStaysWhereItWasPut)
{
    m_view->show();
    ViewWindow& window = m_view->window();
    ASSERT_TRUE(comesUp(window));
    EXPECT_EQ(window.size(), QSize(610, 440));
    m_view->close();
    const QPoint before = window.position();
    m_view->show();
    ASSERT_TRUE(comesUp(window));
    EXPECT_EQ(window.position(), before) << "as on the first showing";
}

TEST_F(X11SettingsTest, TheWindowManagersCloseButtonClosesIt)
{
    int closings = 0;
    m_view->setEvents({.didClose = [&closings] { ++closings; }});
    m_view->show();
    ASSERT_TRUE(waitUntil([this] { return isActive(m_view->window()); }));
    use({u"key"_s, u"alt+F4"_s});
    EXPECT_TRUE(waitUntil([&closings] { return closings == 1; }));
    EXPECT_FALSE(m_view->isShown());
}

TEST_F(X11SettingsTest, TypedKeysReachTheEditor)
{
    m_settings.setIgnoredBundleIDsText({});
    m_shown.setSelectedTab(1);
    m_view->show();
    ASSERT_TRUE(waitUntil([this] { return hasFocus(m_view->window()); }));
    ASSERT_TRUE(waitUntil([this] { return m_view->window().isExposed(); }));
    click(centerOf(m_view->window(), u"ignored-bundle-ids-text"_s));
    use({u"type"_s, u"org.one"_s});
    EXPECT_TRUE(waitUntil([this] { return m_settings.ignoredBundleIDsText() == u"org.one"_s; }));
}

TEST_F(X11SettingsTest, TheEditorAsksNoOtherProgramForTheClipboard)
{
    ClipboardOwner clipboard(*session, {u"--text"_s, u"theirs"_s});
    ClipboardOwner primary(*session, {u"--selection"_s, u"PRIMARY"_s, u"--text"_s, u"theirs"_s});
    m_settings.setIgnoredBundleIDsText({});
    m_shown.setSelectedTab(1);
    m_view->show();
    ASSERT_TRUE(comesUp(m_view->window()));
    const QPoint editor = centerOf(m_view->window(), u"ignored-bundle-ids-text"_s);
    click(editor);
    m_pasteboard.copyText("ours");
    use({u"key"_s, u"ctrl+v"_s});
    EXPECT_TRUE(waitUntil([this] { return m_settings.ignoredBundleIDsText() == u"ours"_s; }));
    use({u"key"_s, u"shift+Insert"_s, u"ctrl+shift+Insert"_s});
    EXPECT_TRUE(
        waitUntil([this] { return m_settings.ignoredBundleIDsText() == u"oursoursours"_s; }));
    use({u"click"_s, u"2"_s});
    use({u"click"_s, u"3"_s});
    use({u"key"_s, u"End"_s, u"x"_s});
    EXPECT_TRUE(waitUntil([this] { return m_settings.ignoredBundleIDsText().endsWith(u'x'); }));
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"oursoursoursx"_s);
    for (ClipboardOwner* const owner : {&clipboard, &primary}) {
        EXPECT_EQ(owner->requests("TARGETS"), 0);
        EXPECT_EQ(owner->requests("UTF8_STRING"), 0);
    }
}

TEST_F(X11WindowsTest, OnboardingHasNoFrameAndIsMovedByItsBackground)
{
    OnboardingModel onboarding(*m_model, [] {});
    const auto view = makeOnboardingView(onboarding);
    view->show();
    ViewWindow& window = view->window();
    ASSERT_TRUE(comesUp(window));
    EXPECT_EQ(window.frameMargins(), QMargins());
    const QPoint before = window.position();
    const QPoint grip = window.mapToGlobal(QPoint(325, 400));
    use(
        {u"mousemove"_s, QString::number(grip.x()), QString::number(grip.y()), u"mousedown"_s,
         u"1"_s});
    for (int i = 1; i <= 10; ++i) {
        use({u"mousemove_relative"_s, u"--"_s, u"-6"_s, u"-4"_s});
        QCoreApplication::processEvents();
    }
    use({u"mouseup"_s, u"1"_s});
    EXPECT_TRUE(waitUntil([&] {
        return window.x() <= before.x() - 30 && window.y() <= before.y() - 20;
    })) << window.x() - before.x()
        << ' ' << window.y() - before.y();
}

TEST_F(X11WindowsTest, OnboardingHasAShadowWhileTheScreenIsComposited)
{
    m_other.own("_NET_WM_CM_S0", m_editor);
    OnboardingModel onboarding(*m_model, [] {});
    const auto view = makeOnboardingView(onboarding);
    view->show();
    auto& window = dynamic_cast<CardWindow&>(view->window());
    ASSERT_TRUE(comesUp(window));
    const QRect area = window.screen()->availableGeometry();
    const QRect card = centredGeometry(QSize(650, 510), area);
    EXPECT_TRUE(window.hasShadow());
    EXPECT_EQ(window.card(), card);
    EXPECT_EQ(window.rootObject()->size(), QSizeF(650, 510));
    EXPECT_GT(window.height(), card.height());
    m_other.destroy(m_editor);
    EXPECT_TRUE(waitUntil([&] { return window.geometry() == card; }));
    EXPECT_FALSE(window.hasShadow());
}

TEST_F(X11WindowsTest, TheAlertGetsTheKeyboard)
{
    QuickConfirmation confirmation;
    std::optional<bool> answer;
    confirmation.ask(
        u"Clear unpinned history?"_s, u"Clear"_s, u"Cancel"_s,
        [&answer](bool confirmed) { answer = confirmed; });
    ASSERT_TRUE(waitUntil([&] { return hasFocus(confirmation.window()); }));
    use({u"key"_s, u"Return"_s});
    EXPECT_TRUE(waitUntil([&answer] { return answer.has_value(); }));
    EXPECT_EQ(answer, true);
}

class X11StatusMenuTest : public X11WindowsTest
{
protected:
    void show()
    {
        m_menu.show(makeStatusMenu(false), {300, 200}, [this](const QString& action) {
            m_chosen = action;
        });
        ASSERT_TRUE(waitUntil([this] { return m_menu.window().isExposed(); }));
    }

    QString m_chosen;
    QuickStatusMenu m_menu;
};

TEST_F(X11StatusMenuTest, TakesKeysAndLeavesTheFocusWhereItIs)
{
    show();
    EXPECT_EQ(m_other.focused(), m_editor);
    m_other.forgetKeys();
    use({u"key"_s, u"Down"_s, u"Down"_s, u"Return"_s});
    EXPECT_TRUE(waitUntil([this] { return m_chosen == u"toggleMonitoring"_s; }));
    m_other.sync();
    EXPECT_TRUE(m_other.keys().empty()) << "the editor got none";
    EXPECT_EQ(m_other.focused(), m_editor);
    use({u"key"_s, u"a"_s});
    EXPECT_TRUE(waitUntil([this] { return !m_other.keys().empty(); })) << "and gets them again";
}

TEST_F(X11StatusMenuTest, TakesKeysFromAnotherWindowOfTheProgram)
{
    SettingsModel settings({*m_model, m_pasteboard, QString()});
    const auto view = makeSettingsView(settings);
    view->show();
    ASSERT_TRUE(waitUntil([&] { return hasFocus(view->window()); }));
    show();
    use({u"key"_s, u"Escape"_s});
    EXPECT_TRUE(waitUntil([this] { return !m_menu.window().isVisible(); }));
    EXPECT_TRUE(view->isShown()) << "it was the menu's";
}

TEST_F(X11StatusMenuTest, AClickInAnotherProgramEndsIt)
{
    show();
    click({60, 60});
    EXPECT_TRUE(waitUntil([this] { return !m_menu.window().isVisible(); }));
    EXPECT_EQ(m_chosen, QString());
}

TEST_F(X11StatusMenuTest, AClickOnTheDesktopEndsIt)
{
    show();
    click({5, 500});
    EXPECT_TRUE(waitUntil([this] { return !m_menu.window().isVisible(); }));
}

TEST_F(X11StatusMenuTest, AClickChooses)
{
    show();
    click(centerOf(m_menu.window(), u"menu-openSettings"_s));
    EXPECT_TRUE(waitUntil([this] { return m_chosen == u"openSettings"_s; }));
    EXPECT_FALSE(m_menu.window().isVisible());
}

TEST_F(X11StatusMenuTest, WaitsForThePointerToBeLetGo)
{
    // As a tray does while its button is held.
    auto tray = std::make_unique<XClient>(session->display());
    tray->grabPointer();
    show();
    tray.reset();
    // Until then a click elsewhere goes unnoticed.
    EXPECT_TRUE(waitUntil([this] {
        click({5, 500});
        run();
        return !m_menu.window().isVisible();
    }));
}

TEST_F(X11WindowsTest, TheToolTipTakesNothing)
{
    QuickStatusToolTip toolTip;
    toolTip.show(u"Tessly — Open Quick Paste"_s, QRect(400, 0, 24, 24));
    ASSERT_TRUE(waitUntil([&] { return toolTip.window().isExposed(); }));
    EXPECT_EQ(m_other.focused(), m_editor);
}

} // namespace

int runX11WindowTests(int argc, char** argv)
{
    XSession own;
    session = &own;
    qputenv("DISPLAY", own.display().toUtf8());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

} // namespace tessly::test

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    return tessly::test::runX11WindowTests(argc, argv);
}
