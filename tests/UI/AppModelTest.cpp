#include "AppModelFixture.h"
#include "LogCapture.h"
#include "SQLiteConnection.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <algorithm>
#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace tessly::test {

using BannerKind = AppModel::BannerKind;
using Debounce = AppModel::Debounce;

namespace {

class AppModelTest : public AppModelFixture
{
protected:
    /// Another application copies, and the monitor has seen it; the store has not run yet.
    void copy(const QByteArray& text)
    {
        m_pasteboard.copyText(text);
        m_clock.advance(350ms);
    }

    void reload()
    {
        m_model->reload(Debounce::no);
        run();
    }
};

// Construction

TEST_F(AppModelTest, BeginsEmptyAndStartsNothing)
{
    EXPECT_THAT(m_model->clips(), IsEmpty());
    EXPECT_EQ(m_model->query(), QString());
    EXPECT_EQ(m_model->selectedKind(), std::nullopt);
    EXPECT_EQ(m_model->selectedID(), std::nullopt);
    EXPECT_EQ(m_model->selectedClip(), nullptr);
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_EQ(m_model->currentTargetApplication(), nullptr);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_model->statistics(), ClipStore::Statistics());
    EXPECT_EQ(m_clock.pending(), 0U);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelTest, AccessIsReadAtConstruction)
{
    EXPECT_TRUE(m_model->automaticPasteAccessGranted());
    m_keys.setAllowed(false);
    EXPECT_TRUE(m_model->automaticPasteAccessGranted());
    const AppModel model(
        {*m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
         m_workspace, m_clock});
    EXPECT_FALSE(model.automaticPasteAccessGranted());
}

TEST_F(AppModelTest, TheMonitorIsMadeOnceAndNotStartedByThat)
{
    ClipboardMonitor& monitor = m_model->clipboardMonitor();
    EXPECT_EQ(&m_model->clipboardMonitor(), &monitor);
    EXPECT_EQ(m_clock.pending(), 0U);
}

// Properties

TEST_F(AppModelTest, PropertiesTellOfRealChangesOnly)
{
    const QSignalSpy query(m_model.get(), &AppModel::queryChanged);
    m_model->setQuery(u"a"_s);
    m_model->setQuery(u"a"_s);
    EXPECT_EQ(query.count(), 1);
    EXPECT_EQ(m_model->query(), u"a"_s);

    const QSignalSpy kind(m_model.get(), &AppModel::selectedKindChanged);
    m_model->setSelectedKind(ClipKind::image);
    m_model->setSelectedKind(ClipKind::image);
    EXPECT_EQ(kind.count(), 1);
    EXPECT_EQ(m_model->selectedKind(), ClipKind::image);

    const QSignalSpy selection(m_model.get(), &AppModel::selectedIDChanged);
    const QUuid id = QUuid::createUuid();
    m_model->setSelectedID(id);
    m_model->setSelectedID(id);
    EXPECT_EQ(selection.count(), 1);
    EXPECT_EQ(m_model->selectedID(), id);

    const QSignalSpy presented(m_model.get(), &AppModel::isPanelPresentedChanged);
    m_model->setPanelPresented(true);
    m_model->setPanelPresented(true);
    EXPECT_EQ(presented.count(), 1);
    EXPECT_TRUE(m_model->isPanelPresented());

    const QSignalSpy target(m_model.get(), &AppModel::currentTargetApplicationChanged);
    const auto application = std::make_shared<FakeRunningApplication>(std::nullopt);
    m_model->setCurrentTargetApplication(application);
    m_model->setCurrentTargetApplication(application);
    EXPECT_EQ(target.count(), 1);
    EXPECT_EQ(m_model->currentTargetApplication(), application);
}

TEST_F(AppModelTest, SettingTheQueryOrTheKindSearchesNothingByItself)
{
    m_model->setQuery(u"a"_s);
    m_model->setSelectedKind(ClipKind::link);
    EXPECT_EQ(m_clock.pending(), 0U);
    EXPECT_EQ(m_executor->pending(), 0U);
}

// Captures

