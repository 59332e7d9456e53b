#include "QuickPastePanelControllerTest.h"

namespace tessly::test {
namespace {

// Opening

TEST_F(QuickPastePanelControllerTest, MakesItsViewAtTheFirstOpeningAndKeepsIt)
{
    EXPECT_EQ(m_viewsMade, 0);
    show();
    m_controller->close();
    show();
    EXPECT_EQ(m_viewsMade, 1);
}

TEST_F(QuickPastePanelControllerTest, ShowsItsViewAtTheAnchorAndGivesItTheKeyboard)
{
    show();
    EXPECT_THAT(m_view->calls(), ElementsAre(Call::show, Call::activate));
    EXPECT_EQ(m_view->anchor(), QRect(100, 0, 24, 24));
    expectOpen();
    EXPECT_EQ(m_clicks.watches(), 1U);
}

TEST_F(QuickPastePanelControllerTest, ClicksAreWatchedBeforeThePlaceIsAskedFor)
{
    Gate& gate = holdAnchor();
    show();
    EXPECT_EQ(m_clicks.watches(), 1U);
    // It is not open yet: none of its business.
    m_clicks.press();
    run();
    gate.open();
    run();
    expectOpen();
    EXPECT_EQ(m_clicks.watches(), 1U);
}

TEST_F(QuickPastePanelControllerTest, ClicksAreNotWatchedWhereThereIsNoPlaceOrItIsClosedMeanwhile)
{
    m_anchor.reset();
    show();
    EXPECT_EQ(m_clicks.watches(), 0U);

    Gate& gate = holdAnchor();
    show();
    m_controller->close();
    EXPECT_EQ(m_clicks.watches(), 0U);
    gate.open();
    run();
    EXPECT_EQ(m_clicks.watches(), 0U);
}

TEST_F(QuickPastePanelControllerTest, OpensWithAnEmptyQueryAndAFreshList)
{
    save("older");
    save("newer");
    m_model->setQuery(u"nothing has this"_s);
    show();
    EXPECT_EQ(m_model->query(), QString());
    EXPECT_THAT(texts(), ElementsAre("newer", "older"));
}

TEST_F(QuickPastePanelControllerTest, KeepsTheFilter)
{
    save("one");
    show();
    m_model->setSelectedKind(ClipKind::text);
    m_controller->close();
    show();
    EXPECT_EQ(m_model->selectedKind(), ClipKind::text);
}

TEST_F(QuickPastePanelControllerTest, TheFirstOpeningSelectsWhatWasCopiedLast)
{
    // As a program that records lists its history anew after each copy.
    for (int i = 0; i < 3; ++i) {
        save("entry " + QByteArray::number(i));
        m_model->reload(AppModel::Debounce::no);
        run();
    }
    show();
    EXPECT_EQ(m_model->selectedID(), m_model->clips().front().id);
}

TEST_F(QuickPastePanelControllerTest, EveryOpeningSelectsTheFirstAtOnceAndOnceItIsListed)
{
    const Clip older = save("older");
    const Clip newer = save("newer");
    show();
    m_model->setSelectedID(older.id);
    m_controller->close();
    m_controller->show();
    EXPECT_EQ(m_model->selectedID(), newer.id) << "of what is listed already";
    run();
    EXPECT_EQ(m_model->selectedID(), newer.id);
    m_controller->close();
    const Clip newest = save("newest");
    show();
    EXPECT_EQ(m_model->selectedID(), newest.id);
}

TEST_F(QuickPastePanelControllerTest, WithinAnOpeningTheSelectionStaysWithItsClip)
{
    const Clip older = save("older");
    show();
    save("newer");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(m_model->selectedID(), older.id);
}

TEST_F(QuickPastePanelControllerTest, WhatIsStillBeingReadAtTheOpeningIsTheFirstAsWell)
{
    save("older");
    m_model->clipboardMonitor().start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("copied just before");
    show();
    EXPECT_THAT(texts(), ElementsAre("older"));
    m_pasteboard.gate().open();
    pass(100ms);
    ASSERT_THAT(texts(), ElementsAre("copied just before", "older"));
    EXPECT_EQ(m_model->selectedID(), m_model->clips().front().id);

    m_pasteboard.copyText("copied afterwards");
    pass(100ms);
    ASSERT_THAT(texts(), SizeIs(3));
    EXPECT_EQ(m_model->selectedID(), m_model->clips()[1].id) << "what the user sees selected";
}

TEST_F(QuickPastePanelControllerTest, WhatWaitsForASearchThatFailedHasItDoneOnceMore)
{
    save("needle");
    show();
    executeSQL("ALTER TABLE clips RENAME TO hidden");
    m_model->setQuery(u"need"_s);
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_FALSE(message().isEmpty());
    executeSQL("ALTER TABLE hidden RENAME TO clips");
    run();
    bool isListed = false;
    m_model->whenListed([&isListed] { isListed = true; });
    EXPECT_FALSE(isListed);
    run();
    EXPECT_TRUE(isListed);
}

TEST_F(QuickPastePanelControllerTest, ASelectionOfTheUsersIsNotTakenBackByTheOpening)
{
    const Clip older = save("older");
    save("newer");
    m_model->clipboardMonitor().start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("copied just before");
    show();
    m_view->press(Qt::Key_Down);
    m_pasteboard.gate().open();
    pass(100ms);
    ASSERT_THAT(texts(), SizeIs(3));
    EXPECT_EQ(m_model->selectedID(), older.id);
}

TEST_F(QuickPastePanelControllerTest, AfterASearchTheWholeListIsThereBeforeTheNextOpening)
{
    save("older");
    save("newer");
    show();
    m_model->setQuery(u"older"_s);
    m_model->reload(AppModel::Debounce::no);
    run();
    m_controller->close();
    run();
    EXPECT_THAT(texts(), ElementsAre("newer", "older"));
    m_controller->show();
    EXPECT_TRUE(m_model->query().isEmpty());
    EXPECT_EQ(m_model->selectedID(), m_model->clips().front().id);
}

TEST_F(QuickPastePanelControllerTest, TakesTheApplicationInFrontAsTarget)
{
    const auto editor = bringToFront(u"org.example.editor"_s);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), editor);
}

