#include "AppModelActionsTest.h"

namespace tessly::test {
namespace {

using AppModelPastingTest = AppModelActionsTest;

// Pasting

TEST_F(AppModelPastingTest, APasteClosesThePanelWritesAndPressesTheKeys)
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

TEST_F(AppModelPastingTest, APasteAsPlainTextWritesPlainTextAlone)
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

TEST_F(AppModelPastingTest, ACompletedPasteMovesTheClipToTheTopIfTheSettingSaysSo)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_clock.advance(1s);
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(texts(), ElementsAre("three", "one", "two"));
}

TEST_F(AppModelPastingTest, ACompletedPasteReloadsAlsoWhenItMovesNothing)
{
    save("behind the model's back");
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(texts(), ElementsAre("behind the model's back", "one", "two", "three"));
}

TEST_F(AppModelPastingTest, TheUseOfAPasteThatCannotBeRecordedShowsTheError)
{
    m_settings.setMoveUsedItemsToTop(true);
    breakStore();
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
    expectStoreErrorAndNoReload();
}

TEST_F(AppModelPastingTest, APasteThatAccessIsRefusedForStopsWithThePanelOpen)
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

TEST_F(AppModelPastingTest, APasteThatAccessIsGrantedForGoesOn)
{
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    m_keys.setGrantsRequests(true);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
    EXPECT_TRUE(m_model->automaticPasteAccessGranted());
}

TEST_F(AppModelPastingTest, WithoutATargetAPasteOnlyCopiesAndAsksForNoAccess)
{
    m_keys.setAllowed(false);
    m_model->paste(clip(0), PasteStyle::original, nullptr);
    EXPECT_EQ(m_keys.accessRequests(), 0);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(written(), "one");
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

TEST_F(AppModelPastingTest, APasteIntoATargetThatIsGoneOnlyCopies)
{
    m_editor->terminate();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(written(), "one");
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

TEST_F(AppModelPastingTest, APasteIntoTheProgramsOwnWindowOnlyCopies)
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

TEST_F(AppModelPastingTest, ATargetWithoutAnIdentifierIsAnotherApplication)
{
    const auto unnamed = std::make_shared<FakeRunningApplication>(std::nullopt);
    m_workspace.setFrontmost(unnamed);
    m_model->paste(clip(0), PasteStyle::original, unnamed);
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(unnamed));
}

TEST_F(AppModelPastingTest, AccessThatIsTakenAwayBetweenWriteAndKeysEndsInACopy)
{
    m_model->closePanel = [this] { m_keys.setAllowed(false); };
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(written(), "one");
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Copied. Allow Automatic paste in Settings."_s, BannerKind::warning);
}

TEST_F(AppModelPastingTest, AWriteThatFailsIsReported)
{
    m_pasteboard.refuseWrites();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_EQ(m_editor->activations(), 0);
    expectBanner(u"Could not restore that clipboard item."_s, BannerKind::error);
}

TEST_F(AppModelPastingTest, ATargetThatNeverComesToTheFrontEndsInACopyAndNoUse)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_workspace.setFrontmost(nullptr);
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    pass(400ms);
    EXPECT_EQ(m_editor->activations(), 9) << "one by the model, eight attempts";
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
}

TEST_F(AppModelPastingTest, KeysThatCannotBeMadeAreReported)
{
    m_keys.breakKeys();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    pass(60ms);
    expectBanner(u"Could not restore that clipboard item."_s, BannerKind::error);
}

TEST_F(AppModelPastingTest, PastesInARowEachPasteTheirOwnClip)
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

TEST_F(AppModelPastingTest, APositionsPlaceInTheOrderIsThatOfItsKey)
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

TEST_F(AppModelPastingTest, APositionThatIsNotThereHoldsUpNobody)
{
    m_model->pasteGlobalPosition(9);
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    run();
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelPastingTest, ACopyDoesNotReplaceWhatIsBeingPasted)
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

TEST_F(AppModelPastingTest, WhatAnotherProgramCopiesMeanwhileIsNotPastedAndNoUse)
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

TEST_F(AppModelPastingTest, WhatWasJustCopiedIsRecordedBeforeItIsReplaced)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.copyText("just copied");
    m_model->copy(clip(0), PasteStyle::original);
    run();
    EXPECT_EQ(written(), "one");
    EXPECT_THAT(texts(), ElementsAre("just copied", "one", "two", "three"));
}

TEST_F(AppModelPastingTest, TheFirstPositionIsWhatWasJustCopied)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.copyText("just copied");
    m_model->pasteGlobalPosition(1);
    run();
    pass(60ms);
    EXPECT_EQ(written(), "just copied");
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelPastingTest, AnOwnerThatHangsHoldsUpAPasteNotForLong)
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

TEST_F(AppModelPastingTest, APasteInAHistoryThatChangesWhenThePanelClosesPastesWhatWasMeant)
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

TEST_F(AppModelPastingTest, AModelThatGoesBeforeTheKeysArePressedReportsNothing)
{
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    m_model.reset();
    pass(1s);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

// Pasting by position

TEST_F(AppModelPastingTest, PositionsCountPinnedClipsFirst)
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

TEST_F(AppModelPastingTest, PositionsIgnoreTheSearchAndTheKind)
{
    m_model->setQuery(u"three"_s);
    m_model->setSelectedKind(ClipKind::image);
    m_model->reload(AppModel::Debounce::no);
    run();
    m_model->pasteGlobalPosition(1);
    run();
    EXPECT_EQ(written(), "one");
}

TEST_F(AppModelPastingTest, PositionsOutsideTheFirstTenAreNone)
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

TEST_F(AppModelPastingTest, WithDirectPasteOffAPositionDoesNothing)
{
    m_settings.setDirectPasteShortcuts(false);
    m_model->pasteGlobalPosition(1);
    m_model->pasteGlobalPosition(99);
    EXPECT_EQ(m_executor->pending(), 0U);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelPastingTest, APositionIsPastedIntoTheApplicationInFrontWhenTheKeyWasPressed)
{
    m_model->pasteGlobalPosition(1);
    const auto other = std::make_shared<FakeRunningApplication>(u"org.example.Other"_s);
    m_workspace.setFrontmost(other);
    run();
    EXPECT_GT(m_editor->activations(), 0);
    EXPECT_EQ(other->activations(), 0);
}

TEST_F(AppModelPastingTest, APositionWithNothingInFrontOnlyCopies)
{
    m_workspace.setFrontmost(nullptr);
    m_model->pasteGlobalPosition(1);
    run();
    EXPECT_EQ(written(), "one");
    expectBanner(u"Copied to the clipboard."_s, BannerKind::information);
}

} // namespace
} // namespace tessly::test
