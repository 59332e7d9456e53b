#include "WaylandDesktop.h"

#include "LogCapture.h"
#include "PasteTarget.h"
#include "TestCompositor.h"
#include "TestKeyboards.h"
#include "TestKeymap.h"
#include "TestSupport.h"
#include "TestToplevels.h"
#include "WaylandKeySender.h"
#include "WaylandWorkspace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <linux/input-event-codes.h>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

using Key = TestKeyboards::Key;
using WindowID = TestToplevels::WindowID;

constexpr std::uint32_t control = 4;

const QString logCategory = u"com.brackmoor.tessly.WaylandDesktop"_s;

const std::vector<Key> controlV = {
    {KEY_LEFTCTRL, true, 0},
    {KEY_V, true, control},
    {KEY_V, false, control},
    {KEY_LEFTCTRL, false, control}};

WaylandDesktop::Options options(const TestCompositor& compositor)
{
    return {
        .display = compositor.display(),
        .entries = DesktopEntries(QStringList()),
        .deadline = std::chrono::milliseconds(300)};
}

/// A compositor with windows and virtual keyboards, and the desktop under test on it.
class WaylandDesktopTest : public testing::Test
{
protected:
    using Application = std::shared_ptr<PasteTarget>;

    explicit WaylandDesktopTest(const TestCompositor::Options& options = {})
        : m_compositor(options)
    {
    }

    TestCompositor& compositor() { return m_compositor; }
    WaylandDesktop& desktop()
    {
        if (!m_desktop) {
            m_desktop = std::make_unique<WaylandDesktop>(WaylandDesktop::Options{
                .display = m_compositor.display(),
                .entries = DesktopEntries(QStringList{m_entries.path()}),
                .patience = m_patience,
                .firstDelay = std::chrono::milliseconds(1)});
        }
        return *m_desktop;
    }
    void endDesktop()
    {
        m_workspace.reset();
        m_desktop.reset();
    }
    /// Before the desktop is asked for.
    void install(const QString& id, const QByteArray& lines)
    {
        QFile file(m_entries.filePath(id + u".desktop"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + lines);
    }

    /// Of the desktop, before it is asked for.
    std::chrono::milliseconds m_patience = std::chrono::hours(1);

    // What the compositor does.
    /// On its thread.
    TestToplevels& toplevels() { return m_toplevels; }
    template <typename First>
    void freeze(First first)
    {
        m_compositor.freeze([this, first] { first(m_toplevels); });
    }
    template <typename Job>
    auto windows(Job job)
    {
        std::optional<decltype(job(m_toplevels))> result;
        m_compositor.run([&] { result = job(m_toplevels); });
        return *result;
    }
    WindowID open(const QByteArray& appID, bool isActivated = true)
    {
        return windows([&](auto& toplevels) { return toplevels.open(appID, isActivated); });
    }
    void setActivated(WindowID window, bool isActivated)
    {
        m_compositor.run([&] { m_toplevels.setActivated(window, isActivated); });
    }
    void setAppID(WindowID window, const QByteArray& appID)
    {
        m_compositor.run([&] { m_toplevels.setAppID(window, appID); });
    }
    void close(WindowID window)
    {
        m_compositor.run([&] { m_toplevels.close(window); });
    }
    std::vector<WindowID> activations()
    {
        return windows([](auto& toplevels) { return toplevels.activations(); });
    }

    // What is seen of it.
    Application front()
    {
        if (!m_workspace) {
            m_workspace = std::make_unique<WaylandWorkspace>(desktop());
        }
        return std::dynamic_pointer_cast<PasteTarget>(m_workspace->frontmostApplication());
    }
    /// What is in front, once it is this.
    Application inFront(const std::optional<QString>& id)
    {
        Application application;
        EXPECT_TRUE(waitUntil([&] {
            application = front();
            return application && application->bundleIdentifier() == id;
        })) << id.value_or(u"none"_s).toStdString();
        return application;
    }
    /// What was in front in the last hour.
    QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>> inFrontLately()
    {
        front();
        return m_workspace->inFrontDuring(std::chrono::hours(1));
    }
    void setFrontmostChanged(std::function<void()> changed)
    {
        front();
        m_workspace->setFrontmostChanged(std::move(changed));
    }
    bool nothingComesToFront()
    {
        return waitUntil([this] { return !front(); });
    }
    bool send(PasteChord chord = PasteChord::controlV)
    {
        VirtualKeyboardSender sender(desktop());
        return await(sender.send(chord, front(), [] { return true; })) == KeySender::Sending::sent;
    }
    template <typename Ask>
    auto keyboards(Ask ask)
    {
        std::optional<decltype(ask(m_keyboards))> result;
        m_compositor.run([&] { result = ask(m_keyboards); });
        return *result;
    }
    std::vector<Key> keys()
    {
        return keyboards([](auto& keyboards) { return keyboards.keys(); });
    }
    std::vector<QByteArray> keymaps()
    {
        return keyboards([](auto& keyboards) { return keyboards.keymaps(); });
    }
    bool letterIs(std::uint32_t key)
    {
        return waitUntil([&] {
            const auto strokes = desktop().strokes(PasteChord::controlV);
            return strokes && strokes->at(1).key == key;
        });
    }

private:
    TestCompositor m_compositor;
    TestToplevels& m_toplevels = m_compositor.add<TestToplevels>();
    TestKeyboards& m_keyboards = m_compositor.add<TestKeyboards>();
    QTemporaryDir m_entries;
    std::unique_ptr<WaylandDesktop> m_desktop;
    std::unique_ptr<WaylandWorkspace> m_workspace;
};

class WaylandDesktopWithoutSeatTest : public WaylandDesktopTest
{
protected:
    WaylandDesktopWithoutSeatTest()
        : WaylandDesktopTest({.hasSeat = false})
    {
    }
};

} // namespace

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

