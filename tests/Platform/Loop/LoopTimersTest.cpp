#include "LoopTimers.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

using Arrived = LoopTimers::Arrived;

class LoopTimersTest : public testing::Test
{
protected:
    static constexpr LoopTimers::Time start{1000h};

    LoopTimers::ID after(std::chrono::milliseconds delay, char name)
    {
        return timers().callAfter(m_clock, delay, [this, name] { m_ran += name; });
    }
    /// The clock moves on while the loop is at work.
    void pass(std::chrono::milliseconds time) { m_clock += time; }
    /// The loop waits as long as it may, in as many turns as that takes.
    void wait(std::chrono::milliseconds time)
    {
        while (time > 0ms) {
            const int timeout = timers().pollTimeout(m_clock);
            const auto part =
                timeout < 0
                    ? time
                    : std::min<std::chrono::milliseconds>(time, std::chrono::milliseconds(timeout));
            timers().beginWait(timeout);
            pass(part);
            if (part == 0ms) {
                return;
            }
            time -= part;
        }
    }
    bool run(Arrived arrived = Arrived::nothing) { return timers().runDue(m_clock, arrived); }

    [[nodiscard]] LoopTimers& timers() { return m_timers; }
    [[nodiscard]] LoopTimers::Time clock() const { return m_clock; }
    [[nodiscard]] LoopTimers::Time now() { return m_timers.now(m_clock); }
    [[nodiscard]] int timeout() { return m_timers.pollTimeout(m_clock); }
    [[nodiscard]] const std::string& ran() const { return m_ran; }

private:
    LoopTimers::Time m_clock = start;
    LoopTimers m_timers{start};
    std::string m_ran;
};

} // namespace

TEST_F(LoopTimersTest, theyRunOnceEachWhenTheyAreDueAndNotBefore)
{
    after(20ms, 'a');
    wait(19ms);
    EXPECT_FALSE(run());
    EXPECT_EQ(ran(), "");
    wait(1ms);
    EXPECT_TRUE(run());
    EXPECT_EQ(ran(), "a");
    wait(1s);
    EXPECT_FALSE(run());
    EXPECT_EQ(ran(), "a");
}

TEST_F(LoopTimersTest, thoseThatAreLateRunInTheOrderInWhichTheyWereDue)
{
    after(60ms, 'c');
    after(20ms, 'a');
    after(40ms, 'b');
    after(60ms, 'd');
    after(90ms, 'e');
    pass(70ms);
    run();
    EXPECT_EQ(ran(), "abcd");
}

TEST_F(LoopTimersTest, oneThatIsCancelledDoesNotRun)
{
    const auto first = after(10ms, 'a');
    after(10ms, 'b');
    timers().cancel(first);
    pass(10ms);
    run();
    timers().cancel(first);
    EXPECT_EQ(ran(), "b");
}

TEST_F(LoopTimersTest, oneMayCancelAnotherThatIsDueToo)
{
    LoopTimers::ID second = 0;
    timers().callAfter(clock(), 10ms, [&] { timers().cancel(second); });
    second = after(10ms, 'b');
    after(10ms, 'c');
    pass(20ms);
    run();
    EXPECT_EQ(ran(), "c");
}

TEST_F(LoopTimersTest, whatOneAddsIsLeftToTheNextTurn)
{
    timers().callAfter(clock(), 10ms, [&] { after(0ms, 'b'); });
    after(15ms, 'a');
    pass(20ms);
    EXPECT_TRUE(run());
    EXPECT_EQ(ran(), "a");
    EXPECT_EQ(timeout(), 0);
    EXPECT_TRUE(run());
    EXPECT_EQ(ran(), "ab");
}

TEST_F(LoopTimersTest, theLoopWaitsForTheEarliestRoundedUp)
{
    EXPECT_EQ(timeout(), -1);
    after(40ms, 'b');
    const auto first = after(20ms, 'a');
    EXPECT_EQ(timeout(), 20);
    timers().cancel(first);
    EXPECT_EQ(timeout(), 40);
    EXPECT_EQ(timers().pollTimeout(clock() + std::chrono::microseconds(39'200)), 1);
    EXPECT_EQ(timers().pollTimeout(clock() + 50ms), 0);
}

TEST_F(LoopTimersTest, theLoopWaitsInPiecesWhileThereAreTimers)
{
    after(30s, 'a');
    EXPECT_EQ(timeout(), LoopTimers::longestWait.count());
    wait(29'999ms);
    EXPECT_FALSE(run());
    wait(1ms);
    EXPECT_TRUE(run());
}

TEST_F(LoopTimersTest, whatHasArrivedComesFirst)
{
    after(10ms, 'a');
    pass(10ms);
    EXPECT_FALSE(run(Arrived::something));
    EXPECT_EQ(timeout(), 0);
    EXPECT_TRUE(run(Arrived::nothing));
    EXPECT_EQ(ran(), "a");
}

TEST_F(LoopTimersTest, aFloodDoesNotStopThem)
{
    for (int round = 0; round < 2; ++round) {
        after(10ms, 'a');
        pass(10ms);
        for (int turn = 0; turn < LoopTimers::turnsPutOff; ++turn) {
            EXPECT_FALSE(run(Arrived::something));
        }
        EXPECT_TRUE(run(Arrived::something));
    }
    EXPECT_EQ(ran(), "aa");
}

TEST_F(LoopTimersTest, timeDuringWhichTheLoopStoodStillDoesNotCount)
{
    after(1s, 'a');
    wait(600ms);
    EXPECT_FALSE(run());
    pass(1h);
    EXPECT_FALSE(run());
    EXPECT_EQ(now() - start, 600ms + LoopTimers::latenessAllowed);
    wait(299ms);
    EXPECT_FALSE(run());
    wait(1ms);
    EXPECT_TRUE(run());
}

TEST_F(LoopTimersTest, aPauseInTheMiddleOfAWaitTakesNoMoreThanTheWait)
{
    after(10s, 'a');
    timers().beginWait(timeout());
    pass(1h);
    EXPECT_FALSE(run());
    EXPECT_EQ(now() - start, LoopTimers::longestWait + LoopTimers::latenessAllowed);
}

TEST_F(LoopTimersTest, oneThatIsAddedAfterAPauseIsNotLate)
{
    pass(1h);
    after(10ms, 'a');
    EXPECT_EQ(timeout(), 10);
    wait(10ms);
    EXPECT_TRUE(run());
}

TEST_F(LoopTimersTest, littleLatenessCountsAsTime)
{
    after(100ms, 'a');
    timers().beginWait(timeout());
    pass(100ms + LoopTimers::latenessAllowed);
    EXPECT_TRUE(run());
    EXPECT_EQ(now(), clock());
}

TEST_F(LoopTimersTest, aWaitWithoutAnEndCountsWhole)
{
    timers().beginWait(timeout());
    pass(1h);
    EXPECT_EQ(now(), clock());
}

} // namespace tessly::test
