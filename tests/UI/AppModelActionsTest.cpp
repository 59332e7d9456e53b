#include "AppModelFixture.h"

#include "PasteboardItems.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using BannerKind = AppModel::BannerKind;
using PasteStyle = AppModel::PasteStyle;

namespace {

/// Three texts in the history, "one" the newest and selected, and an editor in front.
class AppModelActionsTest : public AppModelFixture
{
protected:
    AppModelActionsTest()
    {
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        m_model->reload(AppModel::Debounce::no);
        // What the model does a while after its first reload is done: it rests.
        run();
        pass(1min);
        m_workspace.setFrontmost(m_editor);
        m_model->closePanel = [this] {
            ++m_panelCloses;
            m_writesWhenPanelClosed = m_pasteboard.writes().size();
        };
    }

    [[nodiscard]] const Clip& clip(std::size_t index) const { return m_model->clips().at(index); }
    /// The text on the pasteboard, if the program wrote it.
    [[nodiscard]] QByteArray written() const
    {
        return m_pasteboard.ownItems().empty()
                   ? QByteArray()
                   : m_pasteboard.ownItems().front().plainText.value_or(QByteArray());
    }
    void expectBanner(const QString& text, BannerKind kind) const
    {
        EXPECT_EQ(message(), text);
        EXPECT_EQ(bannerKind(), kind);
    }
    void expectStoreErrorAndNoReload() const
    {
        EXPECT_TRUE(message().startsWith(u"Clipboard database operation failed: "_s))
            << message().toStdString();
        EXPECT_EQ(bannerKind(), BannerKind::error);
        EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
    }

    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s);
    int m_panelCloses = 0;
    std::size_t m_writesWhenPanelClosed = 0;
};

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

// Pasting

TEST_F(AppModelActionsTest, APasteClosesThePanelWritesAndPressesTheKeys)
{
    m_model->paste(clip(1), PasteStyle::original, m_editor);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(m_writesWhenPanelClosed, 0U) << "the panel closes first";
    EXPECT_EQ(written(), "two");
    EXPECT_EQ(m_editor->activations(), 1);
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_editor));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelActionsTest, APasteAsPlainTextWritesPlainTextAlone)
{
    save(ClipPayload({.plainText = "rich", .html = "<b>rich"}));
    m_model->reload(AppModel::Debounce::no);
    run();
    m_model->paste(clip(0), PasteStyle::plainTextOnly, m_editor);
    EXPECT_EQ(m_pasteboard.ownItems(), plainTextItems(*clip(0).payload.held()));
    pass(1s);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(*clip(0).payload.held()));
}

TEST_F(AppModelActionsTest, ACompletedPasteMovesTheClipToTheTopIfTheSettingSaysSo)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_clock.advance(1s);
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(texts(), ElementsAre("three", "one", "two"));
}

TEST_F(AppModelActionsTest, ACompletedPasteReloadsAlsoWhenItMovesNothing)
{
    save("behind the model's back");
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(texts(), ElementsAre("behind the model's back", "one", "two", "three"));
}

TEST_F(AppModelActionsTest, TheUseOfAPasteThatCannotBeRecordedShowsTheError)
{
    m_settings.setMoveUsedItemsToTop(true);
    breakStore();
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
    expectStoreErrorAndNoReload();
}

TEST_F(AppModelActionsTest, APasteThatAccessIsRefusedForStopsWithThePanelOpen)
{
    m_keys.setAllowed(false);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(m_keys.accessRequests(), 1);
    EXPECT_EQ(m_panelCloses, 0);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    EXPECT_FALSE(m_model->automaticPasteAccessGranted());
    expectBanner(u"Allow Tessly in Accessibility, then click again."_s, BannerKind::warning);
    EXPECT_EQ(m_clock.pending(), 1U) << "the banner's time only: nothing is polled";
}

TEST_F(AppModelActionsTest, APasteThatAccessIsGrantedForGoesOn)
{
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    m_keys.setGrantsRequests(true);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
    EXPECT_TRUE(m_model->automaticPasteAccessGranted());
}

