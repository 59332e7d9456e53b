#include "X11Workspace.h"

#include "TestDesktop.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

constexpr auto noManager = XSession::WindowManager::none;

XClient::Look look(const QByteArray& instance, const QByteArray& name)
{
    return TestDesktop::look(instance, name);
}

TEST(X11WorkspaceTest, nothingIsInFrontWithoutWindows)
{
    TestDesktop desktop;
    EXPECT_EQ(desktop.front(), nullptr);
    xcb_window_t window = XCB_WINDOW_NONE;
    EXPECT_NE(desktop.show(look("a", "A"), &window), nullptr);
    desktop.client().destroy(window);
    EXPECT_TRUE(desktop.nothingComesToFront());
}

// Whose window it is.

TEST(X11WorkspaceTest, identifiesAWindowByItsApplicationIDFirst)
{
    TestDesktop desktop;
    auto told = look("browser", "Example-browser");
    told.gtkApplicationID = "org.example.Editor";
    const auto application = desktop.show(told);
    EXPECT_EQ(application->bundleIdentifier(), u"org.example.Editor"_s);
    EXPECT_EQ(application->localizedName(), u"Text Editor"_s);
}

TEST(X11WorkspaceTest, identifiesAWindowByTheClassThatAnEntryClaims)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("Navigator", "Example-browser"));
    EXPECT_EQ(application->bundleIdentifier(), u"browser"_s);
    EXPECT_EQ(application->localizedName(), u"Browser"_s);
}

TEST(X11WorkspaceTest, tellsAWebApplicationFromItsBrowser)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("crx_mail", "Example-browser"));
    EXPECT_EQ(application->bundleIdentifier(), u"webmail"_s);
}

TEST(X11WorkspaceTest, identifiesAWindowByAnEntryNamedLikeItsClass)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("main", "Painter"));
    EXPECT_EQ(application->bundleIdentifier(), u"painter"_s);
    EXPECT_EQ(application->localizedName(), u"Painter"_s);
}

TEST(X11WorkspaceTest, withoutAnEntryTheApplicationIDOrTheClassStands)
{
    TestDesktop desktop;
    const auto byClass = desktop.show(look("tool", "Unknown-Tool"));
    EXPECT_EQ(byClass->bundleIdentifier(), u"Unknown-Tool"_s);
    EXPECT_EQ(byClass->localizedName(), u"Unknown-Tool"_s);

    auto told = look("tool", "Unknown-Tool");
    told.gtkApplicationID = "org.example.Unknown";
    const auto byID = desktop.show(told);
    EXPECT_EQ(byID->bundleIdentifier(), u"org.example.Unknown"_s);
    EXPECT_EQ(byID->localizedName(), u"Unknown-Tool"_s);
}

TEST(X11WorkspaceTest, aWindowThatTellsNothingIsNamedByItsProgram)
{
    TestDesktop desktop;
    const auto program = desktop.session().start(u"sleep"_s, {u"1000"_s});
    XClient::Look silent;
    silent.processID = static_cast<std::uint32_t>(program->processId());
    const auto application = desktop.show(silent);
    EXPECT_EQ(application->bundleIdentifier(), std::nullopt);
    EXPECT_EQ(application->localizedName(), u"sleep"_s);
}

TEST(X11WorkspaceTest, aWindowThatTellsNothingAtAllHasNeitherNameNorID)
{
    TestDesktop desktop;
    const auto application = desktop.show({});
    EXPECT_EQ(application->bundleIdentifier(), std::nullopt);
    EXPECT_EQ(application->localizedName(), std::nullopt);
}

TEST(X11WorkspaceTest, hearsAClassThatIsToldLate)
{
    TestDesktop desktop;
    xcb_window_t window = XCB_WINDOW_NONE;
    const auto application = desktop.show({}, &window);
    EXPECT_EQ(application->bundleIdentifier(), std::nullopt);
    desktop.client().setWindowClass(window, XClient::windowClass("x", "Example-browser"));
    EXPECT_TRUE(waitUntil([&] { return application->bundleIdentifier() == u"browser"_s; }));
    EXPECT_EQ(desktop.front(), application);
}