// What was in front lately.

TEST_F(WaylandDesktopTest, allNamesOfAnApplicationAreKnown)
{
    install(u"prompt"_s, "Name=Prompt\nStartupWMClass=Prompter\n");
    open("Prompter");
    EXPECT_EQ(inFront(u"prompt"_s)->names(), QStringList({u"prompt"_s, u"Prompter"_s}));
    open("unknown");
    EXPECT_EQ(inFront(u"unknown"_s)->names(), QStringList(u"unknown"_s));
    open({});
    EXPECT_EQ(inFront(std::nullopt)->names(), QStringList());
}

TEST_F(WaylandDesktopTest, aWindowThatWasInFrontForAMomentIsKnown)
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

TEST_F(WaylandDesktopTest, untilAConnectionIsMadeAgainTheAnswerComesFromMemory)
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

TEST_F(WaylandDesktopTest, aConnectionThatEndsIsAnAnswer)
{
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().freeze();
    auto answer = inFrontLately();
    compositor().end();
    EXPECT_EQ(await(std::move(answer)).back(), application) << "the last that is known";
}

TEST_F(WaylandDesktopTest, aCompositorThatDoesNotAnswerInTimeIsNotWaitedFor)
{
    m_patience = std::chrono::milliseconds(300);
    open("editor");
    const auto application = inFront(u"editor"_s);
    compositor().freeze();
    EXPECT_EQ(await(inFrontLately()).back(), application);
    compositor().thaw();
}

TEST_F(WaylandDesktopTest, aQuestionMayOutliveTheDesktop)
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

TEST_F(WaylandDesktopTest, whoWantsToHearOfTheFrontIsCalledOnTheMainThread)
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

TEST_F(WaylandDesktopTest, aSeatThatGoesTakesItsKeyboardWithIt)
{
    EXPECT_TRUE(send());
    compositor().removeSeat();
    EXPECT_TRUE(waitUntil([this] { return !send(); }));
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.alive(); }), 0);
    compositor().addSeat();
    EXPECT_TRUE(waitUntil([this] { return send(); }));
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.made(); }), 2);
}

// Keys.

TEST_F(WaylandDesktopTest, oneKeyboardIsMadeAtTheStartAndKept)
{
    desktop();
    ASSERT_TRUE(waitUntil([this] { return !keymaps().empty(); })) << "before there is a paste";
    EXPECT_TRUE(send());
    EXPECT_TRUE(send());
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.made(); }), 1);
    EXPECT_EQ(keymaps().size(), 1U);
    auto twice = controlV;
    twice.insert(twice.end(), controlV.begin(), controlV.end());
    EXPECT_EQ(keys(), twice);
    EXPECT_EQ(keyboards([](auto& keyboards) { return keyboards.modifiers(); }), 0U);
}

TEST_F(WaylandDesktopTest, theKeyMapIsTheUsers)
{
    const QByteArray dvorak = keymapText("us", "dvorak");
    compositor().setKeymap(dvorak);
    EXPECT_EQ(desktop().strokes(PasteChord::controlV)->at(1).key, std::uint32_t{KEY_DOT})
        << "known from the start";
    EXPECT_TRUE(send());
    EXPECT_THAT(keys(), Contains(Key{KEY_DOT, true, control}));
    EXPECT_THAT(keymaps(), ElementsAre(dvorak + '\0'));
}

TEST_F(WaylandDesktopTest, aKeyMapThatChangesIsUsedFromTheNextPasteOn)
{
    compositor().setKeymap(keymapText("us"));
    EXPECT_TRUE(send());
    compositor().setKeymap(keymapText("us", "dvorak"));
    ASSERT_TRUE(letterIs(KEY_DOT));
    EXPECT_EQ(keymaps().size(), 1U);
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps().size(), 2U);
    EXPECT_EQ(keys().at(5), (Key{KEY_DOT, true, control}));
    // Its own, told back to it.
    compositor().setKeymap(keymaps().back().chopped(1));
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps().size(), 2U);
}