TEST_F(QuickPastePanelControllerTest, TakesAnApplicationWithoutIdentifierAsTarget)
{
    const auto unnamed = bringToFront(std::nullopt);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), unnamed);
}

TEST_F(QuickPastePanelControllerTest, HasNoTargetWhenTesslyItselfIsInFront)
{
    bringToFront(u"org.example.editor"_s);
    show();
    m_controller->close();
    bringToFront(u"com.brackmoor.tessly"_s);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), nullptr);
}

TEST_F(QuickPastePanelControllerTest, ComparesItsOwnIdentifierExactly)
{
    const auto other = bringToFront(u"com.brackmoor.Tessly"_s);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), other);
}

TEST_F(QuickPastePanelControllerTest, HasNoTargetWhenNothingIsInFront)
{
    bringToFront(u"org.example.editor"_s);
    show();
    m_controller->close();
    m_workspace.setFrontmost(nullptr);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), nullptr);
}

TEST_F(QuickPastePanelControllerTest, OpeningWhileOpenChangesNothing)
{
    const auto editor = bringToFront(u"org.example.editor"_s);
    show();
    bringToFront(u"org.example.other"_s);
    m_model->setQuery(u"typed"_s);
    show();
    EXPECT_EQ(m_model->currentTargetApplication(), editor);
    EXPECT_EQ(m_model->query(), u"typed"_s);
    EXPECT_THAT(m_view->calls(), ElementsAre(Call::show, Call::activate));
    EXPECT_EQ(m_clicks.watches(), 1U);
}

TEST_F(QuickPastePanelControllerTest, OpensOnceItsPlaceIsKnown)
{
    Gate& gate = holdAnchor();
    const auto editor = bringToFront(u"org.example.editor"_s);
    show();
    show();
    EXPECT_FALSE(m_controller->isShown());
    EXPECT_EQ(gate.waiting(), 1U) << "asked for once";
    gate.open();
    run();
    expectOpen();
    EXPECT_EQ(m_view->anchor(), QRect(100, 0, 24, 24));
    EXPECT_EQ(m_model->currentTargetApplication(), editor);
}

TEST_F(QuickPastePanelControllerTest, IsNotOpenedAnyMoreWhenClosedBeforeItsPlaceIsKnown)
{
    Gate& gate = holdAnchor();
    show();
    m_controller->close();
    show();
    m_controller->toggle();
    gate.releaseWaiting();
    run();
    EXPECT_FALSE(m_controller->isShown());
    EXPECT_EQ(m_viewsMade, 0);

    m_controller->toggle();
    run();
    gate.open();
    run();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, MayGoBeforeItsPlaceIsKnown)
{
    Gate& gate = holdAnchor();
    show();
    m_controller.reset();
    gate.open();
    run();
    EXPECT_EQ(m_viewsMade, 0);
}

TEST_F(QuickPastePanelControllerTest, WithoutAnAnchorNothingHappens)
{
    m_anchor.reset();
    bringToFront(u"org.example.editor"_s);
    m_model->setQuery(u"typed"_s);
    show();
    EXPECT_EQ(m_viewsMade, 0);
    EXPECT_EQ(m_model->query(), u"typed"_s);
    EXPECT_EQ(m_model->currentTargetApplication(), nullptr);
    EXPECT_FALSE(m_model->isPanelPresented());
}

TEST_F(QuickPastePanelControllerTest, AViewThatDoesNotComeUpLeavesThePanelClosed)
{
    show();
    m_controller->close();
    m_view->refuseToShow();
    const QSignalSpy presented(m_model.get(), &AppModel::isPanelPresentedChanged);
    show();
    EXPECT_EQ(presented.size(), 2) << "up, and down again";
    expectClosed();
    EXPECT_EQ(m_view->calls().back(), Call::show) << "it is not given the keyboard";
}

TEST_F(QuickPastePanelControllerTest, AViewThatCannotBeMadeIsAskedForAgain)
{
    m_viewIsMissing = true;
    show();
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_EQ(m_clicks.watches(), 0U);
    m_viewIsMissing = false;
    show();
    EXPECT_EQ(m_viewsMade, 2);
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, TheModelOpensIt)
{
    m_model->showPanel();
    expectOpen();
}

} // namespace
} // namespace tessly::test