TEST(X11WorkspaceTest, knowsAllNamesOfAnApplication)
{
    TestDesktop desktop;
    auto told = look("navigator", "Example-browser");
    EXPECT_EQ(
        desktop.show(told)->names(),
        QStringList({u"browser"_s, u"navigator"_s, u"Example-browser"_s}));
    told.gtkApplicationID = "org.example.Editor";
    EXPECT_EQ(
        desktop.show(told)->names(),
        QStringList({u"org.example.Editor"_s, u"navigator"_s, u"Example-browser"_s}));
    EXPECT_EQ(desktop.show(look("Tool", "Tool"))->names(), QStringList(u"Tool"_s));
    EXPECT_EQ(desktop.show({})->names(), QStringList());
    EXPECT_TRUE(desktop.show(look("tessly", "Tessly"))->names().contains(ownBundleIdentifier));
}

TEST(X11WorkspaceTest, theProgramsOwnWindowsBearItsOwnID)
{
    TestDesktop desktop;
    auto mine = look("painter", "Painter");
    mine.processID = getpid();
    EXPECT_EQ(desktop.show(mine)->bundleIdentifier(), ownBundleIdentifier);
    EXPECT_EQ(desktop.show(look("tessly", "Tessly"))->bundleIdentifier(), ownBundleIdentifier);
    EXPECT_EQ(
        desktop.show(look("x", "com.brackmoor.tessly"))->bundleIdentifier(), ownBundleIdentifier);
}

TEST(X11WorkspaceTest, readsAnyClassThatAWindowMayHave)
{
    TestDesktop desktop;
    const auto idOf = [&](const QByteArray& value) {
        XClient::Look odd;
        odd.windowClass = value;
        return desktop.show(odd)->bundleIdentifier();
    };
    EXPECT_EQ(idOf("only-instance"), std::nullopt);
    EXPECT_EQ(idOf(QByteArray("a\0Unended", 9)), u"Unended"_s);
    EXPECT_EQ(idOf(QByteArray("\0\0\0\0", 4)), std::nullopt);
    EXPECT_EQ(idOf(QByteArray("a\0Caf\xe9\0", 7)), u"Café"_s);
    EXPECT_EQ(idOf(XClient::windowClass("a", u"Zoë"_s.toUtf8())), u"Zoë"_s);
    EXPECT_EQ(idOf(XClient::windowClass("a", "../../etc/passwd")), u"../../etc/passwd"_s);
    // Not more of it than anyone would need.
    EXPECT_LE(idOf(XClient::windowClass("a", QByteArray(200'000, 'x')))->size(), 1024);
}

// In front, active, ended.

TEST(X11WorkspaceTest, givesTheSameApplicationAsLongAsItsWindowIsInFront)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("a", "A"));
    EXPECT_EQ(desktop.front(), application);
    EXPECT_EQ(desktop.front(), application);
}

TEST(X11WorkspaceTest, anApplicationIsActiveWhileItsVeryWindowIsInFront)
{
    TestDesktop desktop;
    const auto first = desktop.show(look("a", "A"));
    EXPECT_TRUE(first->isActive());
    const auto second = desktop.show(look("a", "A"));
    EXPECT_TRUE(second->isActive());
    EXPECT_FALSE(first->isActive()) << "another window is, though of the same application";
    EXPECT_FALSE(first->isTerminated());
    EXPECT_NE(first, second);
}

TEST(X11WorkspaceTest, anApplicationEndsWithItsWindowAlsoWhenItIsNotInFront)
{
    TestDesktop desktop;
    xcb_window_t window = XCB_WINDOW_NONE;
    const auto first = desktop.show(look("a", "A"), &window);
    const auto second = desktop.show(look("a", "A"));
    desktop.client().destroy(window);
    EXPECT_TRUE(waitUntil([&] { return first->isTerminated(); }));
    EXPECT_FALSE(first->isActive());
    EXPECT_FALSE(second->isTerminated());
    EXPECT_EQ(desktop.front(), second);
}

TEST(X11WorkspaceTest, anApplicationThatIsAskedToComesToTheFront)
{
    TestDesktop desktop;
    const auto first = desktop.show(look("a", "A"));
    const auto second = desktop.show(look("b", "B"));
    first->activate();
    EXPECT_TRUE(waitUntil([&] { return first->isActive(); }));
    EXPECT_FALSE(second->isActive());
    EXPECT_EQ(desktop.front()->bundleIdentifier(), u"A"_s);
}

TEST(X11WorkspaceTest, aMinimisedWindowThatIsAskedToComesToTheFront)
{
    TestDesktop desktop;
    xcb_window_t window = XCB_WINDOW_NONE;
    const auto application = desktop.show(look("a", "A"), &window);
    desktop.session().run(u"xdotool"_s, {u"windowminimize"_s, QString::number(window)});
    EXPECT_TRUE(desktop.nothingComesToFront());
    EXPECT_FALSE(application->isActive());
    EXPECT_FALSE(application->isTerminated());
    application->activate();
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
}

TEST(X11WorkspaceTest, aWindowOnAnotherWorkspaceThatIsAskedToComesToTheFront)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("a", "A"));
    desktop.session().run(u"xdotool"_s, {u"set_desktop"_s, u"1"_s});
    EXPECT_TRUE(desktop.nothingComesToFront());
    application->activate();
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
}

