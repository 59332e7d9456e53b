#include "XEmbedTrayIcon.h"

#include "TestSupport.h"
#include "TestTray.h"
#include "X11Desktop.h"
#include "XSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStandardPaths>

#include <memory>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

using Presence = StatusItem::Presence;

constexpr xcb_button_t leftButton = 1;
constexpr xcb_button_t middleButton = 2;
constexpr xcb_button_t rightButton = 3;

/// The middle of the board, and a place beside it, of a drawing of any size.
constexpr double boardX = 0.22;
constexpr double boardY = 0.85;

class XEmbedTrayIconTest : public testing::Test
{
protected:
    XEmbedTrayIconTest()
    {
        m_icon->setEvents({
            .leftClicked = [this](auto icon) { m_leftClicks.push_back(icon); },
            .rightClicked = [this](auto icon) { m_rightClicks.push_back(icon); },
            .menuRequested = [this](QPoint position) { m_menuRequests.push_back(position); },
            .toolTipRequested = [this](QRect icon) { m_entered.push_back(icon); },
            .toolTipDismissed = [this] { ++m_left; },
            .presenceChanged = [this] { m_presences.push_back(m_icon->presence()); },
        });
    }

    /// At the right end of the upper edge. Not every Debian has each of the two.
    std::unique_ptr<QProcess> startTray()
    {
        if (QStandardPaths::findExecutable(u"trayer"_s).isEmpty()) {
            return m_session.start(
                u"stalonetray"_s, {u"--config"_s, u"/dev/null"_s, u"--geometry"_s, u"1x1-0+0"_s,
                                   u"--grow-gravity"_s, u"E"_s, u"--icon-size"_s, u"24"_s});
        }
        return m_session.start(
            u"trayer"_s, {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s, u"--widthtype"_s,
                          u"request"_s, u"--height"_s, u"26"_s});
    }

    bool becomes(Presence presence)
    {
        return waitUntil([&] { return m_icon->presence() == presence; });
    }

    /// Where a program that looks from outside sees it.
    QRect seenRectangle()
    {
        const QByteArray text = m_session.run(
            u"sh"_s,
            {u"-c"_s, u"xdotool search --class tessly getwindowgeometry --shell || true"_s});
        QHash<QByteArray, int> values;
        for (const QByteArray& line : text.split('\n')) {
            const auto equals = line.indexOf('=');
            values.insert(line.first(qMax(equals, 0)), line.sliced(equals + 1).toInt());
        }
        return {values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]};
    }

    bool knowsItsRectangle()
    {
        return waitUntil([this] {
            const auto told = m_icon->rectangle();
            return told && told->left() > 1200 && told == seenRectangle();
        });
    }

    /// Shown in a tray of the test's own.
    void showIn(TestTray& tray)
    {
        m_icon->setVisible(true);
        ASSERT_TRUE(waitUntil([&] { return tray.takeIcons(); }));
        ASSERT_TRUE(becomes(Presence::present));
    }

    std::unique_ptr<XEmbedTrayIcon> make()
    {
        return std::make_unique<XEmbedTrayIcon>(
            m_desktop, [](const QRect& rectangle) { return rectangle; });
    }

    void moveTo(const QPoint& point)
    {
        m_session.run(
            u"xdotool"_s, {u"mousemove"_s, QString::number(point.x()), QString::number(point.y())});
    }
    void click(const QPoint& point, xcb_button_t button)
    {
        moveTo(point);
        m_session.run(u"xdotool"_s, {u"click"_s, QString::number(button)});
    }

    XSession m_session;
    X11Desktop m_desktop{m_session.display().toStdString(), DesktopEntries(QStringList())};
    std::unique_ptr<XEmbedTrayIcon> m_icon = make();
    std::vector<StatusItem::Rectangle> m_leftClicks;
    std::vector<StatusItem::Rectangle> m_rightClicks;
    std::vector<QPoint> m_menuRequests;
    std::vector<Presence> m_presences;
    std::vector<QRect> m_entered;
    int m_left = 0;
};

// In a real tray

TEST_F(XEmbedTrayIconTest, ItIsTakenInByATrayThatRuns)
{
    const auto tray = startTray();
    m_icon->setVisible(true);
    EXPECT_EQ(m_icon->presence(), Presence::undecided);
    ASSERT_TRUE(becomes(Presence::present));
    ASSERT_TRUE(knowsItsRectangle());
    EXPECT_LT(m_icon->rectangle()->bottom(), 30);
    EXPECT_GE(m_icon->rectangle()->width(), 16);
}

TEST_F(XEmbedTrayIconTest, ClicksComeWithItsRectangle)
{
    const auto tray = startTray();
    m_icon->setVisible(true);
    ASSERT_TRUE(knowsItsRectangle());
    const QPoint middle = m_icon->rectangle()->center();
    click(middle, leftButton);
    ASSERT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
    EXPECT_THAT(m_leftClicks, ElementsAre(m_icon->rectangle()));
    EXPECT_TRUE(m_leftClicks[0]->contains(middle));
    EXPECT_THAT(m_menuRequests, IsEmpty());

    click(middle, middleButton);
    click(middle, rightButton);
    ASSERT_TRUE(waitUntil([this] { return !m_menuRequests.empty(); }));
    EXPECT_THAT(m_rightClicks, ElementsAre(m_icon->rectangle()));
    EXPECT_THAT(m_menuRequests, ElementsAre(middle));
    EXPECT_THAT(m_leftClicks, SizeIs(1));
}

