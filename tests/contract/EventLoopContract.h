#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace tessly::test {

/// What holds for the thread of every connection. `Subject` has a connection to a display server of
/// its own:
///
///   EventLoop& loop();   // not started yet
///   void start();
///   void stop();
///   void connectAgain(); // makes another one
///   using Error          // what that throws if it cannot be
template <typename Subject>
class EventLoopContract : public testing::Test
{
protected:
    [[nodiscard]] auto& loop() { return m_subject.loop(); }

    /// Runs on the loop thread and waits for it.
    template <typename Job>
    auto onLoop(Job job)
    {
        std::promise<decltype(job())> promise;
        auto future = promise.get_future();
        loop().post([&] { promise.set_value(job()); });
        return future.get();
    }
    /// As a thread that does not get the processor.
    static void keepBusy(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
    }

    Subject m_subject;
};

TYPED_TEST_SUITE_P(EventLoopContract);

TYPED_TEST_P(EventLoopContract, JobsRunInTheirOrderAlsoThoseFromBeforeTheStart)
{
    std::vector<int> order;
    for (int number = 0; number < 3; ++number) {
        this->loop().post([&order, number] { order.push_back(number); });
    }
    this->m_subject.start();
    this->loop().post([&order] { order.push_back(3); });
    this->m_subject.stop();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TYPED_TEST_P(EventLoopContract, TimersRunWhenDueAndNotOnceCancelled)
{
    using namespace std::chrono_literals;
    auto& loop = this->loop();
    this->m_subject.start();
    std::vector<int> order;
    std::promise<void> done;
    loop.post([&] {
        loop.callAfter(30ms, [&] {
            order.push_back(2);
            done.set_value();
        });
        const auto cancelled = loop.callAfter(20ms, [&] { order.push_back(-1); });
        loop.callAfter(10ms, [&, cancelled] {
            order.push_back(1);
            loop.cancel(cancelled);
        });
    });
    done.get_future().wait();
    EXPECT_EQ(this->onLoop([&] { return order; }), (std::vector<int>{1, 2}));
}

TYPED_TEST_P(EventLoopContract, TimersThatAreLateRunInTheOrderInWhichTheyWereDue)
{
    using namespace std::chrono_literals;
    auto& loop = this->loop();
    this->m_subject.start();
    std::vector<int> order;
    std::promise<void> done;
    loop.post([&] {
        loop.callAfter(60ms, [&] {
            order.push_back(3);
            done.set_value();
        });
        loop.callAfter(20ms, [&] { order.push_back(1); });
        loop.callAfter(40ms, [&] { order.push_back(2); });
        this->keepBusy(61ms);
    });
    done.get_future().wait();
    EXPECT_EQ(this->onLoop([&] { return order; }), (std::vector<int>{1, 2, 3}));
}

TYPED_TEST_P(EventLoopContract, TimersDoNotMissWhatPassedWhileTheLoopStoodStill)
{
    using namespace std::chrono_literals;
    auto& loop = this->loop();
    this->m_subject.start();
    std::string order;
    std::promise<void> done;
    loop.post([&] {
        loop.callAfter(400ms, [&] {
            order += 'b';
            done.set_value();
        });
        this->keepBusy(500ms);
        loop.callAfter(100ms, [&] { order += 'a'; });
    });
    done.get_future().wait();
    EXPECT_EQ(this->onLoop([&] { return order; }), "ab");
}

TYPED_TEST_P(EventLoopContract, WithoutAFileThatCanBeOpenedItCannotBe)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "to look at memory, the sanitizer opens files itself";
#endif
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{.rlim_cur = 0, .rlim_max = limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_THROW(this->m_subject.connectAgain(), typename TypeParam::Error);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_NO_THROW(this->m_subject.connectAgain());
}

REGISTER_TYPED_TEST_SUITE_P(
    EventLoopContract, WithoutAFileThatCanBeOpenedItCannotBe,
    JobsRunInTheirOrderAlsoThoseFromBeforeTheStart, TimersRunWhenDueAndNotOnceCancelled,
    TimersThatAreLateRunInTheOrderInWhichTheyWereDue,
    TimersDoNotMissWhatPassedWhileTheLoopStoodStill);

} // namespace tessly::test
