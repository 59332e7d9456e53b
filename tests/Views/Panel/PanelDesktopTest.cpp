#include "PanelViewFixture.h"

#include "ClipboardOwner.h"
#include "FrozenProcess.h"
#include "QtPrinting.h"
#include "XClient.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QScreen>

#include <algorithm>
#include <array>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {
namespace {

XSession* session = nullptr;

// Two screens side by side, the right one lower: above it there is nothing.
constexpr auto screenSize = "1600x800x24"_L1;
constexpr auto leftScreen = "800/210x800/210+0+0"_L1;
constexpr auto rightScreen = "800/210x600/160+800+200"_L1;
constexpr QPoint nowhere(1400, 60);

/// The panel on a real X server, under openbox, beside another program's window.
class PanelDesktopTest : public PanelViewFixture
{
protected:
    PanelDesktopTest()
    {
        XClient::Look look;
        look.windowClass = XClient::windowClass("editor", "Editor");
        m_other = m_client.show(look);
        EXPECT_TRUE(waitUntil([this] { return hasFocus(m_other); }));
    }

    [[nodiscard]] bool hasFocus(xcb_window_t window) { return m_client.focused() == window; }
    [[nodiscard]] xcb_window_t panelID() { return static_cast<xcb_window_t>(window().winId()); }
    /// A property of the panel's window, as another program reads it.
    [[nodiscard]] QString property(const QString& name)
    {
        return QString::fromLatin1(
            session->run(u"xprop"_s, {u"-id"_s, QString::number(panelID()), u"-notype"_s, name}));
    }
    /// Opens the panel and waits until the window manager has dealt with all that leads to.
    void show()
    {
        PanelViewFixture::show();
        ASSERT_TRUE(waitUntil([this] { return hasFocus(panelID()); }));
        // It takes one thing after the other, and what it was asked last leaves a mark.
        const QString mark = u"mark %1"_s.arg(++m_marks);
        const QString other = QString::number(m_other);
        session->run(u"xdotool"_s, {u"set_window"_s, u"--name"_s, mark, other});
        ASSERT_TRUE(waitUntil([&] {
            return session->run(u"xprop"_s, {u"-id"_s, other, u"_NET_WM_VISIBLE_NAME"_s})
                .contains(mark.toUtf8());
        }));
    }
    void showAt(const QPoint& place)
    {
        m_anchor = QRect(place, QSize(1, 1));
        show();
    }
    /// Where the panel is, as the server has it.
    [[nodiscard]] QRect placeOnServer() { return m_client.geometryOf(panelID()); }
    /// Runs the event loop for longer than it takes the panel to close over a lost focus.
    void letFocusSettle()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        EXPECT_TRUE(waitUntil([&] { return elapsed.hasExpired(300); }));
    }

    /// Says that there is a compositing manager, and does nothing of what one does.
    void beginCompositing()
    {
        XClient::Look look;
        look.isUnmanaged = true;
        look.x = 1300;
        m_compositor = m_client.show(look);
        m_client.own("_NET_WM_CM_S0", m_compositor);
    }
    void endCompositing() { m_client.destroy(m_compositor); }

    XClient m_client{session->display()};
    xcb_window_t m_compositor = XCB_WINDOW_NONE;
    xcb_window_t m_other = XCB_WINDOW_NONE;
    int m_marks = 0;
};

TEST_F(PanelDesktopTest, TakesTheKeyboardAtEveryOpening)
{
    for (int opening = 0; opening < 4; ++opening) {
        show();
        EXPECT_TRUE(hasFocus(panelID())) << opening;
        m_controller.close();
        EXPECT_TRUE(waitUntil([this] { return hasFocus(m_other); })) << "it comes back";
    }
}

TEST_F(PanelDesktopTest, TypedKeysReachTheSearchField)
{
    save("alpha");
    show();
    session->run(u"xdotool"_s, {u"type"_s, u"alp"_s});
    EXPECT_TRUE(waitUntil([this] { return m_model->query() == u"alp"_s; }));
    session->run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    EXPECT_TRUE(waitUntil([this] { return !m_model->isPanelPresented(); }));
}