TEST_F(XEmbedTrayIconTest, ATrayThatStartsLaterIsJoined)
{
    m_icon->setVisible(true);
    ASSERT_TRUE(becomes(Presence::absent));
    const auto tray = startTray();
    EXPECT_TRUE(becomes(Presence::present));
}

TEST_F(XEmbedTrayIconTest, ATrayThatWasKilledAndStartsAgainIsJoinedAgain)
{
    auto tray = startTray();
    m_icon->setVisible(true);
    for (int restart = 0; restart < 2; ++restart) {
        ASSERT_TRUE(becomes(Presence::present));
        tray->kill();
        ASSERT_TRUE(becomes(Presence::absent));
        EXPECT_EQ(m_icon->rectangle(), std::nullopt);
        tray = startTray();
    }
    ASSERT_TRUE(becomes(Presence::present));
    ASSERT_TRUE(knowsItsRectangle());
    click(m_icon->rectangle()->center(), leftButton);
    EXPECT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
}

TEST_F(XEmbedTrayIconTest, HiddenItLeavesTheTrayAndShownItReturns)
{
    const auto tray = startTray();
    m_icon->setVisible(true);
    ASSERT_TRUE(knowsItsRectangle());
    m_icon->setVisible(false);
    EXPECT_EQ(m_icon->presence(), Presence::absent);
    EXPECT_TRUE(waitUntil([this] { return seenRectangle().isEmpty(); }));
    m_icon->setVisible(true);
    ASSERT_TRUE(becomes(Presence::present));
    EXPECT_TRUE(knowsItsRectangle());
}

// In trays of all kinds

TEST_F(XEmbedTrayIconTest, WithoutATrayItIsAbsentEachTimeItIsShown)
{
    for (int time = 0; time < 2; ++time) {
        m_icon->setVisible(true);
        EXPECT_EQ(m_icon->presence(), Presence::undecided);
        EXPECT_TRUE(becomes(Presence::absent));
        m_icon->setVisible(false);
    }
}

TEST_F(XEmbedTrayIconTest, ItTellsWhoseItIs)
{
    TestTray tray(m_session.display());
    showIn(tray);
    EXPECT_EQ(tray.property("_NET_WM_NAME"), "Tessly — Open Quick Paste");
    EXPECT_EQ(tray.property("WM_CLASS"), QByteArray("tessly\0Tessly\0", 14));
    std::uint32_t processID = 0;
    const QByteArray property = tray.property("_NET_WM_PID");
    ASSERT_EQ(property.size(), static_cast<qsizetype>(sizeof processID));
    std::memcpy(&processID, property.constData(), sizeof processID);
    EXPECT_EQ(processID, static_cast<std::uint32_t>(getpid()));
}

TEST_F(XEmbedTrayIconTest, ItIsDrawnOverTheTraysBackgroundAtAnySize)
{
    constexpr std::uint32_t background = 0x204060;
    TestTray tray(m_session.display(), {.background = background});
    showIn(tray);
    for (const int side : {30, 16, 64, 300}) {
        tray.resize(static_cast<std::uint16_t>(side));
        // No larger than 256, in the middle.
        const int size = std::min(side, 256);
        const int margin = (side - size) / 2;
        const auto at = [&](double part) {
            return static_cast<std::int16_t>(margin + static_cast<int>(part * size));
        };
        EXPECT_TRUE(waitUntil([&] { return tray.pixel(at(boardX), at(boardY)) == 0x3d7ff5; }))
            << side;
        EXPECT_EQ(tray.pixel(0, 0), background) << side;
    }
}

TEST_F(XEmbedTrayIconTest, ATrayThatTellsItsColourGetsTheIconInIt)
{
    TestTray tray(m_session.display(), {.colour = {0xffff, 0x8080, 0x0101}});
    showIn(tray);
    EXPECT_TRUE(waitUntil([&] { return tray.pixel(6, 25) == 0xff8001; }));
}

TEST_F(XEmbedTrayIconTest, ATranslucentTrayGetsATranslucentIcon)
{
    TestTray tray(m_session.display(), {.isTranslucent = true, .colour = {0xffff, 0xffff, 0xffff}});
    showIn(tray);
    EXPECT_TRUE(waitUntil([&] { return tray.pixel(6, 25) == 0xffffffff; }));
    EXPECT_EQ(tray.pixel(0, 0), 0U);
}

TEST_F(XEmbedTrayIconTest, ItsRectangleFollowsItsSizeAndTheTray)
{
    TestTray tray(m_session.display());
    showIn(tray);
    ASSERT_TRUE(waitUntil([this] { return m_icon->rectangle() == QRect(400, 300, 30, 30); }));
    tray.resize(40);
    ASSERT_TRUE(waitUntil([this] { return m_icon->rectangle() == QRect(400, 300, 40, 40); }));
    tray.move(100, 200);
    EXPECT_TRUE(waitUntil([this] { return m_icon->rectangle() == QRect(100, 200, 40, 40); }));
}