TEST_F(AppModelTest, ACopyIsSavedWithItsSourceAndListed)
{
    m_workspace.setFrontmost(
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s));
    m_model->clipboardMonitor().start();
    copy("hello");
    EXPECT_THAT(m_model->clips(), IsEmpty());
    run();
    EXPECT_THAT(texts(), ElementsAre("hello"));
    const Clip& clip = m_model->clips().front();
    EXPECT_EQ(clip.sourceAppName, u"Editor"_s);
    EXPECT_EQ(clip.sourceBundleID, u"org.example.Editor"_s);
    EXPECT_EQ(m_model->selectedID(), clip.id);
    EXPECT_EQ(m_model->statistics().totalItems, 1);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelTest, ACopyWithNothingInFrontHasNoSource)
{
    m_model->clipboardMonitor().start();
    copy("hello");
    run();
    EXPECT_EQ(m_model->clips().at(0).sourceAppName, std::nullopt);
    EXPECT_EQ(m_model->clips().at(0).sourceBundleID, std::nullopt);
}

TEST_F(AppModelTest, ACopyWhileAnotherIsBeingSavedIsSavedAfterIt)
{
    m_model->clipboardMonitor().start();
    copy("first");
    copy("second");
    EXPECT_EQ(m_executor->pending(), 2U);
    m_executor->runOne();
    m_clock.advance(1s);
    run();
    EXPECT_THAT(texts(), ElementsAre("second", "first"));
    EXPECT_EQ(m_model->statistics().totalItems, 2);
}

TEST_F(AppModelTest, AReloadCancelsNoCapture)
{
    m_model->clipboardMonitor().start();
    copy("hello");
    m_model->reload(Debounce::no);
    m_model->reload(Debounce::yes);
    run();
    EXPECT_THAT(texts(), ElementsAre("hello"));
}

TEST_F(AppModelTest, TheHistoryIsTrimmedToTheSettingAtTheTimeOfTheCapture)
{
    for (int i = 0; i < 15; ++i) {
        save(QByteArray::number(i));
    }
    m_model->clipboardMonitor().start();
    m_settings.setMaxHistory(12);
    copy("newest");
    m_settings.setMaxHistory(500);
    run();
    EXPECT_EQ(m_model->statistics().totalItems, 12);
    EXPECT_EQ(texts().front(), "newest");
}

TEST_F(AppModelTest, ACaptureThatCannotBeSavedShowsTheStoresErrorAndReloadsNothing)
{
    save("before");
    reload();
    m_model->clipboardMonitor().start();
    breakStore();
    copy("lost");
    run();
    EXPECT_TRUE(message().startsWith(u"Clipboard database operation failed: "_s))
        << message().toStdString();
    EXPECT_EQ(bannerKind(), BannerKind::error);
    EXPECT_THAT(texts(), ElementsAre("before"));
    EXPECT_EQ(m_model->statistics().totalItems, 1);
}

/// A store that fails for as long as the test says so.
class AppModelSaveTest : public AppModelTest
{
protected:
    AppModelSaveTest() { m_model->clipboardMonitor().start(); }

    void hideTable() { executeSQL("ALTER TABLE clips RENAME TO hidden"); }
    void bringTableBack() { executeSQL("ALTER TABLE hidden RENAME TO clips"); }
    static std::vector<QString> linesOf(const LogCapture& log)
    {
        std::vector<QString> lines;
        for (const auto& line : log.lines(u"com.brackmoor.tessly.AppModel"_s)) {
            lines.push_back(line.text);
        }
        return lines;
    }
};

TEST_F(AppModelSaveTest, ACopyThatCouldNotBeSavedIsTriedAgainAfterFiveSeconds)
{
    hideTable();
    const LogCapture log;
    copy("first");
    run();
    ASSERT_TRUE(m_model->lastError().has_value());
    EXPECT_EQ(message(), *m_model->lastError());
    ASSERT_THAT(linesOf(log), SizeIs(1));
    EXPECT_TRUE(linesOf(log).front().startsWith(
        u"A copy could not be saved, and is tried again: Clipboard database operation failed: "_s));
    EXPECT_FALSE(linesOf(log).front().contains(u"first"_s));
    pass(4s);
    bringTableBack();
    pass(999ms);
    EXPECT_THAT(texts(), IsEmpty());
    pass(1ms);
    EXPECT_THAT(texts(), ElementsAre("first"));
    EXPECT_FALSE(m_model->lastError().has_value());
    EXPECT_THAT(linesOf(log), SizeIs(1));
}

