#include "Delay.h"

#include "SystemClock.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace tessly::test {
namespace {

TEST(Delay, EndsWhenItsTimeHasPassed)
{
    VirtualClock clock;
    bool isOver = false;
    whenDone(delay(clock, 50ms), [&] { isOver = true; });
    clock.advance(49ms);
    EXPECT_FALSE(isOver);
    clock.advance(1ms);
    EXPECT_TRUE(isOver);
    EXPECT_EQ(clock.pending(), 0U);
}

TEST(Delay, EndsByTheClockOfTheSystem)
{
    SystemClock clock;
    bool isOver = false;
    whenDone(delay(clock, 1ms), [&] { isOver = true; });
    EXPECT_TRUE(waitUntil([&] { return isOver; }));
}

} // namespace
} // namespace tessly::test
