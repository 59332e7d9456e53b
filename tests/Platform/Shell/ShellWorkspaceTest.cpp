#include "ShellWorkspace.h"

#include "FakeShell.h"
#include "FakeWorkspace.h"
#include "LogCapture.h"
#include "ShellExtension.h"
#include "TestBus.h"
#include "TestSupport.h"
#include "UnnamedApplication.h"
#include "UnnamedWorkspace.h"
#include "VirtualClock.h"
#include "contract/WorkspaceContract.h"

#include <gtest/gtest.h>

#include <QHash>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {

namespace {

/// A bus, the shell on it, and the desktop as the program sees it. Time stands still.
class ShellWorld
{
public:
    ~ShellWorld() { extension.reset(); }

    void open()
    {
        extension = std::make_shared<ShellExtension>(
            [address = bus.address()] { return TestBus::connect(address); }, clock);
        workspace.emplace(extension, unnamed);
    }

    void openAndWait()
    {
        open();
        ASSERT_TRUE(waitUntil([this] { return extension->isPresent(); }));
    }

    /// Until what was told by now has been heard.
    void settle() { await(extension->catchUp()); }

    [[nodiscard]] std::shared_ptr<PasteTarget> front() const
    {
        return std::dynamic_pointer_cast<PasteTarget>(workspace->frontmostApplication());
    }
    [[nodiscard]] bool isFrontUnnamed() const
    {
        return std::dynamic_pointer_cast<UnnamedApplication>(front()) != nullptr;
    }
    /// By their ids, the earliest first.
    [[nodiscard]] QStringList inFrontLately()
    {
        QStringList ids;
        for (const auto& application : await(workspace->inFrontDuring(std::chrono::hours(1)))) {
            ids
                << (application ? application->bundleIdentifier().value_or(u"unnamed"_s)
                                : u"nothing"_s);
        }
        return ids;
    }

    TestBus bus;
    VirtualClock clock;
    std::optional<FakeShell> shell{bus};
    FakeWorkspace told;
    UnnamedWorkspace unnamed{&told};
    std::shared_ptr<ShellExtension> extension;
    std::optional<ShellWorkspace> workspace;
};

class ShellWorkspaceTest : public testing::Test, protected ShellWorld
{
};

TEST_F(ShellWorkspaceTest, TellsWhatTheShellKnowsOfAnApplication)
{
    openAndWait();
    shell->show(
        7, u"org.example.editor"_s,
        {{u"desktopEntry"_s, u"org.example.Editor.desktop"_s},
         {u"name"_s, u"Editor"_s},
         {u"applicationId"_s, u"org.example.EditorWindow"_s},
         {u"instance"_s, u"editor"_s}});
    settle();
    const auto editor = front();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->bundleIdentifier(), u"org.example.Editor"_s);
    EXPECT_EQ(editor->localizedName(), u"Editor"_s);
    EXPECT_EQ(
        editor->names(), QStringList(
                             {u"org.example.Editor"_s, u"org.example.EditorWindow"_s,
                              u"org.example.editor"_s, u"editor"_s}));
    EXPECT_EQ(editor->pasteChord(), PasteChord::controlV);
    EXPECT_EQ(editor->textPasteChord(), PasteChord::controlV);
}

TEST_F(ShellWorkspaceTest, AWindowWithoutADesktopEntryGoesByItsClass)
{
    openAndWait();
    shell->show(7, u"Sketcher"_s, {{u"desktopEntry"_s, QString()}, {u"name"_s, QString()}});
    settle();
    EXPECT_EQ(front()->bundleIdentifier(), u"Sketcher"_s);
    EXPECT_EQ(front()->localizedName(), u"Sketcher"_s);
}

TEST_F(ShellWorkspaceTest, TerminalsPasteByTheirOwnKeys)
{
    openAndWait();
    shell->show(7, u"org.gnome.Ptyxis"_s);
    settle();
    EXPECT_EQ(front()->textPasteChord(), PasteChord::controlShiftV) << "by its name";
    shell->show(8, u"org.example.Shell"_s, {{u"isTerminal"_s, true}});
    settle();
    EXPECT_EQ(front()->textPasteChord(), PasteChord::controlShiftV) << "by its desktop entry";
    shell->show(9, u"XTerm"_s, {{u"isTerminal"_s, true}});
    settle();
    EXPECT_EQ(front()->textPasteChord(), PasteChord::shiftInsert);
}

