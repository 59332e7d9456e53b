#include "X11EventLoop.h"
#include "FrozenProcess.h"
#include "TestSupport.h"
#include "XSession.h"
#include "contract/EventLoopContract.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

class X11Loop
{
public:
    using Error = X11Error;

    void connectAgain() { X11EventLoop(m_session.display().toStdString()); }
    [[nodiscard]] X11EventLoop& loop() { return m_loop; }
    void start() { m_loop.start("test", {}); }
    void stop() { m_loop.stop(); }

private:
    XSession m_session{XSession::WindowManager::none};
    X11EventLoop m_loop{m_session.display().toStdString()};
};

class X11EventLoopTest : public testing::Test
{
protected:
    /// The handler of events runs on the loop thread.
    void start(std::function<void()> event = [] {})
    {
        m_loop.start(
            "test", {.event = [event = std::move(event)](const auto&) { event(); },
                     .lost = [this] { ++m_losses; }});
    }

    // Loop thread:

    /// A window whose changes are events.
    [[nodiscard]] xcb_window_t makeWindow()
    {
        const xcb_window_t window = xcb_generate_id(m_loop.connection());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(
            m_loop.connection(), 0, window, m_loop.root(), 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        return window;
    }
    /// Makes an event, which is only asked for: the server is not waited for.
    void change(xcb_window_t window)
    {
        xcb_change_property(
            m_loop.connection(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
            8, 0, nullptr);
    }
    /// Waits until all that was asked for has arrived. Nothing of it is handled yet.
    void fetch()
    {
        xcb_connection_t* const connection = m_loop.connection();
        EXPECT_TRUE(
            owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)));
    }
    static void keepBusy(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
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
    std::atomic<int> m_losses = 0;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(X11, EventLoopContract, X11Loop);

TEST_F(X11EventLoopTest, whatHasArrivedComesBeforeTimersThatAreDue)
{
    std::string order;
    std::promise<void> done;
    start([&order] { order += 'e'; });
    loop().post([&] {
        loop().callAfter(1ms, [&] {
            order += 't';
            done.set_value();
        });
        const xcb_window_t window = makeWindow();
        for (int event = 0; event < 500; ++event) {
            change(window);
        }
        loop().awaitReply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus(loop().connection()), [&order](const auto*) { order += 'r'; });
        fetch();
        keepBusy(2ms);
    });
    done.get_future().wait();
    EXPECT_EQ(onLoop([&] { return order; }), std::string(500, 'e') + "rt");
}

TEST_F(X11EventLoopTest, aFloodOfEventsDoesNotStopTimers)
{
    std::atomic<bool> isOver = false;
    xcb_window_t window = XCB_WINDOW_NONE;
    // Each event has the next one there before the loop can run out of them.
    start([&] {
        if (!isOver) {
            change(window);
            fetch();
        }
    });
    std::promise<void> done;
    loop().post([&] {
        window = makeWindow();
        change(window);
        fetch();
        loop().callAfter(10ms, [&] { done.set_value(); });
    });
    EXPECT_EQ(done.get_future().wait_for(10s), std::future_status::ready);
    isOver = true;
    loop().stop();
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
    freeze(session().server());
    // However much the socket holds, the thread hangs in writing in the end.
    std::promise<void> begun;
    loop().post([&] {
        begun.set_value();
        const std::vector<char> data(200'000);
        while (xcb_connection_has_error(loop().connection()) == 0) {
            xcb_change_property(
                loop().connection(), XCB_PROP_MODE_REPLACE, loop().root(), XCB_ATOM_CUT_BUFFER0,
                XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(data.size()), data.data());
        }
    });
    begun.get_future().wait();
    loop().stop();
    thaw(session().server());
}

TEST_F(X11EventLoopTest, aMissingServerIsAnError)
{
    EXPECT_THROW(X11EventLoop(":987"), X11Error);
}

} // namespace tessly::test