TEST_F(WaylandDesktopTest, keyMapsMayTakeTurns)
{
    const QByteArray us = keymapText("us");
    const QByteArray dvorak = keymapText("us", "dvorak");
    const QByteArray french = keymapText("fr", "bepo");
    for (int turn = 0; turn < 3; ++turn) {
        compositor().setKeymap(us);
        EXPECT_TRUE(letterIs(KEY_V));
        compositor().setKeymap(dvorak);
        EXPECT_TRUE(letterIs(KEY_DOT));
    }
    compositor().setKeymap(french);
    EXPECT_TRUE(letterIs(KEY_U));
    compositor().setKeymap(us);
    EXPECT_TRUE(letterIs(KEY_V));
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
}

TEST_F(WaylandDesktopTest, withoutTheLetterAnAmericanKeyMapIsUsed)
{
    compositor().setKeymap(keymapText("us", "dvorak"));
    ASSERT_TRUE(letterIs(KEY_DOT));
    compositor().setKeymap(keymapText("ru"));
    ASSERT_TRUE(waitUntil([this] { return !desktop().strokes(PasteChord::controlV); }));
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
    const auto given = keymaps();
    EXPECT_EQ(given.back().chopped(1), keymapText("us"));
    // Its own, told back to it.
    compositor().setKeymap(keymapText("us"));
    compositor().setKeymap(keymapText("ru"));
    EXPECT_TRUE(send());
    EXPECT_EQ(keymaps(), given);
}

TEST_F(WaylandDesktopTest, whatIsNoKeyMapDoesNotCount)
{
    const QByteArray dvorak = keymapText("us", "dvorak");
    compositor().setKeymap(dvorak);
    ASSERT_TRUE(letterIs(KEY_DOT));
    const QByteArray us = keymapText("us");
    const auto size = static_cast<std::uint32_t>(us.size()) + 1;
    constexpr std::uint32_t xkb = 1;
    compositor().setKeymap("no key map at all");
    compositor().setKeymap(us, 0, size);
    compositor().setKeymap(us, xkb, size + 1);
    compositor().setKeymap(us, xkb, 0xffffffff);
    compositor().setKeymap(us, xkb, 0);
    compositor().setKeymap(us, xkb, 100);
    EXPECT_TRUE(send());
    EXPECT_TRUE(letterIs(KEY_DOT));
    EXPECT_THAT(keymaps(), ElementsAre(dvorak + '\0'));
}

TEST_F(WaylandDesktopTest, noKeysArePressedOnceAnotherWindowIsInFront)
{
    open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    freeze([](auto& toplevels) { toplevels.open("other", true); });
    auto sending = sender.send(PasteChord::controlV, target, [] { return true; });
    EXPECT_TRUE(target->isActive()) << "as far as is known";
    compositor().thaw();
    EXPECT_EQ(await(std::move(sending)), KeySender::Sending::notInFront);
    inFront(u"other"_s);
    EXPECT_THAT(keys(), IsEmpty());
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, target, [] { return true; })),
        KeySender::Sending::notInFront);
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, nullptr, [] { return true; })),
        KeySender::Sending::notInFront);
    EXPECT_THAT(keys(), IsEmpty());
    EXPECT_TRUE(send());
}

TEST_F(WaylandDesktopTest, noKeysArePressedForATargetThatHasClosed)
{
    const auto window = open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    freeze([window](auto& toplevels) { toplevels.close(window); });
    auto sending = sender.send(PasteChord::controlV, target, [] { return true; });
    compositor().thaw();
    EXPECT_EQ(await(std::move(sending)), KeySender::Sending::notInFront);
    EXPECT_THAT(keys(), IsEmpty());
}

TEST_F(WaylandDesktopTest, whatAFrozenCompositorDoesNotGetToInTimeIsNotPressedLater)
{
    m_patience = std::chrono::milliseconds(500);
    open("target");
    const auto target = inFront(u"target"_s);
    VirtualKeyboardSender sender(desktop());
    compositor().freeze();
    EXPECT_EQ(
        await(sender.send(PasteChord::controlV, target, [] { return true; })),
        KeySender::Sending::failed);
    compositor().thaw();
    // By then it has got to what was asked of it before.
    EXPECT_TRUE(send());
    EXPECT_EQ(keys(), controlV);
}

TEST_F(WaylandDesktopTest, keysAloneAreThoseOfTheUsersKeyboard)
{
    EXPECT_EQ(
        desktop().strokes(PasteChord::controlV),
        (KeyStrokes{{KEY_LEFTCTRL, true}, {KEY_V, true}, {KEY_V, false}, {KEY_LEFTCTRL, false}}))
        << "an American one where none is known";
    compositor().setKeymap(keymapText("us", "dvorak", "ctrl:swapcaps"));
    EXPECT_TRUE(waitUntil([this] {
        return desktop().strokes(PasteChord::controlV) ==
               KeyStrokes{
                   {KEY_CAPSLOCK, true}, {KEY_DOT, true}, {KEY_DOT, false}, {KEY_CAPSLOCK, false}};
    }));
    compositor().setKeymap(keymapText("ru"));
    EXPECT_TRUE(
        waitUntil([this] { return desktop().strokes(PasteChord::controlV) == std::nullopt; }));
    EXPECT_TRUE(desktop().strokes(PasteChord::shiftInsert));
}

} // namespace tessly::test