TEST_F(ShellWorkspaceTest, TheProgramsOwnWindowsAreItsOwn)
{
    openAndWait();
    shell->show(7, u"tessly"_s, {{u"desktopEntry"_s, QString()}});
    settle();
    EXPECT_EQ(front()->bundleIdentifier(), ownBundleIdentifier);
    shell->show(8, u"another"_s, {{u"pid"_s, int(QCoreApplication::applicationPid())}});
    settle();
    EXPECT_EQ(front()->bundleIdentifier(), ownBundleIdentifier);
}

TEST_F(ShellWorkspaceTest, AnApplicationThatWasInFrontForAMomentCounts)
{
    openAndWait();
    shell->show(1, u"Editor"_s);
    settle();
    // Told in one go: nobody has looked in between.
    shell->show(2, u"KeePassXC"_s);
    shell->bringToFront(1);
    EXPECT_EQ(inFrontLately(), QStringList({u"KeePassXC"_s, u"Editor"_s}));
}

TEST_F(ShellWorkspaceTest, WhatWasInFrontLongAgoDoesNotCount)
{
    openAndWait();
    shell->show(1, u"KeePassXC"_s);
    shell->show(2, u"Editor"_s);
    settle();
    const auto inFront = await(workspace->inFrontDuring(-1ns));
    ASSERT_EQ(inFront.size(), 1U);
    EXPECT_EQ(inFront.back(), front());
}

TEST_F(ShellWorkspaceTest, AWindowThatNamesItselfLateIsKnownByThatName)
{
    openAndWait();
    shell->show(1, u""_s, {{u"desktopEntry"_s, QString()}, {u"name"_s, QString()}});
    settle();
    const auto application = front();
    EXPECT_EQ(application->bundleIdentifier(), std::nullopt);
    shell->show(1, u"KeePassXC"_s);
    EXPECT_EQ(inFrontLately(), QStringList(u"KeePassXC"_s));
    EXPECT_EQ(application, front());
    EXPECT_EQ(application->bundleIdentifier(), u"KeePassXC"_s);
}

TEST_F(ShellWorkspaceTest, NothingIsPastedWhileTheShellHasTheKeyboard)
{
    openAndWait();
    shell->show(1, u"Editor"_s);
    settle();
    const auto editor = front();
    EXPECT_TRUE(editor->isActive());
    shell->grabKeyboard(true);
    settle();
    EXPECT_FALSE(editor->isActive());
    EXPECT_EQ(front(), editor) << "it is in front all the same";
    shell->grabKeyboard(false);
    settle();
    EXPECT_TRUE(editor->isActive());
}

// The extension comes and goes

TEST_F(ShellWorkspaceTest, WithoutTheExtensionItIsAsBefore)
{
    shell.reset();
    open();
    EXPECT_EQ(inFrontLately(), QStringList(u"unnamed"_s));
    EXPECT_TRUE(isFrontUnnamed());
    const auto program = std::make_shared<FakeRunningApplication>(u"an X11 program"_s);
    told.setFrontmost(program);
    EXPECT_EQ(workspace->frontmostApplication(), program);
    EXPECT_EQ(inFrontLately(), QStringList(u"an X11 program"_s));
    EXPECT_EQ(await(extension->place()), std::nullopt);
}

TEST_F(ShellWorkspaceTest, WithoutABusItIsAsBefore)
{
    bus.kill();
    open();
    EXPECT_EQ(inFrontLately(), QStringList(u"unnamed"_s));
}

TEST_F(ShellWorkspaceTest, TheExtensionMayComeLater)
{
    shell.reset();
    open();
    await(extension->catchUp());
    int changes = 0;
    workspace->setFrontmostChanged([&changes] { ++changes; });
    shell.emplace(bus);
    shell->show(1, u"Editor"_s);
    ASSERT_TRUE(waitUntil([this] { return extension->isPresent() && extension->front().window; }));
    EXPECT_EQ(front()->bundleIdentifier(), u"Editor"_s);
    EXPECT_GT(changes, 0);
}

