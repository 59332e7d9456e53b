#include "AppModelTest.h"

namespace tessly::test {
namespace {

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

} // namespace
} // namespace tessly::test
