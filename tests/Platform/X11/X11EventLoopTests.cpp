#include "TestSupport.h"
#include "X11EventLoop.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <future>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

class X11EventLoopTest : public testing::Test
{
protected:
    void start()
    {
        m_loop.start(
            "test", {.event = [this](const auto&) { ++m_events; }, .lost = [this] { ++m_losses; }});
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

    [[nodiscard]] XSession& session() { return m_session; }
    [[nodiscard]] X11EventLoop& loop() { return m_loop; }
    [[nodiscard]] int losses() const { return m_losses; }

private:
    XSession m_session{XSession::WindowManager::none};
    X11EventLoop m_loop{m_session.display().toStdString()};
    std::atomic<int> m_events = 0;
    std::atomic<int> m_losses = 0;
};

} // namespace

TEST_F(X11EventLoopTest, jobsRunInTheirOrderAlsoThoseFromBeforeTheStart)
{
    std::vector<int> order;
    for (int number = 0; number < 3; ++number) {
        loop().post([&order, number] { order.push_back(number); });
    }
    start();
    loop().post([&order] { order.push_back(3); });
    loop().stop();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(X11EventLoopTest, timersRunWhenDueAndNotOnceCancelled)
{
    start();
    std::vector<int> order;
    std::promise<void> done;
    loop().post([&] {
        loop().callAfter(30ms, [&] {
            order.push_back(2);
            done.set_value();
        });
        const auto cancelled = loop().callAfter(20ms, [&] { order.push_back(-1); });
        loop().callAfter(10ms, [&, cancelled] {
            order.push_back(1);
            loop().cancel(cancelled);
        });
    });
    done.get_future().wait();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(X11EventLoopTest, atomsAreFoundByNameAndBack)
{
    loop().learnAtoms({"TESSLY_A", "TESSLY_B"});
    EXPECT_NE(loop().atom("TESSLY_A"), loop().atom("TESSLY_B"));
    EXPECT_EQ(loop().atomName(loop().atom("TESSLY_A")), "TESSLY_A");
    EXPECT_EQ(loop().atomName(XCB_ATOM_PRIMARY), "PRIMARY");
    EXPECT_EQ(loop().atomName(987654), "");
}

TEST_F(X11EventLoopTest, namesAreAwaitedTogether)
{
    start();
    std::promise<std::vector<std::string>> names;
    loop().post([&] {
        loop().awaitAtomNames(
            {XCB_ATOM_PRIMARY, 987654, XCB_ATOM_STRING, XCB_ATOM_NONE},
            [&](std::vector<std::string> all) { names.set_value(all); });
    });
    EXPECT_EQ(names.get_future().get(), (std::vector<std::string>{"PRIMARY", "", "STRING", ""}));
}

TEST_F(X11EventLoopTest, repliesComeInOrderAndErrorsAreNull)
{
    start();
    std::vector<bool> replies;
    std::promise<void> done;
    loop().post([&] {
        const auto note = [&](const xcb_get_geometry_reply_t* reply) {
            replies.push_back(reply != nullptr);
            if (replies.size() == 3) {
                done.set_value();
            }
        };
        for (const xcb_window_t window : {loop().root(), xcb_window_t{0x7777}, loop().root()}) {
            loop().awaitReply<xcb_get_geometry_reply_t>(
                xcb_get_geometry(loop().connection(), window), note);
        }
        EXPECT_TRUE(replies.empty());
    });
    done.get_future().wait();
    EXPECT_EQ(replies, (std::vector<bool>{true, false, true}));
}

TEST_F(X11EventLoopTest, theServersEndIsToldOnceAndJobsAndTimersRunOn)
{
    start();
    session().killServer();
    ASSERT_TRUE(waitUntil([this] { return losses() > 0; }));
    EXPECT_EQ(onLoop([] { return 7; }), 7);
    std::promise<bool> reply;
    loop().post([&] {
        loop().callAfter(1ms, [&] {
            loop().awaitReply<xcb_get_geometry_reply_t>(
                xcb_get_geometry(loop().connection(), loop().root()),
                [&](const auto* geometry) { reply.set_value(geometry != nullptr); });
        });
    });
    EXPECT_FALSE(reply.get_future().get());
    EXPECT_EQ(onLoop([this] { return loop().atom("TESSLY_NEW"); }), XCB_ATOM_NONE);
    loop().stop();
    EXPECT_EQ(losses(), 1);
}

TEST_F(X11EventLoopTest, stopsAlsoWhileTheServerTakesNothing)
{
    start();
    const auto pid = static_cast<pid_t>(session().serverProcessID());
    kill(pid, SIGSTOP);
    // More than the socket holds, so that the thread hangs in writing.
    loop().post([this] {
        const std::vector<char> data(200'000);
        for (int round = 0; round < 50; ++round) {
            xcb_change_property(
                loop().connection(), XCB_PROP_MODE_REPLACE, loop().root(), XCB_ATOM_CUT_BUFFER0,
                XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(data.size()), data.data());
        }
    });
    loop().stop();
    kill(pid, SIGCONT);
}

TEST_F(X11EventLoopTest, aMissingServerIsAnError)
{
    EXPECT_THROW(X11EventLoop(":987"), X11Error);
}

} // namespace tessly::test
