#include "X11OutsideClickMonitor.h"

#include "TestDesktop.h"

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class X11OutsideClickMonitorTest : public testing::Test
{
protected:
    X11OutsideClickMonitorTest()
    {
        auto own = TestDesktop::look("tessly", "Tessly");
        own.processID = getpid();
        own.isUnmanaged = true;
        own.x = 600;
        m_own = m_desktop.client().show(own);
        m_foreign = m_desktop.client().show(TestDesktop::look("a", "A"));
        EXPECT_TRUE(m_desktop.comesToFront(u"A"_s));
        m_monitor = std::make_unique<X11OutsideClickMonitor>(m_desktop.desktop());
    }

    TestDesktop& desktop() { return m_desktop; }
    X11OutsideClickMonitor& monitor() { return *m_monitor; }
    void endMonitor() { m_monitor.reset(); }
    [[nodiscard]] xcb_window_t own() const { return m_own; }
    [[nodiscard]] xcb_window_t foreign() const { return m_foreign; }

    void click(int button, xcb_window_t window)
    {
        m_desktop.session().run(
            u"xdotool"_s, {u"mousemove"_s, u"--window"_s, QString::number(window), u"20"_s, u"20"_s,
                           u"click"_s, QString::number(button)});
    }

    /// Watches until the server is known to tell: a press counts only from then on.
    std::unique_ptr<OutsideClickMonitor::Watch> watch(int& count)
    {
        auto watch = m_monitor->watch([&count] { ++count; });
        EXPECT_TRUE(waitUntil([&] {
            click(1, m_foreign);
            return count > 0;
        }));
        settle(count);
        count = 0;
        return watch;
    }

    /// Until all presses so far have been told: one more is, and it is the last.
    void settle(int& count)
    {
        for (int before = -1; before != count;) {
            before = count;
            m_desktop.session().run(u"xdotool"_s, {u"getactivewindow"_s});
            QCoreApplication::processEvents();
        }
    }

private:
    TestDesktop m_desktop;
    std::unique_ptr<X11OutsideClickMonitor> m_monitor;
    xcb_window_t m_own = XCB_WINDOW_NONE;
    xcb_window_t m_foreign = XCB_WINDOW_NONE;
};

TEST_F(X11OutsideClickMonitorTest, tellsOfLeftAndRightPresses)
{
    int count = 0;
    const auto watching = watch(count);
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return count == 1; }));
    click(3, foreign());
    EXPECT_TRUE(waitUntil([&] { return count == 2; }));
    // The desktop itself.
    desktop().session().run(
        u"xdotool"_s, {u"mousemove"_s, u"1000"_s, u"700"_s, u"click"_s, u"1"_s});
    EXPECT_TRUE(waitUntil([&] { return count == 3; }));
}

TEST_F(X11OutsideClickMonitorTest, otherButtonsAndTheWheelDoNotCount)
{
    int count = 0;
    const auto watching = watch(count);
    for (const int button : {2, 4, 5, 8}) {
        click(button, foreign());
    }
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return count > 0; }));
    settle(count);
    EXPECT_EQ(count, 1);
}

TEST_F(X11OutsideClickMonitorTest, theProgramsOwnWindowsDoNotCount)
{
    XClient::Look inner;
    inner.parent = own();
    inner.x = 10;
    inner.y = 10;
    const auto child = desktop().client().show(inner);
    int count = 0;
    const auto watching = watch(count);
    click(1, own());
    click(3, child);
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return count > 0; }));
    settle(count);
    EXPECT_EQ(count, 1);
}

TEST_F(X11OutsideClickMonitorTest, hearsOfPressesAlsoWhileThePointerIsGrabbed)
{
    int count = 0;
    const auto watching = watch(count);
    desktop().client().grabPointer();
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return count == 1; }));
}

TEST_F(X11OutsideClickMonitorTest, everyWatchHears)
{
    int first = 0;
    int second = 0;
    const auto watching = watch(first);
    const auto also = monitor().watch([&] { ++second; });
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return first == 1 && second == 1; }));
}

TEST_F(X11OutsideClickMonitorTest, aWatchThatEndedIsSilentAndTheServerIsNotAskedForMore)
{
    int ended = 0;
    int count = 0;
    watch(ended).reset();
    click(1, foreign());
    const auto watching = watch(count);
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return count == 1; }));
    EXPECT_EQ(ended, 0);
}

TEST_F(X11OutsideClickMonitorTest, aWatchMayEndItselfAndOthers)
{
    int count = 0;
    auto first = watch(count);
    int told = 0;
    std::unique_ptr<OutsideClickMonitor::Watch> second;
    std::unique_ptr<OutsideClickMonitor::Watch> third;
    second = monitor().watch([&] {
        ++told;
        second.reset();
        third.reset();
    });
    third = monitor().watch([&] { told += 100; });
    click(1, foreign());
    EXPECT_TRUE(waitUntil([&] { return told > 0; }));
    settle(told);
    EXPECT_EQ(told, 1);
}

TEST_F(X11OutsideClickMonitorTest, aWatchMayOutliveTheMonitor)
{
    int count = 0;
    auto watching = watch(count);
    endMonitor();
    click(1, foreign());
    settle(count);
    EXPECT_EQ(count, 0);
    watching.reset();
}

TEST_F(X11OutsideClickMonitorTest, isSilentOnceTheServerIsGone)
{
    int count = 0;
    auto watching = watch(count);
    desktop().session().killServer();
    EXPECT_TRUE(desktop().nothingComesToFront());
    watching.reset();
    const auto another = monitor().watch([&] { ++count; });
    EXPECT_NE(another, nullptr);
    EXPECT_EQ(count, 0);
}

} // namespace
} // namespace tessly::test