TEST(X11WorkspaceTest, theFocusMayBeInsideTheWindow)
{
    TestDesktop desktop;
    xcb_window_t window = XCB_WINDOW_NONE;
    const auto application = desktop.show(look("a", "A"), &window);
    XClient::Look inner;
    inner.parent = window;
    const auto child = desktop.client().show(inner);
    XClient::Look unmanaged;
    unmanaged.isUnmanaged = true;
    const auto popup = desktop.client().show(unmanaged);
    desktop.client().focus(popup);
    EXPECT_TRUE(waitUntil([&] { return !application->isActive(); }));
    desktop.client().focus(child);
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
    EXPECT_EQ(desktop.front(), application);
}

// What was in front lately.

using Applications = std::vector<std::shared_ptr<RunningApplication>>;

QCoro::Task<Applications> inFrontLately(TestDesktop& desktop)
{
    return desktop.workspace().inFrontDuring(std::chrono::hours(1));
}

TEST(X11WorkspaceTest, aClassThatChangesLaterIsKnownWhenItIsAskedFor)
{
    TestDesktop desktop;
    xcb_window_t first = XCB_WINDOW_NONE;
    const auto browser = desktop.show(look("soffice", "Soffice"), &first);
    xcb_window_t second = XCB_WINDOW_NONE;
    const auto writer = desktop.show(look("soffice", "Soffice"), &second);
    EXPECT_EQ(writer->bundleIdentifier(), u"Soffice"_s);
    // It has been in front already, and a window is not watched for every change of its properties.
    desktop.client().setWindowClass(first, XClient::windowClass("x", "Example-browser"));
    desktop.client().setWindowClass(second, XClient::windowClass("libreoffice", "painter"));
    EXPECT_EQ(await(inFrontLately(desktop)), Applications({browser, writer}));
    EXPECT_EQ(browser->bundleIdentifier(), u"browser"_s);
    EXPECT_EQ(writer->bundleIdentifier(), u"painter"_s);
    EXPECT_EQ(writer->localizedName(), u"Painter"_s);
    EXPECT_EQ(writer->names(), QStringList({u"painter"_s, u"libreoffice"_s}));
}

TEST(X11WorkspaceTest, aWindowThatWasInFrontForAMomentIsKnown)
{
    TestDesktop desktop(noManager);
    desktop.client().manage();
    const auto first = desktop.client().show(look("a", "A"));
    const auto brief = desktop.client().show(look("b", "B"));
    desktop.client().nameActive(first);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    desktop.client().nameActive(brief);
    desktop.client().unmap(brief);
    const auto applications = await(inFrontLately(desktop));
    ASSERT_EQ(applications.size(), 3U);
    EXPECT_EQ(applications[0]->bundleIdentifier(), u"A"_s);
    EXPECT_EQ(applications[1]->bundleIdentifier(), u"B"_s);
    EXPECT_EQ(applications[2], nullptr);
}

