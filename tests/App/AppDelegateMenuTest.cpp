#include "AppDelegateTest.h"

namespace tessly::test {
namespace {

using AppDelegateMenuTest = AppDelegateTest;

// Hot keys

TEST_F(AppDelegateMenuTest, TenKeysAreHeldWithTheIdsOneToTen)
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

TEST_F(AppDelegateMenuTest, WithDirectPasteOffNoKeyIsHeldAndNothingSaid)
{
    m_settings = "directPasteShortcuts=false\n";
    start();
    EXPECT_THAT(m_desktop.hotKeys.asked(), IsEmpty());
    EXPECT_EQ(message(), QString());
}

TEST_F(AppDelegateMenuTest, SwitchingDirectPasteRegistersAndReleasesTheKeys)
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

TEST_F(AppDelegateMenuTest, KeysThatOthersHoldAreNamedByTheirKeys)
{
    m_desktop.hotKeys.takeElsewhere({20, modifiers});
    m_desktop.hotKeys.takeElsewhere({29, modifiers});
    start();
    EXPECT_EQ(message(), u"Some direct-paste shortcuts are already in use: ⌥⇧3, 0."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    EXPECT_THAT(m_desktop.hotKeys.held(), SizeIs(8));
}

TEST_F(AppDelegateMenuTest, AKeyPastesTheEntryAtItsPosition)
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

TEST_F(AppDelegateMenuTest, AKeyThatIsHeldForUsPastesIntoThePanelsTargetWhileThePanelIsUp)
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

TEST_F(AppDelegateMenuTest, ALeftClickTogglesThePanelAtTheIcon)
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

TEST_F(AppDelegateMenuTest, ARightClickClosesThePanelAndShowsTheMenuAtThePointer)
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

TEST_F(AppDelegateMenuTest, TheMenuPausesAndResumes)
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

TEST_F(AppDelegateMenuTest, ClearingAsksFirstAndCancelChangesNothing)
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

TEST_F(AppDelegateMenuTest, ClearingKeepsWhatIsPinned)
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

TEST_F(AppDelegateMenuTest, TheMenuOpensPanelAndSettingsAndQuits)
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

TEST_F(AppDelegateMenuTest, AMenuThatTheTrayShowsDoesTheSame)
{
    start();
    const std::vector<StatusMenuItem> items = m_desktop.statusItem.openMenu();
    ASSERT_THAT(items, SizeIs(7));
    m_desktop.statusItem.choose(items[1].action);
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    EXPECT_EQ(m_desktop.statusItem.openMenu()[1].title, u"Resume Clipboard Recording"_s);
}

TEST_F(AppDelegateMenuTest, WithoutATrayThePanelOpensAtThePointer)
{
    m_desktop.statusItem.setTray(StatusItem::Presence::absent);
    m_desktop.statusItem.setRectangle(QRect(700, 0, 24, 24));
    start();
    model().showPanel();
    ASSERT_NE(m_views.panel, nullptr);
    EXPECT_EQ(m_views.panel->anchor().topLeft(), QCursor::pos());
}

TEST_F(AppDelegateMenuTest, WindowsThatCannotBeMadeAreDoneWithout)
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

TEST_F(AppDelegateMenuTest, BecomingActiveLooksAtThePermissionAgain)
{
    m_desktop.keys.setAllowed(false);
    start();
    ASSERT_FALSE(model().automaticPasteAccessGranted());
    m_delegate->applicationDidBecomeActive();
    m_desktop.keys.setAllowed(true);
    m_clock.advance(500ms);
    EXPECT_TRUE(model().automaticPasteAccessGranted());
}

TEST_F(AppDelegateMenuTest, TheEndOfTheSessionQuits)
{
    start();
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qGuiApp, &quit);
    EXPECT_TRUE(waitUntil([this] { return m_quits == 1; }));
}

TEST_F(AppDelegateMenuTest, WhatWasJustCopiedIsInTheHistoryBeforeTheProgramEnds)
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

TEST_F(AppDelegateMenuTest, TheUserIsAskedAgainWhereTheyAskToBe)
{
    start();
    m_desktop.keys.setAllowed(false);
    model().openAutomaticPasteSettings();
    EXPECT_EQ(m_desktop.asked, 1);
    EXPECT_EQ(message(), QString());
    m_desktop.canAsk = false;
    model().openAutomaticPasteSettings();
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
}

TEST_F(AppDelegateMenuTest, AnOwnerThatHangsHoldsUpTheEndNotForLong)
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

TEST_F(AppDelegateMenuTest, BeingToldToQuitTwiceInARowCutsNothingShort)
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

TEST_F(AppDelegateMenuTest, TerminatingStopsRecordingAndGivesUpTheKeys)
{
    start();
    m_delegate->applicationWillTerminate();
    EXPECT_THAT(m_desktop.hotKeys.held(), IsEmpty());
    EXPECT_FALSE(m_desktop.hotKeys.hasHandler());
    m_desktop.pasteboard.forgetRequests();
    copy("too late");
    EXPECT_EQ(m_desktop.pasteboard.typesRequests(), 0U);
}

TEST_F(AppDelegateMenuTest, TestsOfTheInterfaceKeepThePanelOpen)
{
    qputenv("TESSLY_UI_TESTING", "1");
    start();
    m_desktop.statusItem.leftClick();
    m_views.panel->loseKeyboard();
    EXPECT_TRUE(m_views.panel->isShown());
}

} // namespace
} // namespace tessly::test
