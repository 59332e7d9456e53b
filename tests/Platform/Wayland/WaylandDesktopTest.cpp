#include "WaylandDesktopTest.h"

namespace tessly::test {

// The start.

TEST(WaylandDesktopStart, noCompositorIsAnError)
{
    EXPECT_THROW(WaylandDesktop({.display = "/nowhere/at/all"}), WaylandError);
}

TEST(WaylandDesktopStart, aCompositorThatDoesNotAnswerIsAnError)
{
    TestCompositor compositor;
    compositor.freeze();
    EXPECT_THROW(WaylandDesktop{options(compositor)}, WaylandError);
}

TEST(WaylandDesktopStart, aCompositorMayHaveNothingOfIt)
{
    TestCompositor compositor({.hasExt = false, .hasSeat = false});
    WaylandDesktop desktop(options(compositor));
    EXPECT_FALSE(desktop.hasToplevels());
    EXPECT_FALSE(desktop.hasVirtualKeyboard());
    EXPECT_FALSE(desktop.hasFakeInput());
    EXPECT_TRUE(desktop.strokes(PasteChord::controlV));
    EXPECT_EQ(WaylandWorkspace(desktop).frontmostApplication(), nullptr);
    for (const auto way :
         {WaylandKeyboard::Way::virtualKeyboard, WaylandKeyboard::Way::fakeInput}) {
        EXPECT_FALSE(desktop.canPress(way));
    }
    VirtualKeyboardSender virtualKeys(desktop);
    EXPECT_FALSE(virtualKeys.requestAccess());
    EXPECT_NE(
        await(virtualKeys.send(PasteChord::controlV, nullptr, [] { return true; })),
        KeySender::Sending::sent);
    FakeInputSender fakeKeys(desktop);
    EXPECT_FALSE(fakeKeys.isAllowed());
    EXPECT_NE(
        await(fakeKeys.send(PasteChord::controlV, nullptr, [] { return true; })),
        KeySender::Sending::sent);
}

TEST_F(WaylandDesktopTest, tellsWhatTheCompositorHas)
{
    EXPECT_TRUE(desktop().hasToplevels());
    EXPECT_TRUE(desktop().hasVirtualKeyboard());
    EXPECT_FALSE(desktop().hasFakeInput());
}

// Windows.

TEST_F(WaylandDesktopTest, windowsThatAreThereAtFirstAreKnown)
{
    open("behind", false);
    open("before");
    EXPECT_TRUE(inFront(u"before"_s)->isActive());
}

TEST_F(WaylandDesktopTest, anApplicationIsNamedByItsDesktopEntry)
{
    install(u"org.example.Editor"_s, "Name=Text Editor\n");
    install(u"prompt"_s, "Name=Prompt\nCategories=TerminalEmulator;\nStartupWMClass=Prompter\n");
    const auto editor = open("org.example.editor");
    const auto application = inFront(u"org.example.Editor"_s);
    EXPECT_EQ(application->localizedName(), u"Text Editor"_s);
    EXPECT_EQ(application->pasteChord(), PasteChord::controlV);
    close(editor);
    const auto prompt = open("Prompter");
    const auto terminal = inFront(u"prompt"_s);
    EXPECT_EQ(terminal->localizedName(), u"Prompt"_s);
    EXPECT_EQ(terminal->pasteChord(), PasteChord::controlShiftV);
    close(prompt);
    open("XTerm");
    const auto unknown = inFront(u"XTerm"_s);
    EXPECT_EQ(unknown->localizedName(), u"XTerm"_s);
    EXPECT_EQ(unknown->pasteChord(), PasteChord::shiftInsert);
}

TEST_F(WaylandDesktopTest, theProgramsOwnWindowsAreKnown)
{
    const auto panel = open("com.brackmoor.tessly");
    inFront(u"com.brackmoor.tessly"_s);
    close(panel);
    open("Tessly");
    inFront(u"com.brackmoor.tessly"_s);
}

TEST_F(WaylandDesktopTest, whatAWindowIsMayBeToldLate)
{
    const auto window = open({});
    const auto application = inFront(std::nullopt);
    EXPECT_EQ(application->localizedName(), std::nullopt);
    setAppID(window, "editor");
    EXPECT_EQ(inFront(u"editor"_s), application);
    EXPECT_EQ(application->localizedName(), u"editor"_s);
    // Also while it is not in front.
    setActivated(window, false);
    ASSERT_TRUE(nothingComesToFront());
    setAppID(window, "terminal");
    EXPECT_TRUE(waitUntil([&] { return application->bundleIdentifier() == u"terminal"_s; }));
    setAppID(window, "");
    EXPECT_TRUE(waitUntil([&] { return !application->bundleIdentifier(); }));
}

TEST_F(WaylandDesktopTest, ofTwoActivatedWindowsTheLatestIsInFront)
{
    const auto first = open("first");
    inFront(u"first"_s);
    const auto second = open("second");
    inFront(u"second"_s);
    setActivated(first, true);
    setActivated(second, true);
    setActivated(second, false);
    inFront(u"first"_s);
    setActivated(second, true);
    inFront(u"second"_s);
    close(second);
    inFront(u"first"_s);
    setActivated(first, false);
    EXPECT_TRUE(nothingComesToFront());
}

TEST_F(WaylandDesktopTest, whatIsToldTwiceChangesNothing)
{
    const auto window = open("editor");
    const auto application = inFront(u"editor"_s);
    setActivated(window, true);
    setAppID(window, "editor");
    const auto other = open("other");
    inFront(u"other"_s);
    EXPECT_FALSE(application->isActive());
    close(other);
    inFront(u"editor"_s);
    EXPECT_TRUE(application->isActive());
}

TEST_F(WaylandDesktopTest, twoWindowsOfOneApplicationAreTwo)
{
    open("editor");
    const auto first = inFront(u"editor"_s);
    open("editor");
    ASSERT_TRUE(waitUntil([&] { return front() != first; }));
    EXPECT_FALSE(first->isActive());
    EXPECT_TRUE(front()->isActive());
    EXPECT_FALSE(first->isTerminated());
}

TEST_F(WaylandDesktopTest, aWindowIsAskedToComeToTheFrontOnce)
{
    const auto behind = open("behind");
    const auto application = inFront(u"behind"_s);
    const auto before = open("before");
    inFront(u"before"_s);
    application->activate();
    ASSERT_TRUE(waitUntil([&] { return !activations().empty(); }));
    setActivated(before, false);
    inFront(u"behind"_s);
    application->activate();
    // Jobs of the thread are done in their order: it has looked at what is in front by then.
    await(inFrontLately());
    open("last");
    inFront(u"last"_s);
    EXPECT_THAT(activations(), ElementsAre(behind));
}

TEST_F(WaylandDesktopTest, aWindowMayCloseWhileItIsAskedToComeToTheFront)
{
    const auto window = open("editor");
    const auto application = inFront(u"editor"_s);
    open("other");
    inFront(u"other"_s);
    compositor().freeze();
    application->activate();
    compositor().thaw();
    close(window);
    EXPECT_TRUE(waitUntil([&] { return application->isTerminated(); }));
    application->activate();
    open("next");
    EXPECT_TRUE(inFront(u"next"_s)->isActive()) << "the connection is sound";
    EXPECT_FALSE(application->isActive());
    EXPECT_EQ(application->bundleIdentifier(), u"editor"_s) << "what is known stays known";
}

TEST_F(WaylandDesktopTest, aConnectionThatEndsIsMadeAgain)
{
    const LogCapture log;
    open("editor");
    const auto before = inFront(u"editor"_s);
    compositor().run([this] { toplevels().disconnect(); });
    ASSERT_TRUE(waitUntil([&] { return before->isTerminated(); }));
    EXPECT_FALSE(before->isActive());

    ASSERT_TRUE(waitUntil([this] {
        const auto now = front();
        // Never nobody: what an ignored application copies meanwhile must not pass for nobody's.
        EXPECT_TRUE(now && now->bundleIdentifier() == u"editor"_s);
        return now && now->isActive();
    }));
    EXPECT_NE(front(), before);
    EXPECT_TRUE(desktop().hasToplevels());
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
    open("other");
    inFront(u"other"_s);
    EXPECT_EQ(log.lines(logCategory).size(), 1U);
}

TEST_F(WaylandDesktopTest, untilAConnectionIsMadeAgainTheLastWindowCountsAsInFrontButGone)
{
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().run([this] { toplevels().disconnect(); });
    compositor().freeze();
    ASSERT_TRUE(waitUntil([&] { return application->isTerminated(); }));
    EXPECT_EQ(front(), application);
    EXPECT_FALSE(application->isActive());
    VirtualKeyboardSender sender(desktop());
    EXPECT_NE(
        await(sender.send(PasteChord::controlV, application, [] { return true; })),
        KeySender::Sending::sent);
    compositor().thaw();
    EXPECT_TRUE(waitUntil([&] { return front() != application; }));
    EXPECT_TRUE(inFront(u"editor"_s)->isActive());
}

TEST_F(WaylandDesktopTest, aConnectionThatDoesNotLastIsMadeAgainAndAgain)
{
    const LogCapture log;
    open("editor");
    inFront(u"editor"_s);
    for (int count = 0; count < 5; ++count) {
        const auto before = front();
        compositor().run([this] { toplevels().disconnect(); });
        ASSERT_TRUE(waitUntil([&] { return front() != before && front()->isActive(); })) << count;
    }
    EXPECT_EQ(log.lines(logCategory).size(), 1U) << "told once";
}

TEST_F(WaylandDesktopTest, aManagerThatIsFinishedIsNotTheEnd)
{
    open("editor");
    const auto before = inFront(u"editor"_s);
    compositor().run([this] { toplevels().finish(); });
    ASSERT_TRUE(waitUntil([&] { return before->isTerminated(); }));
    EXPECT_TRUE(waitUntil([this] { return front()->isActive(); }));
    EXPECT_TRUE(desktop().hasToplevels());
    open("other");
    inFront(u"other"_s);
}

TEST_F(WaylandDesktopTest, anApplicationMayOutliveTheDesktop)
{
    open("editor");
    const auto application = inFront(u"editor"_s);
    endDesktop();
    EXPECT_FALSE(application->isActive());
    EXPECT_TRUE(application->isTerminated());
    application->activate();
    EXPECT_EQ(application->localizedName(), u"editor"_s);
}

TEST_F(WaylandDesktopTest, theCompositorsEndEndsWhatIsAwaited)
{
    const LogCapture log;
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().freeze();
    VirtualKeyboardSender sender(desktop());
    auto sending = sender.send(PasteChord::controlV, nullptr, [] { return true; });
    compositor().end();
    EXPECT_NE(await(std::move(sending)), KeySender::Sending::sent);
    EXPECT_TRUE(waitUntil([&] { return application->isTerminated(); }));
    EXPECT_FALSE(application->isActive());
    EXPECT_EQ(front(), application) << "the last that is known";
    application->activate();
    EXPECT_FALSE(desktop().hasToplevels());
    EXPECT_FALSE(desktop().hasVirtualKeyboard());
    EXPECT_FALSE(sender.isAllowed());
    EXPECT_FALSE(sender.requestAccess());
    EXPECT_NE(
        await(sender.send(PasteChord::controlV, nullptr, [] { return true; })),
        KeySender::Sending::sent);
    EXPECT_TRUE(waitUntil([&] { return log.lines(logCategory).size() == 1; }));
}

TEST_F(WaylandDesktopTest, aFrozenCompositorHoldsUpNeitherTheMainThreadNorItsEnd)
{
    const auto behind = open("behind");
    const auto application = inFront(u"behind"_s);
    setActivated(behind, false);
    ASSERT_TRUE(nothingComesToFront());
    compositor().freeze();
    VirtualKeyboardSender sender(desktop());
    std::vector<QCoro::Task<KeySender::Sending>> sendings;
    for (int number = 0; number < 2000; ++number) {
        application->activate();
        sendings.push_back(sender.send(PasteChord::controlV, nullptr, [] { return true; }));
    }
    EXPECT_FALSE(sendings.front().isReady());
    endDesktop();
    for (auto& sending : sendings) {
        EXPECT_NE(await(std::move(sending)), KeySender::Sending::sent);
    }
    compositor().thaw();
    EXPECT_THAT(keys(), IsEmpty());
}

} // namespace tessly::test