TEST_F(ShellWorkspaceTest, WhatItToldOfJustBeforeItWentCounts)
{
    openAndWait();
    shell->show(1, u"KeePassXC"_s);
    settle();
    const auto application = front();
    int changes = 0;
    workspace->setFrontmostChanged([&changes] { ++changes; });
    shell->disable();
    ASSERT_TRUE(waitUntil([this] { return !extension->isPresent(); }));
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(isFrontUnnamed());
    EXPECT_FALSE(application->isActive());
    EXPECT_TRUE(application->isTerminated()) << "nothing can be known of it any more";
    EXPECT_EQ(inFrontLately(), QStringList({u"KeePassXC"_s, u"unnamed"_s}));

    shell->enable();
    ASSERT_TRUE(waitUntil([this] { return extension->isPresent(); }));
    EXPECT_EQ(front()->bundleIdentifier(), u"KeePassXC"_s);
    EXPECT_NE(front(), application);
}

TEST_F(ShellWorkspaceTest, WhatTheFallbackTellsOfIsNotToldTwice)
{
    openAndWait();
    int changes = 0;
    workspace->setFrontmostChanged([&changes] { ++changes; });
    told.setFrontmost(std::make_shared<FakeRunningApplication>(u"an X11 program"_s));
    EXPECT_EQ(changes, 0);
    shell->show(1, u"Editor"_s);
    settle();
    EXPECT_EQ(changes, 1);
}

// The extension does not do as it should

TEST_F(ShellWorkspaceTest, AnExtensionThatNeverAnswersIsNotWaitedForLong)
{
    shell->answers = false;
    open();
    QStringList ids;
    bool isDone = false;
    const auto asking = whenDone(workspace->inFrontDuring(1h), [&](const auto& inFront) {
        isDone = true;
        ids << (inFront.back() ? u"unnamed"_s : u"nothing"_s);
    });
    ASSERT_TRUE(waitUntil([this] { return shell->calls(u"Front"_s) == 1; }));
    EXPECT_FALSE(isDone);
    clock.advance(ShellExtension::timeout);
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_EQ(ids, QStringList(u"unnamed"_s));
    EXPECT_EQ(inFrontLately(), QStringList(u"unnamed"_s)) << "not waited for again";

    shell->show(1, u"Editor"_s);
    shell->answerLate();
    ASSERT_TRUE(waitUntil([this] { return extension->isPresent(); }));
    EXPECT_EQ(front()->bundleIdentifier(), u"Editor"_s);
}

TEST_F(ShellWorkspaceTest, OneThatFallsSilentCountsAsItWasLast)
{
    openAndWait();
    shell->show(1, u"KeePassXC"_s);
    settle();
    shell->answers = false;
    const int asked = shell->calls(u"Front"_s);
    bool isDone = false;
    const auto asking = whenDone(workspace->inFrontDuring(1h), [&](const auto&) { isDone = true; });
    ASSERT_TRUE(waitUntil([&] { return shell->calls(u"Front"_s) > asked; }));
    EXPECT_FALSE(isDone);
    clock.advance(ShellExtension::timeout);
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_EQ(inFrontLately(), QStringList(u"KeePassXC"_s)) << "and is not waited for again";

    shell->show(2, u"Editor"_s);
    shell->answers = true;
    ASSERT_TRUE(waitUntil([this] { return front()->bundleIdentifier() == u"Editor"_s; }));
    EXPECT_EQ(inFrontLately(), QStringList({u"KeePassXC"_s, u"Editor"_s}));
    EXPECT_GT(shell->calls(u"Front"_s), asked + 1) << "it is asked again";
}

TEST_F(ShellWorkspaceTest, NonsenseIsNoAnswer)
{
    const LogCapture log;
    for (const QVariantList& nonsense :
         {QVariantList(), QVariantList{u"org.example.Editor"_s},
          QVariantList{QVariantMap{{u"window"_s, u"seven"_s}}},
          QVariantList{QVariantMap{{u"class"_s, u"Editor"_s}}}}) {
        shell->nonsense = nonsense;
        open();
        EXPECT_EQ(inFrontLately(), QStringList(u"unnamed"_s));
        EXPECT_FALSE(extension->isPresent());
        EXPECT_EQ(await(extension->place()), std::nullopt);
    }
    EXPECT_EQ(log.lines(u"com.brackmoor.tessly.ShellExtension"_s).size(), 4U);
}

