#include "AppModelActionsTest.h"

namespace tessly::test {
namespace {

// Store actions

TEST_F(AppModelActionsTest, PinningTakesTheSelectedClipUnlessOneIsGiven)
{
    m_model->togglePin();
    run();
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
    EXPECT_TRUE(clip(0).isPinned);
    const Clip three = clip(2);
    m_model->togglePin(&three);
    run();
    EXPECT_THAT(texts(), ElementsAre("three", "one", "two"));
    m_model->togglePin();
    run();
    EXPECT_FALSE(clip(1).isPinned) << "the selected clip was pinned";
    EXPECT_EQ(m_model->statistics().pinnedItems, 1);
}

TEST_F(AppModelActionsTest, DeletingSelectsTheFirstRemainingRow)
{
    m_model->selectNext();
    m_model->deleteSelected();
    run();
    EXPECT_THAT(texts(), ElementsAre("one", "three"));
    EXPECT_EQ(m_model->selectedID(), clip(0).id);
    EXPECT_EQ(m_model->statistics().totalItems, 2);
}

TEST_F(AppModelActionsTest, WithNothingSelectedInAnEmptyListActionsDoNothing)
{
    m_model->setQuery(u"nothing like it"_s);
    m_model->reload(AppModel::Debounce::no);
    run();
    const QSignalSpy banners(m_model.get(), &AppModel::bannerChanged);
    m_model->togglePin();
    m_model->deleteSelected();
    m_model->copySelected(PasteStyle::original);
    EXPECT_EQ(m_executor->pending(), 0U);
    EXPECT_EQ(banners.count(), 0);
    EXPECT_EQ(m_panelCloses, 0);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(AppModelActionsTest, ClearingKeepsPinnedClipsUnlessTheyAreIncluded)
{
    m_model->togglePin();
    run();
    m_model->clearHistory(false);
    run();
    EXPECT_THAT(texts(), ElementsAre("one"));
    expectBanner(u"Clipboard history cleared."_s, BannerKind::information);
    m_model->dismissBanner();
    m_model->clearHistory(true);
    run();
    EXPECT_THAT(m_model->clips(), IsEmpty());
    expectBanner(u"Clipboard history cleared."_s, BannerKind::information);
}

TEST_F(AppModelActionsTest, TrimmingGoesByTheCurrentSetting)
{
    for (int i = 0; i < 12; ++i) {
        save(QByteArray::number(i));
    }
    m_settings.setMaxHistory(11);
    m_model->trimHistoryToCurrentLimit();
    run();
    EXPECT_EQ(m_model->statistics().totalItems, 11);
    EXPECT_THAT(m_model->clips(), SizeIs(11));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelActionsTest, AStoreActionThatFailsShowsItsErrorAndReloadsNothing)
{
    breakStore();
    const auto act = [this](const auto& action) {
        m_model->dismissBanner();
        action();
        EXPECT_EQ(m_executor->pending(), 1U);
        run();
        expectStoreErrorAndNoReload();
    };
    act([this] { m_model->togglePin(); });
    act([this] { m_model->deleteSelected(); });
    act([this] { m_model->trimHistoryToCurrentLimit(); });
    act([this] { m_model->pasteGlobalPosition(1); });
}

TEST_F(AppModelActionsTest, AClearThatFailsHalfwayShowsWhatIsLeft)
{
    executeSQL("DELETE FROM clips WHERE plain_text = 'one'");
    executeSQL("CREATE TRIGGER kept BEFORE DELETE ON clips BEGIN SELECT RAISE(ABORT, 'kept'); END");
    m_model->clearHistory(true);
    run();
    EXPECT_EQ(m_model->banner()->kind, BannerKind::error);
    EXPECT_THAT(texts(), testing::Not(testing::Contains("one")));
}

TEST_F(AppModelActionsTest, StoreActionsRunToTheirEndWithoutTheModel)
{
    m_model->deleteSelected();
    m_model->clearHistory(false);
    m_model->pasteGlobalPosition(1);
    m_model.reset();
    run();
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

// Copying

TEST_F(AppModelActionsTest, CopyingWritesThenClosesThePanel)
{
    m_model->selectNext();
    m_model->copySelected(PasteStyle::original);
    EXPECT_EQ(written(), "two");
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(m_writesWhenPanelClosed, 1U) << "the write comes first";
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
    EXPECT_EQ(m_executor->pending(), 0U) << "a copy is no use";
}

TEST_F(AppModelActionsTest, ACopyThatFailsShowsNothingAndLeavesThePanelOpen)
{
    m_pasteboard.refuseWrites();
    m_model->copySelected(PasteStyle::original);
    EXPECT_EQ(m_panelCloses, 0);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelActionsTest, ACopyAsPlainTextOfWhatHasNoneIsAFailure)
{
    save(ClipPayload({.html = "<b>"}));
    m_model->reload(AppModel::Debounce::no);
    run();
    m_model->setSelectedID(clip(0).id);
    m_model->copySelected(PasteStyle::plainTextOnly);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    EXPECT_EQ(m_panelCloses, 0);
    m_model->copySelected(PasteStyle::original);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(*clip(0).payload.held()));
}

TEST_F(AppModelActionsTest, ActionsDoWithoutAPanel)
{
    m_model->closePanel = nullptr;
    m_model->copySelected(PasteStyle::original);
    EXPECT_EQ(written(), "one");
    m_model->paste(clip(1), PasteStyle::original, m_editor);
    EXPECT_EQ(written(), "two");
}

// Settings

TEST_F(AppModelActionsTest, SwitchingDirectPasteRegistersTheKeysAnewAndTellsTheUser)
{
    int configurations = 0;
    m_model->hotKeyConfigurationDidChange = [&configurations] { ++configurations; };
    m_settings.setDirectPasteShortcuts(false);
    m_model->directPasteShortcutsDidChange();
    EXPECT_EQ(configurations, 1);
    expectBanner(u"Direct-paste shortcuts released."_s, BannerKind::information);
    m_settings.setDirectPasteShortcuts(true);
    m_model->hotKeyConfigurationDidChange = nullptr;
    m_model->directPasteShortcutsDidChange();
    expectBanner(u"Direct-paste shortcuts enabled."_s, BannerKind::information);
}

TEST_F(AppModelActionsTest, OpeningThePasteSettingsRequestsAccessAndThenWatchesForIt)
{
    m_keys.setAllowed(false);
    m_model->openAutomaticPasteSettings();
    EXPECT_EQ(m_keys.accessRequests(), 1);
    EXPECT_THAT(
        m_openedURLs,
        ElementsAre(QUrl(
            u"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"_s)));
    EXPECT_FALSE(m_model->automaticPasteAccessGranted());
    EXPECT_FALSE(m_model->banner().has_value());
    m_keys.setAllowed(true);
    m_clock.advance(500ms);
    EXPECT_TRUE(m_model->automaticPasteAccessGranted());
}

TEST_F(AppModelActionsTest, PasteSettingsThatCannotBeOpenedAreReported)
{
    m_keys.setAllowed(false);
    m_opensURLs = false;
    m_model->openAutomaticPasteSettings();
    expectBanner(u"Open Privacy & Security → Accessibility."_s, BannerKind::error);
    EXPECT_EQ(m_clock.pending(), 1U) << "the banner's time only";
}

// Access

TEST_F(AppModelActionsTest, RefreshingLooksAtOnceAndTellsOfAChangeOnly)
{
    const QSignalSpy spy(m_model.get(), &AppModel::automaticPasteAccessGrantedChanged);
    m_model->refreshAutomaticPasteAccess(false);
    EXPECT_EQ(spy.count(), 0);
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_FALSE(m_model->automaticPasteAccessGranted());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelActionsTest, GrantedAccessIsNotPolled)
{
    m_model->refreshAutomaticPasteAccess(true);
    EXPECT_EQ(m_clock.pending(), 0U);
}

/// Counts how often the model asks whether it may post keys.
class AppModelAccessPollTest : public AppModelActionsTest
{
protected:
    int m_checks = 0;
    bool m_isAllowed = false;
    PasteService m_countingService{
        m_pasteboard, m_keys, m_clock, {.checkAutomaticPasteAccess = [this] {
            ++m_checks;
            return m_isAllowed;
        }}};
    AppModel m_pollingModel{
        {*m_store, m_settings, m_countingService, m_launchAtLogin, m_pasteboard, m_converter,
         m_workspace, m_clock}};
};

TEST_F(AppModelAccessPollTest, DeniedAccessIsLookedAtTenMoreTimesHalfASecondApart)
{
    m_checks = 0;
    m_pollingModel.refreshAutomaticPasteAccess(true);
    EXPECT_EQ(m_checks, 1);
    m_clock.advance(499ms);
    EXPECT_EQ(m_checks, 1);
    m_clock.advance(1ms);
    EXPECT_EQ(m_checks, 2);
    m_clock.advance(4500ms);
    EXPECT_EQ(m_checks, 11);
    m_clock.advance(1min);
    EXPECT_EQ(m_checks, 11);
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelAccessPollTest, PollingEndsWhenAccessIsGranted)
{
    m_pollingModel.refreshAutomaticPasteAccess(true);
    m_clock.advance(1s);
    m_isAllowed = true;
    m_clock.advance(500ms);
    EXPECT_TRUE(m_pollingModel.automaticPasteAccessGranted());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelAccessPollTest, CallingAgainStartsTheCountAnewWithOnePoller)
{
    m_pollingModel.refreshAutomaticPasteAccess(true);
    m_clock.advance(4s);
    m_pollingModel.refreshAutomaticPasteAccess(true);
    EXPECT_EQ(m_clock.pending(), 1U);
    m_checks = 0;
    m_clock.advance(1min);
    EXPECT_EQ(m_checks, 10);
}

TEST_F(AppModelAccessPollTest, ALookWithoutRetryEndsThePolling)
{
    m_pollingModel.refreshAutomaticPasteAccess(true);
    m_pollingModel.refreshAutomaticPasteAccess(false);
    EXPECT_EQ(m_clock.pending(), 0U);
}

} // namespace
} // namespace tessly::test
