#include "WaylandEventLoop.h"
#include "TestCompositor.h"
#include "TestSupport.h"
#include "WaylandRegistry.h"
#include "contract/EventLoopContract.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <unistd.h>
#include <wayland-client.h>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

class WaylandLoop
{
public:
    using Error = WaylandError;

    void connectAgain() { WaylandEventLoop(m_compositor.display()); }
    [[nodiscard]] WaylandEventLoop& loop() { return m_loop; }
    void start()
    {
        m_loop.start("test", [] {});
    }
    void stop() { m_loop.stop(); }

private:
    TestCompositor m_compositor;
    WaylandEventLoop m_loop{m_compositor.display()};
};

class WaylandEventLoopTest : public testing::Test
{
protected:
    void start()
    {
        m_loop.start("test", [this] { ++m_losses; });
    }

    /// Runs on the loop thread and waits for it.
    template <typename Job>
    auto onLoop(Job job)
    {
        std::promise<decltype(job())> promise;
        auto future = promise.get_future();
        m_loop.post([&] { promise.set_value(job()); });
        return future.get();
    }

    static void keepBusy(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
    }

    [[nodiscard]] TestCompositor& compositor() { return m_compositor; }
    [[nodiscard]] WaylandEventLoop& loop() { return m_loop; }
    [[nodiscard]] int losses() const { return m_losses; }

private:
    TestCompositor m_compositor;
    WaylandEventLoop m_loop{m_compositor.display()};
    std::atomic<int> m_losses = 0;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, EventLoopContract, WaylandLoop);

TEST_F(WaylandEventLoopTest, whatHasArrivedInAFileComesBeforeTimersThatAreDue)
{
    std::array<int, 2> pipe = {};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK), 0);
    start();
    std::string order;
    std::promise<void> done;
    loop().post([&] {
        loop().callAfter(1ms, [&] {
            order += 't';
            done.set_value();
        });
        // Takes its bytes one at a time: all that are there come first.
        loop().watch(pipe[0], POLLIN, [&](short) {
            char byte = 0;
            EXPECT_EQ(read(pipe[0], &byte, 1), 1);
            order += byte;
        });
        EXPECT_EQ(write(pipe[1], "abc", 3), 3);
        keepBusy(2ms);
    });
    done.get_future().wait();
    EXPECT_EQ(onLoop([&] { return order; }), "abct");
    loop().stop();
    close(pipe[0]);
    close(pipe[1]);
}

TEST_F(WaylandEventLoopTest, aFileThatAlwaysHasMoreDoesNotStopTimers)
{
    start();
    const int endless = open("/dev/zero", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(endless, 0);
    std::promise<void> done;
    loop().post([&] {
        loop().watch(endless, POLLIN, [](short) {});
        loop().callAfter(10ms, [&] { done.set_value(); });
    });
    EXPECT_EQ(done.get_future().wait_for(10s), std::future_status::ready);
    loop().stop();
    close(endless);
}

TEST_F(WaylandEventLoopTest, filesAreWatchedUntilTheyAreNot)
{
    std::array<int, 2> pipe = {};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK), 0);
    start();
    QByteArray taken;
    std::promise<void> done;
    loop().post([&] {
        const auto watch = std::make_shared<WaylandEventLoop::WatchID>();
        *watch = loop().watch(pipe[0], POLLIN, [&, watch](short events) {
            EXPECT_NE(events & POLLIN, 0);
            char byte = 0;
            EXPECT_EQ(read(pipe[0], &byte, 1), 1);
            taken.append(byte);
            if (taken.size() == 2) {
                loop().unwatch(*watch);
                done.set_value();
            }
        });
    });
    EXPECT_EQ(write(pipe[1], "abc", 3), 3);
    done.get_future().wait();
    EXPECT_EQ(onLoop([&] { return taken; }), "ab");
    loop().stop();
    close(pipe[0]);
    close(pipe[1]);
}

