#include "AppDelegateTest.h"

namespace tessly::test {
namespace {

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
    EXPECT_FALSE(m_desktop.hotKeys.mayAsk()) << "where nobody is asked for them";
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
    EXPECT_TRUE(m_desktop.hotKeys.mayAsk());
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

} // namespace
} // namespace tessly::test