TEST_F(AppModelSaveTest, TheNextCopyBringsTheOnesBeforeAlong)
{
    hideTable();
    copy("first");
    run();
    copy("second");
    run();
    bringTableBack();
    copy("third");
    run();
    EXPECT_THAT(texts(), ElementsAre("third", "second", "first"));
    EXPECT_FALSE(m_model->lastError().has_value());
}

TEST_F(AppModelSaveTest, ThreeCopiesAreHeldAtTheMost)
{
    hideTable();
    const LogCapture log;
    for (const char* text : {"first", "second", "third", "fourth"}) {
        copy(text);
        run();
    }
    EXPECT_THAT(
        linesOf(log),
        testing::Contains(u"A copy was not recorded: the history could not take it."_s).Times(1));
    bringTableBack();
    pass(5s);
    EXPECT_THAT(texts(), ElementsAre("fourth", "third", "second"));
}

TEST_F(AppModelSaveTest, WhatIsClearedDoesNotComeBack)
{
    hideTable();
    copy("first");
    run();
    bringTableBack();
    m_pasteboard.copyText("second");
    m_model->clearHistory(true);
    run();
    pass(5s);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(AppModelSaveTest, AFailureWhileThePanelWasClosedIsShownWhenItOpens)
{
    hideTable();
    copy("first");
    run();
    pass(4s);
    EXPECT_FALSE(m_model->banner().has_value());
    m_model->setPanelPresented(true);
    EXPECT_EQ(message(), *m_model->lastError());
    EXPECT_EQ(bannerKind(), BannerKind::error);
    pass(4s);
    m_model->setPanelPresented(false);
    m_model->setPanelPresented(true);
    EXPECT_FALSE(m_model->banner().has_value()) << "it has been seen";
}

TEST_F(AppModelSaveTest, AFailureThatIsOverIsNotShown)
{
    hideTable();
    copy("first");
    run();
    bringTableBack();
    pass(5s);
    m_model->setPanelPresented(true);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelSaveTest, SettlingForGoodSavesWhatWasCopiedAndWhatHadFailed)
{
    hideTable();
    copy("first");
    run();
    bringTableBack();
    m_pasteboard.copyText("second");
    bool isSettled = false;
    whenDone(m_model->settleForGood(), [&] { isSettled = true; });
    EXPECT_FALSE(isSettled);
    run();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(stored(), SizeIs(2));
}

TEST_F(AppModelTest, ACaptureIsSavedEvenIfTheModelGoesMeanwhile)
{
    m_model->clipboardMonitor().start();
    copy("hello");
    m_model.reset();
    run();
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(AppModelTest, AnUnchangedEntryKeepsItsContentInMemory)
{
    save("kept");
    reload();
    const auto* const bytes = m_model->clips().at(0).payload.held()->plainText()->constData();
    save("new");
    reload();
    ASSERT_THAT(texts(), ElementsAre("new", "kept"));
    EXPECT_EQ(m_model->clips().at(1).payload.held()->plainText()->constData(), bytes);
}

// Wiping what was dropped

/// While it lives, no file of this process grows or is written to.
class FullDisk
{
public:
    FullDisk()
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit none{0, m_limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_limit{};
};

class AppModelScrubTest : public AppModelTest
{
protected:
    AppModelScrubTest()
    {
        m_settings.setMaxHistory(10);
        for (int i = 0; i < 10; ++i) {
            save("text " + QByteArray::number(i));
        }
        m_model->clipboardMonitor().start();
    }

    /// Whether a text is anywhere in the database's files.
    [[nodiscard]] bool isOnDisk(const QByteArray& text) const
    {
        const QDir folder(m_folder.path());
        const QStringList names = folder.entryList(QDir::Files);
        return std::ranges::any_of(names, [&](const QString& name) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            return file.readAll().contains(text);
        });
    }
};

TEST_F(AppModelScrubTest, WhatACaptureDroppedIsWipedFiveSecondsLater)
{
    ASSERT_TRUE(isOnDisk("text 0"));
    copy("new");
    run();
    pass(4999ms);
    EXPECT_TRUE(isOnDisk("text 0")) << "this test would see it";
    pass(1ms);
    EXPECT_FALSE(isOnDisk("text 0"));
    EXPECT_TRUE(isOnDisk("text 1"));
}

TEST_F(AppModelScrubTest, WhatATrimDroppedIsWipedFiveSecondsLater)
{
    save("new");
    m_model->trimHistoryToCurrentLimit();
    run();
    pass(5s);
    EXPECT_FALSE(isOnDisk("text 0"));
}

TEST_F(AppModelScrubTest, EachCapturePutsTheWipingOff)
{
    for (int i = 0; i < 5; ++i) {
        copy("new " + QByteArray::number(i));
        run();
        m_clock.advance(4s);
        EXPECT_EQ(m_executor->pending(), 0U);
    }
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 1U);
}

TEST_F(AppModelScrubTest, NothingIsWipedWhileThePanelIsUp)
{
    copy("new");
    run();
    m_model->setPanelPresented(true);
    m_clock.advance(30s);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_model->setPanelPresented(false);
    m_clock.advance(5s);
    EXPECT_EQ(m_executor->pending(), 1U);
}

TEST_F(AppModelScrubTest, WhatTheLastRunMayHaveLeftIsWipedAWhileAfterTheFirstReload)
{
    reload();
    m_clock.advance(10s);
    reload();
    m_clock.advance(19'999ms);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(1ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    reload();
    m_clock.advance(1h);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelScrubTest, WipingThatFailsIsLoggedAndShowsNoBanner)
{
    copy("new");
    run();
    const FullDisk disk;
    const LogCapture log;
    pass(5s);
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.AppModel"_s), SizeIs(1));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelScrubTest, WhatADeletionCouldNotWipeIsWipedLater)
{
    reload();
    const LogCapture log;
    {
        SQLiteConnection reader(m_databasePath);
        reader.execute("BEGIN; SELECT count(*) FROM clips");
        m_model->deleteClip(m_model->clips().back());
        run();
        EXPECT_THAT(texts(), Not(Contains("text 0")));
        pass(5s);
        EXPECT_TRUE(isOnDisk("text 0")) << "the other program reads it still";
    }
    pass(59s);
    EXPECT_TRUE(isOnDisk("text 0"));
    pass(1s);
    EXPECT_FALSE(isOnDisk("text 0"));
    m_clock.advance(24h);
    EXPECT_EQ(m_executor->pending(), 0U) << "nothing is left to do";
}

TEST_F(AppModelScrubTest, WipingThatKeepsFailingIsTriedEverLessOften)
{
    copy("new");
    run();
    const FullDisk disk;
    const LogCapture log;
    pass(5s);
    for (const auto delay : {1min, 2min, 4min, 8min, 16min, 32min, 60min, 60min}) {
        m_clock.advance(delay - 1ms);
        EXPECT_EQ(m_executor->pending(), 0U);
        m_clock.advance(1ms);
        EXPECT_EQ(m_executor->pending(), 1U);
        run();
    }
}

TEST_F(AppModelTest, AccessIssuesBecomeBanners)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.setAccess(PasteboardAccess::askEveryTime);
    copy("text");
    EXPECT_EQ(
        message(),
        u"Clipboard access is set to Ask. Choose Always Allow for continuous history."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_pasteboard.setAccess(PasteboardAccess::denied);
    copy("text");
    EXPECT_EQ(
        message(), u"Clipboard access is denied. Enable it in Privacy & Security settings."_s);
    EXPECT_EQ(bannerKind(), BannerKind::error);
}

// Reloading

TEST_F(AppModelTest, AReloadFetchesListStatisticsAndSelection)
{
    save("one");
    const Clip two = save("two");
    result(m_store->setPinned(true, two.id));
    reload();
    EXPECT_THAT(texts(), ElementsAre("two", "one"));
    EXPECT_EQ(m_model->statistics().totalItems, 2);
    EXPECT_EQ(m_model->statistics().pinnedItems, 1);
    EXPECT_GT(m_model->statistics().databaseBytes, 0);
    EXPECT_EQ(m_model->selectedID(), two.id);
}

TEST_F(AppModelTest, TheListHoldsFiftyRowsAtTheMost)
{
    for (int i = 0; i < 51; ++i) {
        save(QByteArray::number(i));
    }
    reload();
    EXPECT_THAT(m_model->clips(), SizeIs(50));
    EXPECT_EQ(texts().front(), "50");
    EXPECT_EQ(m_model->statistics().totalItems, 51);
}

TEST_F(AppModelTest, AReloadSearchesWithTheQueryAndTheKind)
{
    save("apple");
    save("banana");
    save("mailto:apple");
    m_model->setQuery(u"apple"_s);
    reload();
    EXPECT_THAT(texts(), ElementsAre("mailto:apple", "apple"));
    m_model->setSelectedKind(ClipKind::link);
    reload();
    EXPECT_THAT(texts(), ElementsAre("mailto:apple"));
    m_model->setQuery({});
    m_model->setSelectedKind(ClipKind::text);
    reload();
    EXPECT_THAT(texts(), ElementsAre("banana", "apple"));
}

TEST_F(AppModelTest, ADebouncedReloadWaits120Milliseconds)
{
    save("text");
    m_model->reload(Debounce::yes);
    m_clock.advance(119ms);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(1ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    EXPECT_THAT(texts(), ElementsAre("text"));
}

TEST_F(AppModelTest, TypingThreeLettersFastRunsOneSearchForAllOfThem)
{
    save("abc");
    save("abd");
    for (const QString& query : {u"a"_s, u"ab"_s, u"abc"_s}) {
        m_model->setQuery(query);
        m_model->reload(Debounce::yes);
        m_clock.advance(40ms);
    }
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(80ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    EXPECT_THAT(texts(), ElementsAre("abc"));
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelTest, ADebouncedReloadSearchesForWhatWasTypedWhenItWasCalled)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::yes);
    m_model->setQuery(u"banana"_s);
    pass(120ms);
    EXPECT_THAT(texts(), ElementsAre("apple"));
}

TEST_F(AppModelTest, AnUndebouncedReloadTakesTheDebouncedOnesPlace)
{
    save("text");
    m_model->reload(Debounce::yes);
    m_model->reload(Debounce::no);
    run();
    EXPECT_THAT(texts(), ElementsAre("text"));
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelTest, ASearchThatEndsAfterANewerReloadBeganIsDropped)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    // The older search is done, its result on the way.
    m_model->setQuery(u"banana"_s);
    m_model->reload(Debounce::no);
    settle();
    EXPECT_EQ(m_executor->pending(), 1U) << "nothing is counted for the older one";
    EXPECT_THAT(m_model->clips(), IsEmpty());
    run();
    EXPECT_THAT(texts(), ElementsAre("banana"));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelTest, AReloadThatIsOvertakenWhileItCountsIsDropped)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    settle();
    ASSERT_TRUE(m_executor->runOne());
    m_model->setQuery(u"banana"_s);
    m_model->reload(Debounce::yes);
    settle();
    EXPECT_THAT(m_model->clips(), IsEmpty()) << "also while the newer one still waits";
    pass(120ms);
    EXPECT_THAT(texts(), ElementsAre("banana"));
}

TEST_F(AppModelTest, ASearchThatIsOvertakenBeforeItRunsIsInterruptedWithoutABanner)
{
    save("apple");
    const QSignalSpy banners(m_model.get(), &AppModel::bannerChanged);
    const QSignalSpy lists(m_model.get(), &AppModel::clipsChanged);
    m_model->setQuery(u"apple"_s);
    for (int i = 0; i < 10; ++i) {
        m_model->reload(Debounce::no);
    }
    EXPECT_EQ(m_executor->pending(), 10U);
    run();
    EXPECT_EQ(banners.count(), 0);
    EXPECT_EQ(lists.count(), 1);
    EXPECT_THAT(texts(), ElementsAre("apple"));
}

TEST_F(AppModelTest, AReloadThatFailsShowsTheErrorAndLeavesTheList)
{
    const Clip clip = save("text");
    reload();
    breakStore();
    m_model->setQuery(u"nothing like it"_s);
    reload();
    EXPECT_TRUE(message().startsWith(u"Clipboard database operation failed: "_s))
        << message().toStdString();
    EXPECT_EQ(bannerKind(), BannerKind::error);
    EXPECT_THAT(texts(), ElementsAre("text"));
    EXPECT_EQ(m_model->selectedID(), clip.id);
    EXPECT_EQ(m_model->statistics().totalItems, 1);
}

TEST_F(AppModelTest, AReloadWhoseCountFailsShowsTheErrorAndLeavesTheList)
{
    save("one");
    reload();
    save("two");
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    breakStore();
    run();
    EXPECT_EQ(bannerKind(), BannerKind::error);
    EXPECT_THAT(texts(), ElementsAre("one"));
}

TEST_F(AppModelTest, ObserversHearOfAReloadOnlyWhatChanged)
{
    save("one");
    reload();
    const QSignalSpy clips(m_model.get(), &AppModel::clipsChanged);
    const QSignalSpy statistics(m_model.get(), &AppModel::statisticsChanged);
    const QSignalSpy selection(m_model.get(), &AppModel::selectedIDChanged);
    reload();
    EXPECT_EQ(clips.count(), 0);
    EXPECT_EQ(statistics.count(), 0);
    EXPECT_EQ(selection.count(), 0);
    save("two");
    reload();
    EXPECT_EQ(clips.count(), 1);
    EXPECT_EQ(statistics.count(), 1);
    EXPECT_EQ(selection.count(), 0) << "the selected entry is still there";
}

TEST_F(AppModelTest, WhoeverHearsOfTheNewListFindsTheSelectionInIt)
{
    save("one");
    reload();
    const Clip one = m_model->clips().front();
    const Clip two = save("two");
    result(m_store->remove(one.id));
    const Clip* selected = nullptr;
    QObject::connect(m_model.get(), &AppModel::clipsChanged, m_model.get(), [&] {
        selected = m_model->selectedClip();
        ASSERT_NE(selected, nullptr);
        EXPECT_EQ(selected->id, two.id);
    });
    reload();
    EXPECT_NE(selected, nullptr);
}

TEST_F(AppModelTest, AModelThatGoesDuringAReloadLeavesNoTrace)
{
    save("text");
    m_model->reload(Debounce::no);
    m_executor->runOne();
    m_model.reset();
    run();
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelTest, AModelThatGoesWhileTypingPausesSearchesNothing)
{
    m_model->reload(Debounce::yes);
    m_model->showBanner(u"text"_s, BannerKind::warning);
    m_model.reset();
    EXPECT_EQ(m_clock.pending(), 0U);
}

// The selection

class AppModelSelectionTest : public AppModelTest
{
protected:
    AppModelSelectionTest()
    {
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        reload();
    }

    [[nodiscard]] QByteArray selected() const
    {
        return m_model->selectedClip()
                   ? m_model->selectedClip()->payload.held()->plainText().value_or(QByteArray())
                   : "(none)";
    }
};

TEST_F(AppModelSelectionTest, MovesByOneRowAndStopsAtTheEnds)
{
    EXPECT_EQ(selected(), "one");
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    m_model->selectNext();
    EXPECT_EQ(selected(), "two");
    m_model->selectNext();
    EXPECT_EQ(selected(), "three");
    const QSignalSpy spy(m_model.get(), &AppModel::selectedIDChanged);
    m_model->selectNext();
    EXPECT_EQ(selected(), "three");
    EXPECT_EQ(spy.count(), 0);
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "two");
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(AppModelSelectionTest, NothingSelectedMeansTheFirstRow)
{
    m_model->setSelectedID(std::nullopt);
    EXPECT_EQ(selected(), "one");
    m_model->selectNext();
    EXPECT_EQ(selected(), "one");
    EXPECT_TRUE(m_model->selectedID().has_value());
    m_model->setSelectedID(std::nullopt);
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    EXPECT_TRUE(m_model->selectedID().has_value());
}

TEST_F(AppModelSelectionTest, ASelectionOutsideTheListIsNoClipAndMovesToTheFirstRow)
{
    m_model->setSelectedID(QUuid::createUuid());
    EXPECT_EQ(selected(), "(none)");
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    m_model->setSelectedID(QUuid::createUuid());
    m_model->selectNext();
    EXPECT_EQ(selected(), "one");
}

TEST_F(AppModelSelectionTest, StaysWithItsClipThroughAReload)
{
    m_model->selectNext();
    save("zero");
    reload();
    EXPECT_THAT(texts(), ElementsAre("zero", "one", "two", "three"));
    EXPECT_EQ(selected(), "two");
}

TEST_F(AppModelSelectionTest, MovesToTheFirstRowWhenItsClipIsFilteredOut)
{
    m_model->setQuery(u"t"_s);
    reload();
    EXPECT_THAT(texts(), ElementsAre("two", "three"));
    EXPECT_EQ(selected(), "two");
}

TEST_F(AppModelSelectionTest, IsAbsentInAnEmptyList)
{
    m_model->setQuery(u"nothing like it"_s);
    reload();
    EXPECT_EQ(m_model->selectedID(), std::nullopt);
    EXPECT_EQ(m_model->selectedClip(), nullptr);
    m_model->selectNext();
    m_model->selectPrevious();
    EXPECT_EQ(m_model->selectedID(), std::nullopt);
}

// Banners

TEST_F(AppModelTest, ABannerIsShownForFourSeconds)
{
    m_model->showBanner(u"text"_s, BannerKind::warning);
    EXPECT_EQ(message(), u"text"_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_clock.advance(3999ms);
    EXPECT_TRUE(m_model->banner().has_value());
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelTest, ANewBannerHasItsOwnFourSeconds)
{
    m_model->showBanner(u"first"_s, BannerKind::information);
    m_clock.advance(3s);
    m_model->showBanner(u"second"_s, BannerKind::information);
    m_clock.advance(3999ms);
    EXPECT_EQ(message(), u"second"_s);
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelTest, ABannerThatIsSetDirectlyStays)
{
    m_model->showBanner(u"for a while"_s, BannerKind::information);
    m_clock.advance(1s);
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"for good"_s);
    m_model->showBanner(u"for a while"_s, BannerKind::information);
    EXPECT_EQ(message(), u"for a while"_s);
    m_clock.advance(4s);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelTest, ADismissedBannerIsGone)
{
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
    m_model->showBanner(u"text"_s, BannerKind::information);
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelTest, ANoticeStaysInFrontUntilItIsDismissedAndTheOthersWait)
{
    const QSignalSpy dismissed(m_model.get(), &AppModel::noticeDismissed);
    m_model->showBanner(u"before"_s, BannerKind::information);
    m_clock.advance(3s);
    m_model->showNotice(u"name"_s, {u"notice"_s, BannerKind::warning});
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"notice"_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_model->showBanner(u"behind it"_s, BannerKind::error);
    EXPECT_EQ(message(), u"notice"_s);
    m_clock.advance(1h);
    m_model->dismissBanner();
    EXPECT_EQ(message(), u"behind it"_s);
    ASSERT_EQ(dismissed.count(), 1);
    EXPECT_EQ(dismissed.front().front(), u"name"_s);
    m_clock.advance(3999ms);
    EXPECT_EQ(message(), u"behind it"_s) << "its time began when it could be seen";
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelTest, ABannerThatIsSetDirectlyWaitsBehindANoticeAndStays)
{
    m_model->showNotice(u"name"_s, {u"notice"_s, BannerKind::warning});
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    EXPECT_EQ(message(), u"notice"_s);
    m_model->dismissBanner();
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"for good"_s);
}

TEST_F(AppModelTest, NoticesAreShownOneAfterTheOtherAndReplacedByName)
{
    m_model->showNotice(u"one"_s, {u"first"_s, BannerKind::warning});
    m_model->showNotice(u"two"_s, {u"second"_s, BannerKind::warning});
    m_model->showNotice(u"one"_s, {u"first, with more"_s, BannerKind::warning});
    EXPECT_EQ(message(), u"first, with more"_s);
    m_model->dismissBanner();
    EXPECT_EQ(message(), u"second"_s);
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelTest, EverySetOfTheBannerIsTold)
{
    const QSignalSpy spy(m_model.get(), &AppModel::bannerChanged);
    m_model->showBanner(u"text"_s, BannerKind::information);
    m_model->showBanner(u"text"_s, BannerKind::information);
    EXPECT_EQ(spy.count(), 2);
    m_clock.advance(4s);
    EXPECT_EQ(spy.count(), 3);
}

} // namespace
} // namespace tessly::test