TEST_F(WaylandEventLoopTest, aRoundTripComesAfterWhatTheCompositorSaidBefore)
{
    WaylandRegistry registry(loop());
    EXPECT_EQ(registry.find("wl_seat"), 0U);
    loop().roundTrip(10s);
    EXPECT_NE(registry.find("wl_seat"), 0U);
    EXPECT_EQ(registry.find("no_such_thing"), 0U);
    std::atomic<int> added = 0;
    registry.setChanges({.added = [&](auto, const auto&) { ++added; }, .removed = {}});
    start();
    compositor().removeSeat();
    compositor().addSeat();
    std::promise<int> count;
    loop().post([&] { loop().awaitRoundTrip([&] { count.set_value(added); }); });
    EXPECT_EQ(count.get_future().get(), 1);
    loop().stop();
}

TEST_F(WaylandEventLoopTest, aJobComesAfterWhatTheCompositorSaidBeforeItWasPosted)
{
    WaylandRegistry registry(loop());
    loop().roundTrip(10s);
    compositor().removeSeat();
    loop().roundTrip(10s);
    int added = 0;
    registry.setChanges({.added = [&](auto, const auto&) { ++added; }, .removed = {}});
    std::array<int, 2> pipe = {};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK), 0);
    std::promise<int> known;
    start();
    loop().post([&] {
        const auto watch = std::make_shared<WaylandEventLoop::WatchID>();
        // Files are served after the compositor has been listened to, and jobs after files.
        *watch = loop().watch(pipe[0], POLLIN, [&, watch](short) {
            loop().unwatch(*watch);
            compositor().addSeat();
            pollfd file = {
                .fd = wl_display_get_fd(loop().display()), .events = POLLIN, .revents = 0};
            EXPECT_EQ(poll(&file, 1, 10'000), 1);
            loop().post([&] { known.set_value(added); });
        });
        EXPECT_EQ(write(pipe[1], "a", 1), 1);
    });
    EXPECT_EQ(known.get_future().get(), 1);
    loop().stop();
    close(pipe[0]);
    close(pipe[1]);
}

TEST_F(WaylandEventLoopTest, anUnansweredRoundTripIsAnError)
{
    compositor().freeze();
    EXPECT_THROW(loop().roundTrip(50ms), WaylandError);
}

TEST_F(WaylandEventLoopTest, theCompositorsEndIsToldOnceAndJobsAndTimersRunOn)
{
    start();
    compositor().end();
    ASSERT_TRUE(waitUntil([this] { return losses() > 0; }));
    EXPECT_EQ(onLoop([] { return 7; }), 7);
    std::promise<void> timer;
    loop().post([&] {
        loop().awaitRoundTrip([] { ADD_FAILURE() << "nobody answers"; });
        loop().callAfter(1ms, [&] { timer.set_value(); });
    });
    timer.get_future().wait();
    loop().stop();
    EXPECT_EQ(losses(), 1);
}

TEST_F(WaylandEventLoopTest, anEndFromBeforeTheStartIsToldToo)
{
    compositor().end();
    EXPECT_THROW(loop().roundTrip(10s), WaylandError);
    start();
    EXPECT_TRUE(waitUntil([this] { return losses() == 1; }));
}

TEST_F(WaylandEventLoopTest, stopsAlsoWhileTheCompositorTakesNothing)
{
    start();
    compositor().freeze();
    std::atomic<int> answers = 0;
    std::promise<void> begun;
    loop().post([&begun] { begun.set_value(); });
    begun.get_future().wait();
    for (int number = 0; number < 20'000; ++number) {
        loop().post([this, &answers] { loop().awaitRoundTrip([&answers] { ++answers; }); });
    }
    loop().stop();
    EXPECT_EQ(answers, 0);
    compositor().thaw();
}

TEST_F(WaylandEventLoopTest, aMissingCompositorIsAnError)
{
    EXPECT_THROW(WaylandEventLoop("/nowhere/at/all"), WaylandError);
}

} // namespace tessly::test