TEST_F(AppModelActionsTest, WithoutATargetAPasteOnlyCopiesAndAsksForNoAccess)
{
    m_keys.setAllowed(false);
    m_model->paste(clip(0), PasteStyle::original, nullptr);
    EXPECT_EQ(m_keys.accessRequests(), 0);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(written(), "one");
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

TEST_F(AppModelActionsTest, APasteIntoATargetThatIsGoneOnlyCopies)
{
    m_editor->terminate();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(written(), "one");
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

TEST_F(AppModelActionsTest, APasteIntoTheProgramsOwnWindowOnlyCopies)
{
    const auto own = std::make_shared<FakeRunningApplication>(u"com.brackmoor.tessly"_s);
    m_workspace.setFrontmost(own);
    m_model->paste(clip(0), PasteStyle::original, own);
    pass(1s);
    EXPECT_EQ(written(), "one");
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
    EXPECT_EQ(own->activations(), 0);
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

TEST_F(AppModelActionsTest, ATargetWithoutAnIdentifierIsAnotherApplication)
{
    const auto unnamed = std::make_shared<FakeRunningApplication>(std::nullopt);
    m_workspace.setFrontmost(unnamed);
    m_model->paste(clip(0), PasteStyle::original, unnamed);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(unnamed));
}

TEST_F(AppModelActionsTest, AccessThatIsTakenAwayBetweenWriteAndKeysEndsInACopy)
{
    m_model->closePanel = [this] { m_keys.setAllowed(false); };
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(written(), "one");
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Copied. Allow Automatic paste in Settings."_s, BannerKind::warning);
}

TEST_F(AppModelActionsTest, AWriteThatFailsIsReported)
{
    m_pasteboard.refuseWrites();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Could not restore that clipboard item."_s, BannerKind::error);
}

TEST_F(AppModelActionsTest, ATargetThatNeverComesToTheFrontEndsInACopyAndNoUse)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_workspace.setFrontmost(nullptr);
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(400ms);
    EXPECT_EQ(m_editor->activations(), 9) << "one by the model, eight attempts";
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
}

TEST_F(AppModelActionsTest, KeysThatCannotBeMadeAreReported)
{
    m_keys.breakKeys();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    pass(60ms);
    expectBanner(u"Could not restore that clipboard item."_s, BannerKind::error);
}

TEST_F(AppModelActionsTest, PastesInARowEachPasteTheirOwnClip)
{
    // Nothing is pasted but what was written for it.
    m_keys.setPasteboard(&m_pasteboard);
    m_keys.gate().hold();
    for (const std::size_t index : {1U, 2U, 0U}) {
        m_model->paste(clip(index), PasteStyle::original, m_editor);
    }
    pass(60ms);
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1)) << "the others wait for the keys of the first";
    m_keys.gate().open();
    for (int pastes = 1; pastes <= 3; ++pastes) {
        pass(60ms);
        EXPECT_THAT(m_keys.pastes(), SizeIs(pastes));
        EXPECT_THAT(m_pasteboard.writes(), SizeIs(pastes)) << "it has not been fetched yet";
        m_pasteboard.fetch();
        pass(60ms);
    }
    EXPECT_EQ(
        m_pasteboard.writes(),
        (std::vector{
            pasteboardItems(*clip(1).payload.held()), pasteboardItems(*clip(2).payload.held()),
            pasteboardItems(*clip(0).payload.held())}));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelActionsTest, APositionsPlaceInTheOrderIsThatOfItsKey)
{
    // The history has not answered yet when the second is asked for.
    m_model->pasteGlobalPosition(2);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    m_model->pasteGlobalPosition(3);
    run();
    pass(2s);
    EXPECT_EQ(
        m_pasteboard.writes(),
        (std::vector{
            pasteboardItems(*clip(1).payload.held()), pasteboardItems(*clip(0).payload.held()),
            pasteboardItems(*clip(2).payload.held())}));
}

TEST_F(AppModelActionsTest, APositionThatIsNotThereHoldsUpNobody)
{
    m_model->pasteGlobalPosition(9);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    run();
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelActionsTest, ACopyDoesNotReplaceWhatIsBeingPasted)
{
    m_keys.setPasteboard(&m_pasteboard);
    m_keys.gate().hold();
    m_model->paste(clip(1), PasteStyle::original, m_editor);
    m_model->copy(clip(0), PasteStyle::original);
    pass(1s);
    EXPECT_EQ(written(), "two");
    m_keys.gate().open();
    pass(1s);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
    EXPECT_EQ(written(), "one");
}

TEST_F(AppModelActionsTest, WhatAnotherProgramCopiesMeanwhileIsNotPastedAndNoUse)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_keys.setPasteboard(&m_pasteboard);
    m_keys.gate().hold();
    std::optional<ActionOutcome> outcome;
    m_model->paste(clip(2), PasteStyle::original, m_editor, [&](const ActionOutcome& told) {
        outcome = told;
    });
    pass(60ms);
    m_pasteboard.copyText("a password");
    m_keys.gate().open();
    pass(1s);
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
    ASSERT_TRUE(outcome.has_value());
    EXPECT_EQ(outcome->resultCase, ActionOutcome::Case::copiedOnly);
    EXPECT_EQ(outcome->message, u"Not pasted: another program has copied something since."_s);
}

