#include "SwaySession.h"
#include "TestSupport.h"
#include "WaylandDesktop.h"
#include "WaylandMouse.h"
#include "WaylandOutsideClickMonitor.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace tessly::test {

namespace {

using Pointer = std::optional<WaylandGround::Pointer>;

class SwayGroundTest : public testing::Test
{
protected:
    /// Once the ground of the watch is laid.
    [[nodiscard]] Pointer laid() const
    {
        const auto pointer = m_monitor.pointer();
        EXPECT_TRUE(waitUntil([&pointer] { return pointer.isFinished(); }));
        return pointer.isFinished() ? pointer.result() : Pointer();
    }
    void watch()
    {
        m_watch.reset();
        m_watch = m_monitor.watch([this] { ++m_presses; });
    }
    void endWatch() { m_watch.reset(); }
    [[nodiscard]] int presses() const { return m_presses; }
    /// What the compositor has told by now has been heard.
    void settle()
    {
        const auto heard = m_desktop.catchUp();
        EXPECT_TRUE(waitUntil([&heard] { return heard.isFinished(); }));
        QCoreApplication::processEvents();
    }

private:
    WaylandDesktop m_desktop{{.display = SwaySession::shared().display()}};
    WaylandOutsideClickMonitor m_monitor{m_desktop};
    int m_presses = 0;
    std::unique_ptr<OutsideClickMonitor::Watch> m_watch;
};

} // namespace

TEST_F(SwayGroundTest, whereThePointerLiesIsKnownOnceTheGroundIsLaid)
{
    WaylandMouse mouse(SwaySession::shared().display());
    mouse.move(250, 500);
    watch();
    const Pointer first = laid();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->output, "HEADLESS-1");
    // Half a pixel more or less.
    EXPECT_NEAR(first->x, 1280 * 0.25, 1);
    EXPECT_NEAR(first->y, 720 * 0.5, 1);

    endWatch();
    mouse.move(750, 250);
    watch();
    const Pointer second = laid();
    ASSERT_TRUE(second);
    EXPECT_NEAR(second->x, 1280 * 0.75, 1);
    EXPECT_NEAR(second->y, 720 * 0.25, 1);
}

TEST_F(SwayGroundTest, pressesAreToldAsLongAsThereIsAWatch)
{
    WaylandMouse mouse(SwaySession::shared().display());
    mouse.move(500, 500);
    watch();
    ASSERT_TRUE(laid());
    EXPECT_EQ(presses(), 0);
    mouse.click();
    EXPECT_TRUE(waitUntil([this] { return presses() == 1; }));
    mouse.click();
    EXPECT_TRUE(waitUntil([this] { return presses() == 2; }));

    endWatch();
    settle();
    mouse.click();
    settle();
    EXPECT_EQ(presses(), 2);
}

TEST_F(SwayGroundTest, aPressThatLeadsToNothingTakesTheGroundAway)
{
    WaylandMouse mouse(SwaySession::shared().display());
    mouse.move(500, 500);
    watch();
    ASSERT_TRUE(laid());
    mouse.click();
    ASSERT_TRUE(waitUntil([this] { return presses() == 1; }));
    EXPECT_TRUE(waitUntil([this, &mouse] {
        const int before = presses();
        mouse.click();
        settle();
        return presses() == before;
    }));
}

TEST_F(SwayGroundTest, aWatchThatComesRightAfterAnotherHasAGroundOfItsOwn)
{
    WaylandMouse mouse(SwaySession::shared().display());
    mouse.move(500, 500);
    watch();
    watch();
    ASSERT_TRUE(laid());
    mouse.click();
    EXPECT_TRUE(waitUntil([this] { return presses() > 0; }));
    settle();
    EXPECT_EQ(presses(), 1);
}

TEST_F(SwayGroundTest, withoutAPointerTheGroundIsLaidAllTheSame)
{
    watch();
    EXPECT_FALSE(laid());
    // Plugged in later.
    WaylandMouse mouse(SwaySession::shared().display());
    mouse.move(500, 500);
    endWatch();
    settle();
    watch();
    EXPECT_TRUE(laid());
}

TEST_F(SwayGroundTest, withoutAWatchThereIsNothingToWaitFor)
{
    EXPECT_FALSE(laid());
}

} // namespace tessly::test