TEST(X11WorkspaceTest, aServerThatServesSomeoneElseIsWaitedForWithoutHoldingAnyone)
{
    TestDesktop desktop;
    const auto first = desktop.show(look("a", "A"));
    const auto second = desktop.show(look("b", "B"));
    desktop.client().grabServer();
    auto answer = inFrontLately(desktop);
    EXPECT_FALSE(answer.isReady());
    desktop.client().ungrabServer();
    EXPECT_EQ(await(std::move(answer)), Applications({first, second}));
}

TEST(X11WorkspaceTest, theEndOfTheDesktopIsAnAnswer)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("a", "A"));
    desktop.client().grabServer();
    auto answer = inFrontLately(desktop);
    desktop.endDesktop();
    EXPECT_EQ(await(std::move(answer)).back(), nullptr);
    desktop.client().ungrabServer();
    EXPECT_EQ(await(inFrontLately(desktop)), Applications({nullptr}));
    desktop.workspace().setFrontmostChanged({});
}

TEST(X11WorkspaceTest, theEndOfTheServerIsAnAnswer)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("a", "A"));
    int changes = 0;
    desktop.workspace().setFrontmostChanged([&] { ++changes; });
    auto before = inFrontLately(desktop);
    desktop.session().killServer();
    EXPECT_EQ(await(std::move(before)).front(), application);
    EXPECT_EQ(await(inFrontLately(desktop)), Applications({application, nullptr}));
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

TEST(X11WorkspaceTest, aQuestionMayOutliveTheWorkspace)
{
    QCoro::Task<Applications> answer;
    {
        TestDesktop desktop;
        desktop.show(look("a", "A"));
        desktop.workspace().setFrontmostChanged([] { FAIL() << "called though it is gone"; });
        desktop.client().show(look("b", "B"));
        desktop.client().grabServer();
        answer = inFrontLately(desktop);
    }
    EXPECT_EQ(await(std::move(answer)).back(), nullptr);
}