TEST_F(XEmbedTrayIconTest, ClicksThatATrayPassesOnCountLikeTheUsers)
{
    TestTray tray(m_session.display());
    showIn(tray);
    tray.passClickOn(rightButton);
    ASSERT_TRUE(waitUntil([this] { return !m_menuRequests.empty(); }));
    EXPECT_THAT(m_menuRequests, ElementsAre(QPoint(405, 306)));
    EXPECT_THAT(m_rightClicks, ElementsAre(QRect(400, 300, 30, 30)));
}

TEST_F(XEmbedTrayIconTest, AButtonLetGoElsewhereIsNoClick)
{
    TestTray tray(m_session.display());
    showIn(tray);
    moveTo(QPoint(410, 310));
    m_session.run(u"xdotool"_s, {u"mousedown"_s, u"1"_s});
    moveTo(QPoint(500, 500));
    m_session.run(u"xdotool"_s, {u"mouseup"_s, u"1"_s});
    click(QPoint(410, 310), rightButton);
    ASSERT_TRUE(waitUntil([this] { return !m_rightClicks.empty(); }));
    EXPECT_THAT(m_leftClicks, IsEmpty());
}

TEST_F(XEmbedTrayIconTest, ATrayThatGoesBeforeItTookTheIconIsForgotten)
{
    {
        TestTray tray(m_session.display());
        m_icon->setVisible(true);
        ASSERT_TRUE(waitUntil([&] { return !tray.asked().empty(); }));
        EXPECT_EQ(m_icon->presence(), Presence::undecided);
    }
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(XEmbedTrayIconTest, AnIconThatWasPutOutOrDestroyedIsGoneUntilTheNextTray)
{
    TestTray tray(m_session.display());
    showIn(tray);
    tray.putOut();
    EXPECT_TRUE(becomes(Presence::absent));
    {
        TestTray second(m_session.display());
        ASSERT_TRUE(waitUntil([&] { return second.takeIcons(); }));
        ASSERT_TRUE(becomes(Presence::present));
        second.destroyIcon();
        EXPECT_TRUE(becomes(Presence::absent));
    }
    TestTray third(m_session.display());
    ASSERT_TRUE(waitUntil([&] { return third.takeIcons(); }));
    EXPECT_TRUE(becomes(Presence::present));
}

TEST_F(XEmbedTrayIconTest, ATrayThatReplacesAnotherIsJoined)
{
    TestTray first(m_session.display());
    showIn(first);
    TestTray second(m_session.display());
    ASSERT_TRUE(waitUntil([&] { return second.takeIcons(); }));
    EXPECT_TRUE(becomes(Presence::present));
    EXPECT_THAT(second.asked(), SizeIs(1));
}

TEST_F(XEmbedTrayIconTest, ATrayIsAskedOnce)
{
    m_icon->setVisible(true);
    ASSERT_TRUE(becomes(Presence::absent));
    // It has the selection before it announces itself, and either is enough to be found.
    TestTray tray(m_session.display());
    m_icon->setVisible(false);
    m_icon->setVisible(true);
    ASSERT_TRUE(waitUntil([&] { return tray.takeIcons(); }));
    ASSERT_TRUE(becomes(Presence::present));
    const auto before = tray.asked().size();
    click(QPoint(410, 310), leftButton);
    ASSERT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
    EXPECT_THAT(tray.asked(), SizeIs(before));
}

TEST_F(XEmbedTrayIconTest, HoveringIsToldAndEndsWithAPress)
{
    TestTray tray(m_session.display());
    moveTo(QPoint(10, 10));
    showIn(tray);
    ASSERT_TRUE(waitUntil([this] { return m_icon->rectangle().has_value(); }));
    moveTo(QPoint(410, 310));
    ASSERT_TRUE(waitUntil([this] { return !m_entered.empty(); }));
    EXPECT_THAT(m_entered, ElementsAre(QRect(400, 300, 30, 30)));
    EXPECT_EQ(m_left, 0);
    click(QPoint(411, 311), leftButton);
    ASSERT_TRUE(waitUntil([this] { return m_left > 0; }));
    moveTo(QPoint(10, 10));
    moveTo(QPoint(410, 310));
    ASSERT_TRUE(waitUntil([this] { return m_entered.size() == 2; }));
    moveTo(QPoint(10, 10));
    EXPECT_TRUE(waitUntil([this] { return m_left > 1; }));
}

TEST_F(XEmbedTrayIconTest, ItMayEndAtAnyTime)
{
    TestTray tray(m_session.display());
    m_icon->setVisible(true);
    m_icon.reset();
    m_icon = make();
    showIn(tray);
    m_icon.reset();
    EXPECT_TRUE(waitUntil([this] {
        return !m_session.run(u"xwininfo"_s, {u"-root"_s, u"-tree"_s}).contains("Tessly");
    }));
}

} // namespace

} // namespace tessly::test
