#include "WaylandDesktopTest.h"

namespace tessly::test {

using WaylandDesktopSeatsTest = WaylandDesktopTest;

// What was in front lately.

TEST_F(WaylandDesktopSeatsTest, allNamesOfAnApplicationAreKnown)
{
    install(u"prompt"_s, "Name=Prompt\nStartupWMClass=Prompter\n");
    open("Prompter");
    EXPECT_EQ(inFront(u"prompt"_s)->names(), QStringList({u"prompt"_s, u"Prompter"_s}));
    open("unknown");
    EXPECT_EQ(inFront(u"unknown"_s)->names(), QStringList(u"unknown"_s));
    open({});
    EXPECT_EQ(inFront(std::nullopt)->names(), QStringList());
}

TEST_F(WaylandDesktopSeatsTest, aWindowThatWasInFrontForAMomentIsKnown)
{
    const auto editor = open("editor");
    const auto application = inFront(u"editor"_s);
    freeze([editor](auto& toplevels) {
        toplevels.setActivated(editor, false);
        const auto keeper = toplevels.open("keeper", true);
        toplevels.close(keeper);
        toplevels.setActivated(editor, true);
    });
    auto answer = inFrontLately();
    EXPECT_FALSE(answer.isReady());
    compositor().thaw();
    const auto applications = await(std::move(answer));
    ASSERT_EQ(applications.size(), 2U);
    EXPECT_EQ(applications[0]->bundleIdentifier(), u"keeper"_s);
    EXPECT_EQ(applications[1], application);
}

TEST_F(WaylandDesktopSeatsTest, untilAConnectionIsMadeAgainTheAnswerComesFromMemory)
{
    const auto keeper = open("keeper");
    const auto first = inFront(u"keeper"_s);
    close(keeper);
    open("editor");
    const auto second = inFront(u"editor"_s);
    compositor().run([this] { toplevels().disconnect(); });
    compositor().freeze();
    ASSERT_TRUE(waitUntil([&] { return second->isTerminated(); }));
    const std::vector<std::shared_ptr<RunningApplication>> known = {first, second};
    EXPECT_EQ(await(inFrontLately()), known);
    int changes = 0;
    setFrontmostChanged([&] { ++changes; });
    compositor().thaw();
    ASSERT_TRUE(waitUntil([&] { return front() != second; }));
    const std::vector<std::shared_ptr<RunningApplication>> now = {first, second, front()};
    EXPECT_EQ(await(inFrontLately()), now) << "what was known before is still known";
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

TEST_F(WaylandDesktopSeatsTest, aConnectionThatEndsIsAnAnswer)
{
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().freeze();
    auto answer = inFrontLately();
    compositor().end();
    EXPECT_EQ(await(std::move(answer)).back(), application) << "the last that is known";
}

TEST_F(WaylandDesktopSeatsTest, aCompositorThatDoesNotAnswerInTimeIsNotWaitedFor)
{
    m_timeout = std::chrono::milliseconds(300);
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().freeze();
    EXPECT_EQ(await(inFrontLately()).back(), application);
    compositor().thaw();
}

TEST_F(WaylandDesktopSeatsTest, aQuestionMayOutliveTheDesktop)
{
    open("editor");
    inFront(u"editor"_s);
    setFrontmostChanged([] { FAIL() << "called though it is gone"; });
    compositor().freeze();
    auto answer = inFrontLately();
    endDesktop();
    EXPECT_EQ(await(std::move(answer)).back(), nullptr);
    compositor().thaw();
}

TEST_F(WaylandDesktopSeatsTest, whoWantsToHearOfTheFrontIsCalledOnTheMainThread)
{
    int changes = 0;
    setFrontmostChanged([&, main = QThread::currentThread()] {
        EXPECT_EQ(QThread::currentThread(), main);
        ++changes;
    });
    const auto window = open("editor");
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
    changes = 0;
    setAppID(window, "other");
    inFront(u"other"_s);
    EXPECT_EQ(changes, 0) << "the same window";
    close(window);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

// Seats.

TEST_F(WaylandDesktopWithoutSeatTest, theSeatMayComeLater)
{
    EXPECT_TRUE(desktop().hasVirtualKeyboard());
    const auto behind = open("behind");
    const auto application = inFront(u"behind"_s);
    const auto before = open("before");
    inFront(u"before"_s);
    EXPECT_FALSE(send());
    application->activate();
    close(before);
    inFront(u"behind"_s);
    EXPECT_THAT(activations(), IsEmpty()) << "nobody to whom it would come";

    compositor().addSeat();
    EXPECT_TRUE(waitUntil([this] { return send(); }));
    EXPECT_EQ(keys(), controlV);
    open("before");
    inFront(u"before"_s);
    application->activate();
    EXPECT_TRUE(waitUntil([&] { return activations() == std::vector{behind}; }));
}

TEST_F(WaylandDesktopSeatsTest, aSeatThatGoesTakesItsKeyboardWithIt)
{
    EXPECT_TRUE(send());
    compositor().removeSeat();
    EXPECT_TRUE(waitUntil([this] { return !send(); }));
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.alive(); }), 0);
    compositor().addSeat();
    EXPECT_TRUE(waitUntil([this] { return send(); }));
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.made(); }), 2);
}

} // namespace tessly::test