TEST_F(PanelDesktopTest, CtrlPPinsAlsoWhereNoKeyBearsP)
{
    const QString leftControl = u"37"_s;
    const QString placeOfP = u"33"_s;
    save("alpha");
    for (const QString& layout : {u"us"_s, u"ru"_s, u"us,gr"_s, u"gr"_s}) {
        session->run(u"setxkbmap"_s, {layout});
        show();
        const bool wasPinned = m_model->clips().front().isPinned;
        session->run(
            u"xdotool"_s, {u"keydown"_s, leftControl, u"key"_s, placeOfP, u"keyup"_s, leftControl});
        EXPECT_TRUE(waitUntil([&] {
            run();
            return m_model->clips().front().isPinned != wasPinned;
        })) << layout.toStdString();
        EXPECT_EQ(m_model->query(), QString());
        m_controller.close();
        run();
    }
    session->run(u"setxkbmap"_s, {u"us"_s});
}

TEST_F(PanelDesktopTest, IsLeftOutOfTaskbarAndPagerAndStaysAboveAtEveryOpening)
{
    // At once again, too: the window manager clears the states of a window that is hidden.
    for (int opening = 0; opening < 6; ++opening) {
        show();
        const QString state = property(u"_NET_WM_STATE"_s);
        EXPECT_TRUE(state.contains(u"_NET_WM_STATE_SKIP_TASKBAR"_s)) << state.toStdString();
        EXPECT_TRUE(state.contains(u"_NET_WM_STATE_SKIP_PAGER"_s)) << state.toStdString();
        EXPECT_TRUE(state.contains(u"_NET_WM_STATE_ABOVE"_s)) << state.toStdString();
        m_controller.close();
        run();
    }
}

TEST_F(PanelDesktopTest, HasNoFrame)
{
    show();
    EXPECT_EQ(window().frameMargins(), QMargins());
}

TEST_F(PanelDesktopTest, StandsBesideItsAnchorWholeOnTheAnchorsScreen)
{
    const auto screens = QGuiApplication::screens();
    ASSERT_EQ(screens.size(), 2);
    for (const QScreen* const screen : screens) {
        const QRect area = screen->availableGeometry();
        for (const QPoint& corner :
             {area.topLeft(), area.topRight(), area.bottomLeft(), area.bottomRight(),
              area.center()}) {
            showAt(corner);
            const auto place = placeOnServer();
            EXPECT_TRUE(area.contains(place)) << testing::PrintToString(place);
            EXPECT_EQ(place.size(), QSize(660, 560));
            m_controller.close();
            run();
        }
    }
}

TEST_F(PanelDesktopTest, StandsOnTheNearestScreenWhereThereIsNone)
{
    showAt(nowhere);
    EXPECT_EQ(QGuiApplication::screenAt(nowhere), nullptr);
    EXPECT_TRUE(std::ranges::any_of(QGuiApplication::screens(), [this](const QScreen* screen) {
        return screen->availableGeometry().contains(placeOnServer());
    })) << testing::PrintToString(placeOnServer());
}

// Where the screen is composited

TEST_F(PanelDesktopTest, TheShadowLiesAroundThePanelWhichStaysWhereItIsWithoutOne)
{
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const std::array anchors = {area.topLeft(), area.bottomRight(), QPoint(400, 40)};
    std::vector<QRect> plain;
    for (const QPoint& anchor : anchors) {
        showAt(anchor);
        plain.push_back(placeOnServer());
        m_controller.close();
        run();
    }
    beginCompositing();
    for (std::size_t i = 0; i < anchors.size(); ++i) {
        showAt(anchors.at(i));
        // The toolkit follows what the manager does.
        EXPECT_TRUE(waitUntil([&] { return window().card() == plain.at(i); }));
        EXPECT_TRUE(area.contains(placeOnServer())) << "no manager has to move it";
        EXPECT_TRUE(window().hasShadow());
        EXPECT_EQ(window().rootObject()->size(), QSizeF(660, 560));
        const QMargins shadow(
            plain.at(i).left() - placeOnServer().left(), plain.at(i).top() - placeOnServer().top(),
            placeOnServer().right() - plain.at(i).right(),
            placeOnServer().bottom() - plain.at(i).bottom());
        const QString extents = u"_GTK_FRAME_EXTENTS = %1, %2, %3, %4"_s.arg(shadow.left())
                                    .arg(shadow.right())
                                    .arg(shadow.top())
                                    .arg(shadow.bottom());
        EXPECT_EQ(property(u"_GTK_FRAME_EXTENTS"_s).trimmed(), extents);
        m_controller.close();
        run();
    }
}