TEST(X11WorkspaceTest, whoWantsToHearOfTheFrontIsCalledOnTheMainThread)
{
    TestDesktop desktop;
    int changes = 0;
    desktop.workspace().setFrontmostChanged([&, main = QThread::currentThread()] {
        EXPECT_EQ(QThread::currentThread(), main);
        ++changes;
    });
    xcb_window_t window = XCB_WINDOW_NONE;
    desktop.show(look("a", "A"), &window);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
    changes = 0;
    desktop.client().destroy(window);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

// What only some window managers do.

TEST(X11WorkspaceTest, aDestroyedWindowIsNotInFrontThoughTheManagerStillNamesIt)
{
    TestDesktop desktop(noManager);
    desktop.client().manage();
    const auto window = desktop.client().show(look("a", "A"));
    desktop.client().nameActive(window);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    const auto application = desktop.front();
    desktop.client().destroy(window);
    EXPECT_TRUE(desktop.nothingComesToFront());
    EXPECT_TRUE(application->isTerminated());

    const auto next = desktop.client().show(look("b", "B"));
    desktop.client().nameActive(next);
    ASSERT_TRUE(desktop.comesToFront(u"B"_s));
    desktop.client().nameActive(window);
    EXPECT_TRUE(desktop.nothingComesToFront()) << "it was dead when it was named";
}

TEST(X11WorkspaceTest, anUnmappedWindowIsNotInFrontThoughTheManagerStillNamesIt)
{
    TestDesktop desktop(noManager);
    desktop.client().manage();
    const auto window = desktop.client().show(look("a", "A"));
    desktop.client().nameActive(window);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    const auto application = desktop.front();
    desktop.client().unmap(window);
    EXPECT_TRUE(desktop.nothingComesToFront());
    EXPECT_FALSE(application->isTerminated());
    desktop.client().map(window);
    EXPECT_TRUE(desktop.comesToFront(u"A"_s));
}

TEST(X11WorkspaceTest, aWindowThatNoManagerManagesIsNotInFrontThoughItIsNamed)
{
    TestDesktop desktop(noManager);
    desktop.client().manage();
    const auto window = desktop.client().show(look("a", "A"));
    const auto ofManager = desktop.client().show({.windowClass = {}, .isUnmanaged = true});
    desktop.client().nameActive(window);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    desktop.client().nameActive(ofManager);
    EXPECT_TRUE(desktop.nothingComesToFront());
    desktop.client().nameActive(window);
    EXPECT_TRUE(desktop.comesToFront(u"A"_s));
}

TEST(X11WorkspaceTest, aWindowThatTheManagerNamesIsInFrontButWithoutFocusNotActive)
{
    TestDesktop desktop(noManager);
    desktop.client().manage();
    const auto window = desktop.client().show(look("a", "A"));
    desktop.client().nameActive(window);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    const auto application = desktop.front();
    EXPECT_FALSE(application->isActive());
    desktop.client().focus(window);
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
}

TEST(X11WorkspaceTest, withoutAWindowManagerTheFocusTells)
{
    TestDesktop desktop(noManager);
    const auto first = desktop.client().show(look("a", "A"));
    const auto second = desktop.client().show(look("b", "B"));
    desktop.client().focus(first);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    const auto application = desktop.front();
    EXPECT_TRUE(application->isActive());
    desktop.client().focus(second);
    ASSERT_TRUE(desktop.comesToFront(u"B"_s));
    application->activate();
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
    EXPECT_EQ(desktop.client().focused(), first);
    desktop.client().focus(XCB_INPUT_FOCUS_POINTER_ROOT);
    EXPECT_TRUE(desktop.nothingComesToFront());
    desktop.client().focus(second);
    EXPECT_TRUE(desktop.comesToFront(u"B"_s));
    desktop.client().focus(XCB_INPUT_FOCUS_NONE);
    EXPECT_TRUE(desktop.nothingComesToFront());
    desktop.client().focus(first);
    EXPECT_TRUE(desktop.comesToFront(u"A"_s));
}

TEST(X11WorkspaceTest, noticesAManagerThatComesAndGoes)
{
    TestDesktop desktop(noManager);
    const auto first = desktop.client().show(look("a", "A"));
    const auto second = desktop.client().show(look("b", "B"));
    desktop.client().focus(first);
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    desktop.client().manage();
    desktop.client().nameActive(second);
    ASSERT_TRUE(desktop.comesToFront(u"B"_s));
    // Its properties outlive it.
    desktop.client().stopManaging();
    ASSERT_TRUE(desktop.comesToFront(u"A"_s));
    desktop.client().manage();
    ASSERT_TRUE(desktop.comesToFront(u"B"_s));
}

TEST(X11WorkspaceTest, aRealManagerMayStartLateAndBeReplaced)
{
    TestDesktop desktop(noManager);
    const auto window = desktop.client().show(look("b", "B"));
    auto manager = desktop.session().startOpenbox();
    // A window that was there before the manager does not get the focus by itself.
    desktop.session().run(u"xdotool"_s, {u"windowactivate"_s, QString::number(window)});
    ASSERT_TRUE(desktop.comesToFront(u"B"_s));
    const auto application = desktop.front();
    manager->kill();
    ASSERT_TRUE(manager->waitForFinished());
    manager = desktop.session().startOpenbox();
    desktop.show(look("c", "C"));
    ASSERT_TRUE(desktop.comesToFront(u"C"_s));
    EXPECT_FALSE(application->isTerminated());
    application->activate();
    EXPECT_TRUE(waitUntil([&] { return application->isActive(); }));
    desktop.client().destroy(window);
    EXPECT_TRUE(waitUntil([&] { return application->isTerminated(); }));
}

TEST(X11WorkspaceTest, windowsThatVanishAtOnceDoNoHarm)
{
    TestDesktop desktop;
    for (int count = 0; count < 100; ++count) {
        desktop.client().destroy(desktop.client().show(look("brief", "Brief")));
    }
    desktop.client().show(look("a", "A"));
    EXPECT_TRUE(desktop.comesToFront(u"A"_s));
}

// The server.

TEST(X11WorkspaceTest, whenTheServerGoesNothingIsInFrontAndEveryApplicationHasEnded)
{
    TestDesktop desktop;
    const auto application = desktop.show(look("a", "A"));
    desktop.session().killServer();
    EXPECT_TRUE(desktop.nothingComesToFront());
    EXPECT_TRUE(application->isTerminated());
    EXPECT_FALSE(application->isActive());
    application->activate();
    EXPECT_EQ(application->bundleIdentifier(), u"A"_s);
}

TEST(X11WorkspaceTest, aServerThatServesSomeoneElseHoldsNobody)
{
    TestDesktop desktop;
    const auto first = desktop.show(look("a", "A"));
    const auto second = desktop.show(look("b", "B"));
    desktop.client().grabServer();
    // Each of these would never return if it asked the server.
    EXPECT_EQ(desktop.front(), second);
    EXPECT_TRUE(second->isActive());
    first->activate();
    EXPECT_FALSE(first->isActive());
    EXPECT_FALSE(first->isTerminated());
    desktop.client().ungrabServer();
    EXPECT_TRUE(waitUntil([&] { return first->isActive(); }));
}

TEST(X11WorkspaceTest, endsWhileTheServerServesSomeoneElse)
{
    TestDesktop desktop;
    xcb_window_t window = XCB_WINDOW_NONE;
    const auto application = desktop.show(look("a", "A"), &window);
    desktop.client().grabServer();
    // News that the thread asks the server about, and gets no answer to.
    desktop.client().nameActive(window);
    desktop.endDesktop();
    EXPECT_TRUE(application->isTerminated());
    EXPECT_FALSE(application->isActive());
    EXPECT_EQ(desktop.front(), nullptr);
    application->activate();
    desktop.client().ungrabServer();
}

// Real programs.

class X11WorkspacePrograms : public testing::Test
{
protected:
    /// Programs tell their application's id only when they can register it.
    X11WorkspacePrograms()
    {
        const QString socket = m_folder.filePath(u"bus"_s);
        m_bus = m_session.start(
            u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--address=unix:path="_s + socket});
        EXPECT_TRUE(waitUntil([&] { return QFile::exists(socket); }));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(socket));
    }

    std::shared_ptr<RunningApplication> started(const QString& name)
    {
        m_process = m_session.start(name, {});
        EXPECT_TRUE(waitUntil(
            [&] {
                const auto front = m_workspace.frontmostApplication();
                return front && front->isActive();
            },
            std::chrono::seconds(20)));
        return m_workspace.frontmostApplication();
    }

    void expectItEndsWithItsProgram(const std::shared_ptr<RunningApplication>& application)
    {
        m_process->kill();
        EXPECT_TRUE(waitUntil([&] { return !m_workspace.frontmostApplication(); }));
        EXPECT_TRUE(application->isTerminated());
    }

private:
    XSession m_session;
    X11Desktop m_desktop{m_session.display().toStdString()};
    X11Workspace m_workspace{m_desktop};
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_bus;
    std::unique_ptr<QProcess> m_process;
};

TEST_F(X11WorkspacePrograms, xterm)
{
    const auto application = started(u"xterm"_s);
    ASSERT_TRUE(application);
    EXPECT_EQ(application->bundleIdentifier(), u"debian-xterm"_s);
    EXPECT_EQ(application->localizedName(), u"XTerm"_s);
    expectItEndsWithItsProgram(application);
}

TEST_F(X11WorkspacePrograms, gtk)
{
    const auto application = started(u"mousepad"_s);
    ASSERT_TRUE(application);
    EXPECT_EQ(application->bundleIdentifier(), u"org.xfce.mousepad"_s);
    EXPECT_EQ(application->localizedName(), u"Mousepad"_s);
    expectItEndsWithItsProgram(application);
}

TEST_F(X11WorkspacePrograms, qt)
{
    const auto application = started(u"featherpad"_s);
    ASSERT_TRUE(application);
    EXPECT_EQ(application->bundleIdentifier(), u"featherpad"_s);
    EXPECT_EQ(application->localizedName(), u"FeatherPad"_s);
    expectItEndsWithItsProgram(application);
}

} // namespace
} // namespace tessly::test