TEST_F(AppModelActionsTest, WhatWasJustCopiedIsRecordedBeforeItIsReplaced)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.copyText("just copied");
    m_model->copy(clip(0), PasteStyle::original);
    run();
    EXPECT_EQ(written(), "one");
    EXPECT_THAT(texts(), ElementsAre("just copied", "one", "two", "three"));
}

TEST_F(AppModelActionsTest, TheFirstPositionIsWhatWasJustCopied)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.copyText("just copied");
    m_model->pasteGlobalPosition(1);
    run();
    pass(60ms);
    EXPECT_EQ(written(), "just copied");
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelActionsTest, AnOwnerThatHangsHoldsUpAPasteNotForLong)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("hangs");
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    pass(499ms);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    pass(1ms);
    EXPECT_EQ(written(), "one");
    m_pasteboard.gate().open();
}

TEST_F(AppModelActionsTest, APasteInAHistoryThatChangesWhenThePanelClosesPastesWhatWasMeant)
{
    m_model->closePanel = [this] {
        m_model->setQuery(u"nothing like it"_s);
        m_model->reload(AppModel::Debounce::no);
        run();
    };
    m_model->paste(*m_model->selectedClip(), PasteStyle::original, m_editor);
    EXPECT_THAT(m_model->clips(), IsEmpty());
    EXPECT_EQ(written(), "one");
}

TEST_F(AppModelActionsTest, AModelThatGoesBeforeTheKeysArePressedReportsNothing)
{
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    m_model.reset();
    pass(1s);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

// Pasting by position

TEST_F(AppModelActionsTest, PositionsCountPinnedClipsFirst)
{
    save("zero");
    for (const char* text : {"three", "one"}) {
        const std::vector<Clip> all = stored();
        const auto found = std::ranges::find_if(
            all, [text](const Clip& each) { return each.payload.held()->plainText() == text; });
        result(m_store->setPinned(true, found->id));
    }
    const auto pasted = [this](int position) {
        m_model->pasteGlobalPosition(position);
        run();
        // Nobody fetches what is pasted here.
        pass(1s);
        return written();
    };
    EXPECT_EQ(pasted(1), "one");
    EXPECT_EQ(pasted(2), "three");
    EXPECT_EQ(pasted(3), "zero");
    EXPECT_EQ(pasted(4), "two");
    EXPECT_FALSE(m_model->banner().has_value());
    pasted(5);
    expectBanner(u"There is no clipboard item at position 5."_s, BannerKind::warning);
}

TEST_F(AppModelActionsTest, PositionsIgnoreTheSearchAndTheKind)
{
    m_model->setQuery(u"three"_s);
    m_model->setSelectedKind(ClipKind::image);
    m_model->reload(AppModel::Debounce::no);
    run();
    m_model->pasteGlobalPosition(1);
    run();
    EXPECT_EQ(written(), "one");
}

TEST_F(AppModelActionsTest, PositionsOutsideTheFirstTenAreNone)
{
    for (int i = 0; i < 10; ++i) {
        save(QByteArray::number(i));
    }
    for (const int position : {0, -1, 11}) {
        m_model->pasteGlobalPosition(position);
        run();
        expectBanner(
            u"There is no clipboard item at position %1."_s.arg(position), BannerKind::warning);
    }
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    m_model->pasteGlobalPosition(10);
    run();
    EXPECT_EQ(written(), "0");
}

TEST_F(AppModelActionsTest, WithDirectPasteOffAPositionDoesNothing)
{
    m_settings.setDirectPasteShortcuts(false);
    m_model->pasteGlobalPosition(1);
    m_model->pasteGlobalPosition(99);
    EXPECT_EQ(m_executor->pending(), 0U);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelActionsTest, APositionIsPastedIntoTheApplicationInFrontWhenTheKeyWasPressed)
{
    m_model->pasteGlobalPosition(1);
    const auto other = std::make_shared<FakeRunningApplication>(u"org.example.Other"_s);
    m_workspace.setFrontmost(other);
    run();
    EXPECT_GT(m_editor->activations(), 0);
    EXPECT_EQ(other->activations(), 0);
}

TEST_F(AppModelActionsTest, APositionWithNothingInFrontOnlyCopies)
{
    m_workspace.setFrontmost(nullptr);
    m_model->pasteGlobalPosition(1);
    run();
    EXPECT_EQ(written(), "one");
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
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
        m_workspace.openedURLs(),
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
    m_workspace.setOpensURLs(false);
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