TEST_F(PanelDesktopTest, TheShadowIsThereFromTheMomentTheScreenIsCompositedUntilItIsNot)
{
    showAt({400, 40});
    const QRect card = placeOnServer();
    EXPECT_FALSE(window().hasShadow());
    EXPECT_FALSE(window().mask().isEmpty()) << "the corners would be black";
    beginCompositing();
    ASSERT_TRUE(waitUntil([&] { return placeOnServer() == card.adjusted(-28, -20, 28, 36); }));
    EXPECT_TRUE(window().mask().isEmpty());
    endCompositing();
    ASSERT_TRUE(waitUntil([&] { return placeOnServer() == card; }));
    EXPECT_FALSE(window().hasShadow());
    EXPECT_FALSE(window().mask().isEmpty());
    EXPECT_TRUE(m_model->isPanelPresented());
}

TEST_F(PanelDesktopTest, TheShadowFadesOutwardsAndThePanelIsOpaque)
{
    beginCompositing();
    showAt({400, 40});
    const QImage picture = window().grabWindow();
    const QRect card = window().card().translated(-window().position());
    const int middle = card.center().y();
    EXPECT_EQ(qAlpha(picture.pixel(card.left() + 1, middle)), 255);
    EXPECT_EQ(qAlpha(picture.pixel(card.right() - 1, middle)), 255);
    int before = 255;
    for (int x = card.left() - 1; x >= 0; x -= 3) {
        const int alpha = qAlpha(picture.pixel(x, middle));
        EXPECT_LT(alpha, before) << x;
        before = alpha;
    }
    EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
    const auto below = picture.pixel(card.center().x(), card.bottom() + 4);
    const auto above = picture.pixel(card.center().x(), card.top() - 4);
    EXPECT_GT(qAlpha(below), qAlpha(above)) << "the light comes from above";
}

TEST_F(PanelDesktopTest, AClickIntoTheShadowGoesToTheWindowBelow)
{
    session->run(
        u"xdotool"_s, {u"windowmove"_s, u"--sync"_s, QString::number(m_other), u"40"_s, u"100"_s});
    beginCompositing();
    showAt({450, 10});
    // Both are moved by the manager, in its time.
    QPoint shadow;
    ASSERT_TRUE(waitUntil([&] {
        const QRect other = m_client.geometryOf(m_other);
        shadow = {window().card().left() - 5, other.center().y()};
        return other.contains(shadow) && placeOnServer().contains(shadow);
    }));
    EXPECT_TRUE(waitUntil([&] { return m_client.windowAt(shadow) == m_other; }));
    EXPECT_EQ(m_client.windowAt(shadow + QPoint(10, 0)), panelID());
    endCompositing();
    EXPECT_TRUE(waitUntil([&] { return m_client.windowAt(shadow) == m_other; }));
    EXPECT_EQ(m_client.windowAt(shadow + QPoint(10, 0)), panelID());
}

TEST_F(PanelDesktopTest, AMenuOpensAtThePointerAlsoWhereThereIsAShadow)
{
    save("one");
    beginCompositing();
    showAt({400, 40});
    const QPoint place = centerOf(u"row-0"_s);
    click(u"row-0"_s, Qt::RightButton);
    const QPointF corner = item(u"row-menu"_s).mapToScene({0, 0});
    EXPECT_EQ(corner.toPoint(), place);
}

TEST_F(PanelDesktopTest, APointerThatLiesWhereItAppearsSelectsNothingUntilItMoves)
{
    for (int i = 0; i < 6; ++i) {
        save("entry " + QByteArray::number(i));
    }
    showAt({100, 10});
    const QPoint place = window().mapToGlobal(centerOf(u"row-3"_s));
    m_controller.close();
    run();
    const auto movePointer = [](const QPoint& to) {
        session->run(
            u"xdotool"_s, {u"mousemove"_s, QString::number(to.x()), QString::number(to.y())});
    };
    movePointer(place);
    show();
    letFocusSettle();
    EXPECT_TRUE(isSelected(0));
    movePointer(place + QPoint(0, 3));
    EXPECT_TRUE(waitUntil([this] { return isSelected(3); }));
    movePointer({1500, 780});
}