TEST_F(ShellWorkspaceTest, NonsenseThatIsSignalledChangesNothing)
{
    openAndWait();
    shell->show(1, u"Editor"_s);
    settle();
    const auto editor = front();
    shell->send(u"FrontChanged"_s, {u"org.example.Other"_s});
    shell->send(u"FrontChanged"_s, {});
    shell->send(u"WindowClosed"_s, {u"1"_s});
    shell->send(u"WindowClosed"_s, {QVariant::fromValue<qulonglong>(99)});
    settle();
    EXPECT_EQ(front(), editor);
    EXPECT_TRUE(editor->isActive());
    shell->nonsense = QVariantList{QVariant::fromValue(QList<int>{600, 400})};
    EXPECT_EQ(await(extension->place()), std::nullopt);
}

TEST_F(ShellWorkspaceTest, OnlyTheExtensionIsListenedTo)
{
    openAndWait();
    shell->show(1, u"Editor"_s);
    settle();
    const auto editor = front();
    int changes = 0;
    workspace->setFrontmostChanged([&changes] { ++changes; });
    QDBusConnection stranger = bus.connect();
    const auto send = [&stranger](const QString& name, const QVariant& argument) {
        auto signal = QDBusMessage::createSignal(
            u"/com/brackmoor/tessly/Shell"_s, u"com.brackmoor.tessly.Shell1"_s, name);
        signal << argument;
        stranger.send(signal);
    };
    send(u"FrontChanged"_s, QVariantMap());
    send(u"WindowClosed"_s, QVariant::fromValue<qulonglong>(1));
    // Once the bus has answered the stranger, it has passed the signal on.
    stranger.call(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"GetId"_s));
    settle();
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(front(), editor);
    EXPECT_FALSE(editor->isTerminated());
    QDBusConnection::disconnectFromBus(stranger.name());
}

// Where the user is

TEST_F(ShellWorkspaceTest, TellsWhereTheUserIs)
{
    openAndWait();
    const auto place = await(extension->place());
    EXPECT_EQ(
        place, (ShellPlace{
                   .pointer = {600, 400},
                   .pointerMonitor = {0, 0, 1280, 800},
                   .focusMonitor = {1280, 0, 1920, 1080},
                   .desktop = {3200, 1080}}));
    shell->pointer = {600};
    EXPECT_EQ(await(extension->place()), std::nullopt);
}

TEST_F(ShellWorkspaceTest, APanelDoesNotWaitLongForItsPlace)
{
    openAndWait();
    shell->answers = false;
    bool isDone = false;
    const auto asking = whenDone(extension->place(), [&](const auto& place) {
        isDone = true;
        EXPECT_EQ(place, std::nullopt);
    });
    ASSERT_TRUE(waitUntil([this] { return shell->calls(u"Place"_s) == 1; }));
    EXPECT_FALSE(isDone);
    clock.advance(ShellExtension::placeTimeout);
    EXPECT_TRUE(waitUntil([&] { return isDone; }));
}

TEST_F(ShellWorkspaceTest, EverythingMayGoWhileItIsAsked)
{
    openAndWait();
    shell->answers = false;
    int done = 0;
    const auto asking = whenDone(workspace->inFrontDuring(1h), [&](const auto&) { ++done; });
    const auto placing = whenDone(extension->place(), [&](const auto&) { ++done; });
    workspace.reset();
    extension.reset();
    EXPECT_TRUE(waitUntil([&] { return done == 2; }));
}

// The contract of all desktops

class ShellApplications
{
public:
    ShellApplications()
    {
        m_world.open();
        m_workspace.emplace(m_world.extension, m_world.told);
        EXPECT_TRUE(waitUntil([this] { return m_world.extension->isPresent(); }));
    }

    Workspace& workspace() { return *m_workspace; }
    void show(const QString& id)
    {
        m_windows.insert(id, static_cast<quint64>(m_windows.size() + 1));
        m_world.shell->show(m_windows.value(id), id);
    }
    void bringToFront(const QString& id) { m_world.shell->bringToFront(m_windows.value(id)); }
    void close(const QString& id) { m_world.shell->close(m_windows.value(id)); }

private:
    ShellWorld m_world;
    std::optional<ShellWorkspace> m_workspace;
    QHash<QString, quint64> m_windows;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Shell, WorkspaceContract, ShellApplications);

} // namespace tessly::test
