#include "AppDelegate.h"

#include "AppPaths.h"
#include "FakeBundle.h"
#include "FakeHotKeyCenter.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakeOutsideClickMonitor.h"
#include "FakePasteboard.h"
#include "FakeStatusItem.h"
#include "FakeViewFactory.h"
#include "FakeWorkspace.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

/// A desktop in memory, which outlives the program that runs on it.
class FakePlatform final : public DesktopPlatform
{
public:
    struct Parts
    {
        FakePasteboard pasteboard;
        FakeWorkspace workspace;
        FakeKeyEventPoster keys;
        FakeOutsideClickMonitor outsideClicks;
        FakeHotKeyCenter hotKeys;
        FakeStatusItem statusItem;
        FakeImageConverter imageConverter;
        FakeLoginItem loginItem;
        FakeBundle bundle;
    };

    explicit FakePlatform(Parts& parts)
        : m_parts(parts)
    {
    }

    Pasteboard& pasteboard() override { return m_parts.pasteboard; }
    Workspace& workspace() override { return m_parts.workspace; }
    KeyEventPoster& keys() override { return m_parts.keys; }
    OutsideClickMonitor& outsideClicks() override { return m_parts.outsideClicks; }
    HotKeyCenter& hotKeys() override { return m_parts.hotKeys; }
    [[nodiscard]] QStringList protocols() const override { return {u"fake"_s}; }
    StatusItem& statusItem() override { return m_parts.statusItem; }
    ImageConverter& imageConverter() override { return m_parts.imageConverter; }
    LoginItem& loginItem() override { return m_parts.loginItem; }
    const Bundle& bundle() override { return m_parts.bundle; }

private:
    Parts& m_parts;
};

/// The program's delegate over real files in a folder of the test's own and a desktop of fakes, in
/// virtual time. The store works on its own thread.
class AppDelegateTest : public testing::Test
{
protected:
    AppDelegateTest()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.filePath(u"data"_s)));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.filePath(u"config"_s)));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        qunsetenv("TESSLY_UI_TESTING");
    }

    QString settingsPath() const { return m_folder.filePath(u"config/com.brackmoor.tessly.ini"_s); }
    void writeSettings(const QByteArray& lines)
    {
        QDir().mkpath(m_folder.filePath(u"config"_s));
        QFile file(settingsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\n" + lines);
    }

    /// The program as it was started before.
    void start()
    {
        writeSettings("hasCompletedOnboarding=true\n" + m_settings);
        startFirst();
    }
    void startFirst()
    {
        launch();
        wait();
    }
    /// As `startFirst`, and goes on at once.
    void launch()
    {
        m_delegate = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .clock = m_clock,
            .makePlatform = [this] { return std::make_unique<FakePlatform>(m_desktop); },
            .views = [this] { return &m_views; },
            .quit = [this] { ++m_quits; },
            .fail = [this](const std::exception& error) { m_failure = error.what(); },
        });
        m_delegate->applicationDidFinishLaunching();
        settle();
    }
    /// Until the history is there.
    void wait()
    {
        ASSERT_TRUE(waitUntil([this] { return !m_delegate->isOpeningHistory(); }));
        settle();
    }
    void stop()
    {
        m_delegate->applicationWillTerminate();
        m_delegate.reset();
    }

    void settle() { m_clock.advance(Clock::Duration::zero()); }
    /// Lets the monitor look at the clipboard.
    void tick()
    {
        m_clock.advance(350ms);
        settle();
    }
    AppModel& model() { return m_delegate->model(); }
    QString message() { return model().banner() ? model().banner()->message : QString(); }
    std::optional<AppModel::BannerKind> bannerKind()
    {
        return model().banner() ? std::optional(model().banner()->kind) : std::nullopt;
    }
    bool bannerBecomes(const QString& text)
    {
        return waitUntil([&] { return message() == text; });
    }
    bool listBecomes(std::size_t count)
    {
        return waitUntil([&] { return model().clips().size() == count; });
    }
    void copy(QByteArrayView text)
    {
        m_desktop.pasteboard.copyText(text);
        tick();
    }
    QStringList openTrayMenu()
    {
        m_desktop.statusItem.rightClick();
        return m_views.menu->titles();
    }

    QTemporaryDir m_folder;
    VirtualClock m_clock;
    FakePlatform::Parts m_desktop;
    FakeViewFactory m_views;
    int m_quits = 0;
    QByteArray m_failure;
    /// Lines of the settings file.
    QByteArray m_settings;
    std::unique_ptr<AppDelegate> m_delegate;
};