TEST_F(PanelDesktopTest, AnotherProgramsKeyboardGrabDoesNotCloseIt)
{
    show();
    m_client.grabKeyboard();
    m_client.sync();
    letFocusSettle();
    EXPECT_TRUE(m_model->isPanelPresented()) << "while it is grabbed";
    m_client.ungrabKeyboard();
    m_client.sync();
    letFocusSettle();
    EXPECT_TRUE(m_model->isPanelPresented()) << "afterwards";
    session->run(u"xdotool"_s, {u"type"_s, u"x"_s});
    EXPECT_TRUE(waitUntil([this] { return m_model->query() == u"x"_s; })) << "keys still come";
}

TEST_F(PanelDesktopTest, OpenedAgainAtOnceItStaysOpenHoweverSlowTheManagerIs)
{
    show();
    freeze(session->windowManager());
    // The focus that the first window lost is none of the second's.
    m_controller.close();
    m_controller.show();
    letFocusSettle();
    EXPECT_TRUE(m_model->isPanelPresented());
    thaw(session->windowManager());
    EXPECT_TRUE(waitUntil([this] { return hasFocus(panelID()); }));
    letFocusSettle();
    EXPECT_TRUE(m_model->isPanelPresented());
}

TEST_F(PanelDesktopTest, LosingTheFocusCloses)
{
    show();
    m_client.focus(m_other);
    m_client.sync();
    EXPECT_TRUE(waitUntil([this] { return !m_model->isPanelPresented(); }));
}

TEST_F(PanelDesktopTest, LosingTheFocusDuringAGrabCloses)
{
    show();
    m_client.grabKeyboard();
    m_client.focus(m_other);
    m_client.ungrabKeyboard();
    m_client.sync();
    EXPECT_TRUE(waitUntil([this] { return !m_model->isPanelPresented(); }));
}

TEST_F(PanelDesktopTest, TheToolkitNeverAsksTheClipboardsOwner)
{
    ClipboardOwner before(*session, {u"--text"_s, u"first"_s});
    // What the middle button pastes.
    ClipboardOwner primary(*session, {u"--selection"_s, u"PRIMARY"_s, u"--text"_s, u"primary"_s});
    show();
    ClipboardOwner owner(*session, {u"--text"_s, u"secret"_s});
    letFocusSettle();
    session->run(u"xdotool"_s, {u"key"_s, u"ctrl+v"_s});
    session->run(u"xdotool"_s, {u"key"_s, u"shift+Insert"_s});
    EXPECT_TRUE(waitUntil([this] { return m_pasteboard.requests(Flavour::plainText) == 2; }))
        << "both go to the program's own pasteboard";
    const QPoint place = window().mapToGlobal(centerOf(u"clipboard-search"_s));
    session->run(
        u"xdotool"_s, {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()),
                       u"click"_s, u"2"_s});
    letFocusSettle();
    EXPECT_EQ(m_model->query(), QString()) << "the middle button does nothing";
    for (ClipboardOwner* const asked : {&before, &owner, &primary}) {
        for (const QByteArray& line : asked->lines()) {
            EXPECT_FALSE(line.startsWith("request")) << line.toStdString();
        }
    }
    EXPECT_TRUE(m_model->isPanelPresented());
}

} // namespace
} // namespace tessly::test

// One X server for the whole program: the toolkit connects to it once.
int main(int argc, char** argv)
{
    using namespace tessly::test;
    XSession server(XSession::WindowManager::openbox, screenSize);
    server.run(u"xrandr"_s, {u"--setmonitor"_s, u"left"_s, leftScreen, u"screen"_s});
    server.run(u"xrandr"_s, {u"--setmonitor"_s, u"right"_s, rightScreen, u"none"_s});
    session = &server;
    qputenv("DISPLAY", server.display().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
