#include "ClipboardMonitorFixture.h"

#include "LogCapture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;

namespace tessly::test {

namespace {

TEST_F(NotifiedMonitorTest, SettlingReadsAtOnceWhatWasCopied)
{
    start();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    settle();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(texts(), ElementsAre("hello"));
}

TEST_F(NotifiedMonitorTest, SettlingWaitsForWhatIsBeingRead)
{
    start();
    m_converter.gate().hold();
    m_pasteboard.copy({.otherImage = FakeImageConverter::image("1")});
    tick();
    std::size_t capturesThen = 0;
    whenDone(m_monitor->settle(1s), [&] { capturesThen = m_captures.size(); });
    settle();
    EXPECT_EQ(capturesThen, 0U);
    m_converter.gate().open();
    settle();
    EXPECT_EQ(capturesThen, 1U);
}

TEST_F(NotifiedMonitorTest, SettlingDoesNotWaitForAnOwnerThatHangs)
{
    start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    m_clock.advance(999ms);
    EXPECT_FALSE(isSettled);
    m_clock.advance(1ms);
    EXPECT_TRUE(isSettled);
    m_pasteboard.gate().open();
    settle();
    EXPECT_THAT(texts(), ElementsAre("hello")) << "it is recorded all the same";
}

TEST_F(NotifiedMonitorTest, SettlingEndsWhenTheMonitorStops)
{
    start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("hello");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    settle();
    const LogCapture log;
    m_monitor->stop();
    settle();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s), SizeIs(1));
}

TEST_F(NotifiedMonitorTest, SettlingWaitsForACopyThatOvertakesAnother)
{
    start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("older");
    tick();
    m_pasteboard.copyText("newer");
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    settle();
    EXPECT_FALSE(isSettled);
    m_pasteboard.gate().open();
    settle();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

} // namespace
} // namespace tessly::test