using BannerKind = AppModel::BannerKind;
constexpr quint32 modifiers = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;

// Starting

TEST_F(AppDelegateTest, RecordsFromTheStartAndListsTheHistory)
{
    start();
    copy("first words");
    EXPECT_TRUE(listBecomes(1));
    stop();
    start();
    EXPECT_TRUE(listBecomes(1)) << "without the panel having been opened";
}

TEST_F(AppDelegateTest, ADamagedHistoryIsSetAsideAndToldOfUntilTheUserHasSeenIt)
{
    AppPaths::prepareDirectories();
    QFile file(AppPaths::databasePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(8192, 'x'));
    file.close();
    start();
    const QStringList rescued =
        QDir(AppPaths::applicationSupportDirectory() + u"/Recovered History"_s)
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(rescued.size(), 1);
    EXPECT_EQ(
        message(), u"A damaged history database was preserved in ‘"_s + rescued.first() +
                       u"’. Tessly started with a fresh history."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_clock.advance(1h);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    copy("recorded all the same");
    EXPECT_TRUE(listBecomes(1));
}

TEST_F(AppDelegateTest, ARescueIsToldOfAtEveryStartUntilTheUserHasSeenIt)
{
    AppPaths::prepareDirectories();
    QFile file(AppPaths::databasePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(8192, 'x'));
    file.close();
    testing::internal::CaptureStderr();
    start();
    const QString notice = message();
    EXPECT_TRUE(notice.startsWith(u"A damaged history database"_s)) << notice.toStdString();
    openTrayMenu();
    m_views.menu->choose(u"Pause Clipboard Recording"_s);
    EXPECT_EQ(message(), notice) << "what else there is to tell waits";
    stop();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(notice.toStdString()));

    for (int start = 0; start < 2; ++start) {
        startFirst();
        EXPECT_EQ(message(), notice) << start;
        stop();
    }
    startFirst();
    model().showBanner(u"news"_s, BannerKind::information);
    model().dismissBanner();
    EXPECT_EQ(message(), u"news"_s);
    stop();
    startFirst();
    EXPECT_EQ(message(), QString());
}

TEST_F(AppDelegateTest, WhatCanBeReadOfADamagedHistoryIsBroughtOver)
{
    start();
    for (int i = 1; i <= 20; ++i) {
        copy("copy " + QByteArray::number(i) + QByteArray(600, ' ') + '.');
        ASSERT_TRUE(listBecomes(i));
    }
    stop();
    QFile file(AppPaths::databasePath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const qsizetype page = file.readAll().indexOf("copy 1 ") / 2048;
    ASSERT_GT(page, 0);
    file.seek(page * 2048);
    file.write(QByteArray(2048, 'x'));
    file.close();
    start();
    EXPECT_TRUE(waitUntil([&] { return message().contains(u" of the "_s); }));
    EXPECT_TRUE(message().endsWith(u" entries that it tells of were brought over."_s))
        << message().toStdString();
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    EXPECT_TRUE(waitUntil([&] { return model().clips().size() >= 10; }));
}

TEST_F(AppDelegateTest, CopiesMadeBeforeAHistoryIsFoundDamagedAreInTheFreshOne)
{
    AppPaths::prepareDirectories();
    QFile file(AppPaths::databasePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(8192, 'x'));
    file.close();
    writeSettings("hasCompletedOnboarding=true\n");
    launch();
    EXPECT_THAT(m_desktop.hotKeys.held(), SizeIs(10));
    copy("at once");
    wait();
    EXPECT_TRUE(listBecomes(1));
    EXPECT_TRUE(message().startsWith(u"A damaged history"_s)) << message().toStdString();
}

TEST_F(AppDelegateTest, AHistoryThatCannotBeOpenedEndsTheProgram)
{
    AppPaths::prepareDirectories();
    SQLiteConnection(AppPaths::databasePath()).execute("CREATE TABLE clips (other)");
    launch();
    EXPECT_TRUE(waitUntil([this] { return !m_failure.isEmpty(); }));
    EXPECT_EQ(m_failure, "Clipboard database operation failed: no such column: is_pinned");
    EXPECT_TRUE(m_delegate->isOpeningHistory());
}

TEST_F(AppDelegateTest, AHistoryThatIsNoFileEndsTheStart)
{
    ASSERT_TRUE(QDir().mkpath(AppPaths::databasePath()));
    EXPECT_THROW(launch(), ClipStoreError);
}

TEST_F(AppDelegateTest, AHistoryFolderThatCannotBeMadeEndsTheStart)
{
    QFile file(m_folder.filePath(u"data"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_THROW(startFirst(), std::exception);
}

TEST_F(AppDelegateTest, ALoginItemOfAnotherBuildIsMadeAnew)
{
    m_desktop.loginItem.setStatus(LoginItem::Status::enabled);
    start();
    EXPECT_EQ(m_desktop.loginItem.calls(), QStringList({u"unregister"_s, u"register"_s}));
    EXPECT_EQ(message(), QString());
}

TEST_F(AppDelegateTest, ALoginItemThatCannotBeRepairedIsToldOfAndTheStartGoesOn)
{
    m_desktop.loginItem.setStatus(LoginItem::Status::enabled);
    m_desktop.loginItem.failUnregistering();
    start();
    EXPECT_EQ(message(), u"Launch at login needs attention."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    copy("recorded all the same");
    EXPECT_TRUE(listBecomes(1));
}

// The first run

TEST_F(AppDelegateTest, TheFirstRunShowsTheWelcomeWindowAndRecordsNothing)
{
    startFirst();
    ASSERT_NE(m_views.onboarding, nullptr);
    EXPECT_TRUE(m_views.onboarding->isShown());
    copy("before the history is enabled");
    EXPECT_EQ(m_desktop.pasteboard.typesRequests(), 0U);
    EXPECT_THAT(m_desktop.hotKeys.held(), SizeIs(10)) << "the keys are there already";
}

TEST_F(AppDelegateTest, TheWelcomeWindowTellsOfThisDesktop)
{
    qunsetenv("XDG_CURRENT_DESKTOP");
    m_desktop.keys.setAllowed(false);
    startFirst();
    QStringList notes;
    for (const QVariant& row : m_views.onboardingModel->rows()) {
        notes.append(row.value<PermissionRow>().note);
    }
    ASSERT_EQ(notes.size(), 3);
    EXPECT_EQ(notes[0], u"Nothing to allow on this desktop."_s);
    EXPECT_EQ(notes[1], u"Tessly asks the desktop once for the permission to press keys."_s);
    EXPECT_TRUE(notes[2].contains(u"Tessly"_s));
}

TEST_F(AppDelegateTest, TheWelcomeWindowTellsOfAMissingTray)
{
    m_desktop.statusItem.setTray(StatusItem::Presence::absent);
    startFirst();
    EXPECT_EQ(m_views.onboardingModel->command(), u"tessly toggle"_s);
    m_desktop.statusItem.setTray(StatusItem::Presence::present);
    EXPECT_EQ(m_views.onboardingModel->command(), QString());
}

TEST_F(AppDelegateTest, EnablingStartsRecordingAndLeadsIntoThePanel)
{
    startFirst();
    copy("before the history is enabled");
    m_views.onboardingModel->enable();
    settle();
    EXPECT_TRUE(m_views.panel != nullptr && m_views.panel->isShown());
    copy("after it was");
    ASSERT_TRUE(listBecomes(1));
    EXPECT_EQ(model().clips().front().payload.held()->plainText(), "after it was");
    stop();
    m_views.onboarding = nullptr;
    startFirst();
    EXPECT_EQ(m_views.onboarding, nullptr) << "not shown again";
}

TEST_F(AppDelegateTest, ClosingTheWelcomeWindowLeavesItForTheNextStart)
{
    startFirst();
    m_views.onboarding->closeByUser();
    settle();
    copy("never enabled");
    EXPECT_EQ(m_desktop.pasteboard.typesRequests(), 0U);
    stop();
    m_views.onboarding = nullptr;
    startFirst();
    ASSERT_NE(m_views.onboarding, nullptr);
    EXPECT_TRUE(m_views.onboarding->isShown());
}

// Starting again

TEST_F(AppDelegateTest, AProgramThatStartsAgainIsPausedAsItWas)
{
    start();
    model().setRecordingPaused(true);
    m_delegate->startAgain();
    EXPECT_TRUE(m_delegate->startsAgain());
    stop();
    start();
    EXPECT_TRUE(model().clipboardMonitor().isPaused());
    stop();
    start();
    EXPECT_FALSE(model().clipboardMonitor().isPaused()) << "that was for one start";
}

TEST_F(AppDelegateTest, WhoAsksItToEndIsHeeded)
{
    start();
    m_delegate->startAgain();
    m_delegate->quitApplication();
    EXPECT_FALSE(m_delegate->startsAgain());
    m_delegate->startAgain();
    EXPECT_FALSE(m_delegate->startsAgain()) << "it ends already";
}

// Hot keys

TEST_F(AppDelegateTest, TenKeysAreHeldWithTheIdsOneToTen)
{
    start();
    const auto held = m_desktop.hotKeys.held();
    ASSERT_THAT(held, SizeIs(10));
    const std::vector<quint32> keyCodes = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};
    for (std::size_t index = 0; index < held.size(); ++index) {
        EXPECT_EQ(held[index].combination, std::pair(keyCodes[index], modifiers));
        EXPECT_EQ(held[index].key.id, index + 1);
    }
}

TEST_F(AppDelegateTest, WithDirectPasteOffNoKeyIsHeldAndNothingSaid)
{
    m_settings = "directPasteShortcuts=false\n";
    start();
    EXPECT_THAT(m_desktop.hotKeys.asked(), IsEmpty());
    EXPECT_EQ(message(), QString());
}

TEST_F(AppDelegateTest, SwitchingDirectPasteRegistersAndReleasesTheKeys)
{
    m_settings = "directPasteShortcuts=false\n";
    start();
    model().settings().setDirectPasteShortcuts(true);
    model().directPasteShortcutsDidChange();
    settle();
    ASSERT_THAT(m_desktop.hotKeys.held(), SizeIs(10));
    EXPECT_EQ(m_desktop.hotKeys.held().front().key.id, 1U);
    EXPECT_EQ(message(), u"Direct-paste shortcuts enabled."_s);
    model().settings().setDirectPasteShortcuts(false);
    model().directPasteShortcutsDidChange();
    settle();
    EXPECT_THAT(m_desktop.hotKeys.held(), IsEmpty());
    EXPECT_EQ(message(), u"Direct-paste shortcuts released."_s);
}

TEST_F(AppDelegateTest, KeysThatOthersHoldAreNamedByTheirKeys)
{
    m_desktop.hotKeys.takeElsewhere({20, modifiers});
    m_desktop.hotKeys.takeElsewhere({29, modifiers});
    start();
    EXPECT_EQ(message(), u"Some direct-paste shortcuts are already in use: ⌥⇧3, 0."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    EXPECT_THAT(m_desktop.hotKeys.held(), SizeIs(8));
}

TEST_F(AppDelegateTest, AKeyPastesTheEntryAtItsPosition)
{
    start();
    copy("older");
    ASSERT_TRUE(listBecomes(1));
    copy("newer");
    ASSERT_TRUE(listBecomes(2));
    m_desktop.workspace.setFrontmost(
        std::make_shared<FakeRunningApplication>(u"org.example.editor"_s));
    m_desktop.hotKeys.press({19, modifiers});
    ASSERT_TRUE(waitUntil([this] {
        tick();
        return !m_desktop.keys.pastes().empty();
    }));
    EXPECT_EQ(m_desktop.pasteboard.pastedText(), "older");
}

TEST_F(AppDelegateTest, AKeyThatIsHeldForUsPastesIntoThePanelsTargetWhileThePanelIsUp)
{
    start();
    copy("older");
    ASSERT_TRUE(listBecomes(1));
    copy("newer");
    ASSERT_TRUE(listBecomes(2));
    const auto editor = std::make_shared<FakeRunningApplication>(u"org.example.editor"_s);
    m_desktop.workspace.setFrontmost(editor);
    model().showPanel();
    m_desktop.workspace.setFrontmost(
        std::make_shared<FakeRunningApplication>(u"com.brackmoor.tessly"_s));
    m_desktop.hotKeys.press({19, modifiers});
    EXPECT_TRUE(waitUntil([&] {
        tick();
        return editor->activations() > 0;
    }));
    EXPECT_EQ(m_desktop.pasteboard.pastedText(), "older");
}

// The icon and its menu

TEST_F(AppDelegateTest, ALeftClickTogglesThePanelAtTheIcon)
{
    start();
    ASSERT_TRUE(m_desktop.statusItem.isVisible());
    m_desktop.statusItem.setRectangle(QRect(700, 0, 24, 24));
    m_desktop.statusItem.leftClick();
    ASSERT_NE(m_views.panel, nullptr);
    EXPECT_TRUE(m_views.panel->isShown());
    EXPECT_EQ(m_views.panel->anchor(), QRect(700, 0, 24, 24));
    m_desktop.statusItem.leftClick();
    EXPECT_FALSE(m_views.panel->isShown());
}

TEST_F(AppDelegateTest, ARightClickClosesThePanelAndShowsTheMenuAtThePointer)
{
    start();
    m_desktop.statusItem.setRectangle(QRect(700, 0, 24, 24));
    m_desktop.statusItem.leftClick();
    EXPECT_EQ(
        openTrayMenu(),
        QStringList(
            {u"Open Quick Paste"_s, u"Pause Clipboard Recording"_s, u"-"_s,
             u"Clear Unpinned History"_s, u"Settings…"_s, u"-"_s, u"Quit Tessly"_s}));
    EXPECT_FALSE(m_views.panel->isShown());
    EXPECT_EQ(m_views.menu->position, QPoint(700, 0));
}

TEST_F(AppDelegateTest, TheMenuPausesAndResumes)
{
    start();
    openTrayMenu();
    m_views.menu->choose(u"Pause Clipboard Recording"_s);
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    copy("while paused");
    EXPECT_EQ(m_desktop.pasteboard.contentRequests(), 0U);
    EXPECT_EQ(openTrayMenu().at(1), u"Resume Clipboard Recording"_s);
    m_views.menu->choose(u"Resume Clipboard Recording"_s);
    EXPECT_EQ(message(), u"Clipboard recording resumed."_s);
    EXPECT_EQ(bannerKind(), BannerKind::information);
    tick();
    EXPECT_EQ(m_desktop.pasteboard.contentRequests(), 0U) << "nothing is made up for";
    EXPECT_EQ(openTrayMenu().at(1), u"Pause Clipboard Recording"_s);
}

TEST_F(AppDelegateTest, ClearingAsksFirstAndCancelChangesNothing)
{
    start();
    copy("unpinned");
    ASSERT_TRUE(listBecomes(1));
    openTrayMenu();
    m_views.menu->choose(u"Clear Unpinned History"_s);
    ASSERT_NE(m_views.confirmation, nullptr);
    EXPECT_EQ(m_views.confirmation->message, u"Clear unpinned history?"_s);
    EXPECT_EQ(m_views.confirmation->buttons, QStringList({u"Clear"_s, u"Cancel"_s}));
    m_views.confirmation->answer(false);
    settle();
    EXPECT_EQ(message(), QString());
    EXPECT_THAT(model().clips(), SizeIs(1));
}

TEST_F(AppDelegateTest, ClearingKeepsWhatIsPinned)
{
    start();
    copy("pinned");
    ASSERT_TRUE(listBecomes(1));
    model().togglePin();
    ASSERT_TRUE(waitUntil([this] { return model().clips().front().isPinned; }));
    copy("unpinned");
    ASSERT_TRUE(listBecomes(2));
    openTrayMenu();
    m_views.menu->choose(u"Clear Unpinned History"_s);
    m_views.confirmation->answer(true);
    EXPECT_TRUE(bannerBecomes(u"Clipboard history cleared."_s));
    ASSERT_TRUE(listBecomes(1));
    EXPECT_EQ(model().clips().front().payload.held()->plainText(), "pinned");
}

TEST_F(AppDelegateTest, TheMenuOpensPanelAndSettingsAndQuits)
{
    start();
    openTrayMenu();
    m_views.menu->choose(u"Open Quick Paste"_s);
    EXPECT_TRUE(m_views.panel->isShown());
    openTrayMenu();
    m_views.menu->choose(u"Settings…"_s);
    ASSERT_NE(m_views.settings, nullptr);
    EXPECT_TRUE(m_views.settings->isShown());
    EXPECT_FALSE(m_views.panel->isShown());
    openTrayMenu();
    EXPECT_EQ(m_quits, 0);
    m_views.menu->choose(u"Quit Tessly"_s);
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
}

TEST_F(AppDelegateTest, AMenuThatTheTrayShowsDoesTheSame)
{
    start();
    const std::vector<StatusMenuItem> items = m_desktop.statusItem.openMenu();
    ASSERT_THAT(items, SizeIs(7));
    m_desktop.statusItem.choose(items[1].action);
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    EXPECT_EQ(m_desktop.statusItem.openMenu()[1].title, u"Resume Clipboard Recording"_s);
}

TEST_F(AppDelegateTest, WithoutATrayThePanelOpensAtThePointer)
{
    m_desktop.statusItem.setTray(StatusItem::Presence::absent);
    m_desktop.statusItem.setRectangle(QRect(700, 0, 24, 24));
    start();
    model().showPanel();
    ASSERT_NE(m_views.panel, nullptr);
    EXPECT_EQ(m_views.panel->anchor().topLeft(), QCursor::pos());
}

TEST_F(AppDelegateTest, WindowsThatCannotBeMadeAreDoneWithout)
{
    m_delegate.reset();
    writeSettings("hasCompletedOnboarding=true\n");
    m_delegate = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
        .clock = m_clock,
        .makePlatform = [this] { return std::make_unique<FakePlatform>(m_desktop); },
        .views = [] { return nullptr; },
        .quit = [] {},
        .fail = [](const std::exception&) {},
    });
    m_delegate->applicationDidFinishLaunching();
    m_desktop.statusItem.leftClick();
    m_desktop.statusItem.rightClick();
    m_desktop.statusItem.choose(u"openSettings"_s);
    m_desktop.statusItem.choose(u"clearHistory"_s);
    EXPECT_FALSE(model().isPanelPresented());
    copy("recorded all the same");
    EXPECT_TRUE(listBecomes(1));
}

// Becoming active, and the end

TEST_F(AppDelegateTest, BecomingActiveLooksAtThePermissionAgain)
{
    m_desktop.keys.setAllowed(false);
    start();
    ASSERT_FALSE(model().automaticPasteAccessGranted());
    m_delegate->applicationDidBecomeActive();
    m_desktop.keys.setAllowed(true);
    m_clock.advance(500ms);
    EXPECT_TRUE(model().automaticPasteAccessGranted());
}

TEST_F(AppDelegateTest, TheEndOfTheSessionQuits)
{
    start();
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qGuiApp, &quit);
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
}

TEST_F(AppDelegateTest, WhatWasJustCopiedIsInTheHistoryBeforeTheProgramEnds)
{
    start();
    m_desktop.pasteboard.copyText("just copied");
    m_delegate->quitApplication();
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
    stop();
    start();
    ASSERT_TRUE(listBecomes(1));
    EXPECT_EQ(model().clips().front().payload.held()->plainText(), "just copied");
}

TEST_F(AppDelegateTest, AnOwnerThatHangsHoldsUpTheEndNotForLong)
{
    start();
    m_desktop.pasteboard.gate().hold();
    m_desktop.pasteboard.copyText("hangs");
    m_delegate->quitApplication();
    m_clock.advance(999ms);
    EXPECT_EQ(m_quits, 0);
    m_clock.advance(1ms);
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
}

TEST_F(AppDelegateTest, BeingToldToQuitTwiceInARowCutsNothingShort)
{
    start();
    m_desktop.pasteboard.gate().hold();
    m_desktop.pasteboard.copyText("just copied");
    m_delegate->quitApplication();
    m_delegate->quitApplication();
    EXPECT_EQ(m_quits, 0);
    m_desktop.pasteboard.gate().open();
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
    stop();
    start();
    EXPECT_TRUE(listBecomes(1));
}

TEST_F(AppDelegateTest, TerminatingStopsRecordingAndGivesUpTheKeys)
{
    start();
    m_delegate->applicationWillTerminate();
    EXPECT_THAT(m_desktop.hotKeys.held(), IsEmpty());
    EXPECT_FALSE(m_desktop.hotKeys.hasHandler());
    m_desktop.pasteboard.forgetRequests();
    copy("too late");
    EXPECT_EQ(m_desktop.pasteboard.typesRequests(), 0U);
}

TEST_F(AppDelegateTest, TestsOfTheInterfaceKeepThePanelOpen)
{
    qputenv("TESSLY_UI_TESTING", "1");
    start();
    m_desktop.statusItem.leftClick();
    m_views.panel->loseKeyboard();
    EXPECT_TRUE(m_views.panel->isShown());
}

} // namespace
} // namespace tessly::test
