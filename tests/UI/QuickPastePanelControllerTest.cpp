#include "QuickPastePanelController.h"

#include "AppModelFixture.h"
#include "FakeFileInspector.h"
#include "FakeOutsideClickMonitor.h"
#include "FakePanelView.h"
#include "Gate.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Call = FakePanelView::Call;
using KeepsOpen = QuickPastePanelController::KeepsOpen;

namespace {

class QuickPastePanelControllerTest : public AppModelFixture
{
protected:
    QuickPastePanelControllerTest() { makeController(KeepsOpen::no); }

    void makeController(KeepsOpen keepsOpen)
    {
        m_controller = std::make_unique<QuickPastePanelController>(
            QuickPastePanelController::Dependencies{
                *m_model, m_preview, m_workspace, m_clicks, m_clock},
            [this] { return anchor(); },
            [this]() -> std::unique_ptr<PanelView> {
                ++m_viewsMade;
                if (m_viewIsMissing) {
                    return nullptr;
                }
                auto view = std::make_unique<FakePanelView>();
                m_view = view.get();
                return view;
            },
            keepsOpen);
    }

    QCoro::Task<std::optional<QRect>> anchor()
    {
        if (m_gate) {
            co_await m_gate->pass();
        }
        co_return m_anchor;
    }

    /// From now on the place has to be waited for.
    Gate& holdAnchor()
    {
        m_gate.emplace();
        m_gate->hold();
        return *m_gate;
    }

    void show()
    {
        m_controller->show();
        run();
    }

    std::shared_ptr<FakeRunningApplication> bringToFront(std::optional<QString> bundleIdentifier)
    {
        auto application = std::make_shared<FakeRunningApplication>(std::move(bundleIdentifier));
        m_workspace.setFrontmost(application);
        return application;
    }

    /// What the paste that has just been started put on the pasteboard.
    [[nodiscard]] PasteboardItem written() const
    {
        EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
        return m_pasteboard.writes().empty() ? PasteboardItem()
                                             : m_pasteboard.writes().front().front();
    }

    void expectClosed()
    {
        EXPECT_FALSE(m_controller->isShown());
        EXPECT_FALSE(m_model->isPanelPresented());
        EXPECT_EQ(m_clicks.watches(), 0U);
        EXPECT_FALSE(m_view->press(Qt::Key_Down)) << "keys are no longer handled";
    }

    void expectOpen()
    {
        EXPECT_TRUE(m_controller->isShown());
        EXPECT_TRUE(m_model->isPanelPresented());
    }

    FakeFileInspector m_files;
    PreviewModel m_preview{{*m_model, *m_store, m_converter, m_files, m_clock}};
    FakeOutsideClickMonitor m_clicks;
    std::optional<QRect> m_anchor = QRect(100, 0, 24, 24);
    std::optional<Gate> m_gate;
    bool m_viewIsMissing = false;
    int m_viewsMade = 0;
    /// The controller's.
    FakePanelView* m_view = nullptr;
    std::unique_ptr<QuickPastePanelController> m_controller;
};

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

// Closing

TEST_F(QuickPastePanelControllerTest, TheModelClosesIt)
{
    show();
    m_model->closePanel();
    expectClosed();
    EXPECT_EQ(m_view->calls().back(), Call::close);
}

TEST_F(QuickPastePanelControllerTest, ClosingBeforeTheFirstOpeningPutsTheStateRight)
{
    m_model->setPanelPresented(true);
    m_model->closePanel();
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_EQ(m_viewsMade, 0);
}

TEST_F(QuickPastePanelControllerTest, ClosingWhileClosedPutsTheStateRight)
{
    show();
    m_controller->close();
    m_model->setPanelPresented(true);
    m_controller->close();
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, EscapeCloses)
{
    show();
    EXPECT_TRUE(m_view->press(Qt::Key_Escape));
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, EscapeClosesThePreviewFirst)
{
    save("one");
    show();
    pass(PreviewModel::rest);
    ASSERT_TRUE(m_preview.isShown());
    EXPECT_TRUE(m_view->press(Qt::Key_Escape));
    EXPECT_FALSE(m_preview.isShown());
    expectOpen();
    pass(PreviewModel::rest);
    EXPECT_FALSE(m_preview.isShown()) << "not again by itself";
    EXPECT_TRUE(m_view->press(Qt::Key_Escape));
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, CtrlSpaceSwitchesThePreview)
{
    save("one");
    show();
    EXPECT_TRUE(m_view->press(Qt::Key_Space, Qt::ControlModifier));
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_TRUE(m_view->press(Qt::Key_Space, Qt::ControlModifier));
    EXPECT_FALSE(m_preview.isShown());
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, WhateverClosesThePanelClosesThePreview)
{
    save("one");
    show();
    m_preview.show();
    m_clicks.press();
    settle();
    EXPECT_FALSE(m_preview.isShown());
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, APressInAnotherApplicationClosesFromTheEventLoop)
{
    show();
    m_clicks.press();
    expectOpen();
    settle();
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, APressThatIsToldTooLateDoesNotCloseTheNextOpening)
{
    makeController(KeepsOpen::no);
    show();
    m_clicks.press();
    m_controller->close();
    settle();
    show();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, TogglingOpensAndCloses)
{
    m_controller->toggle();
    expectOpen();
    m_controller->toggle();
    expectClosed();
    m_controller->toggle();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, AClickOnTheStatusItemOpensAndCloses)
{
    m_controller->toggleByClick();
    expectOpen();
    m_controller->toggleByClick();
    expectClosed();
    m_controller->toggleByClick();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, AClickWhosePressClosedThePanelDoesNotOpenItAgain)
{
    show();
    m_clicks.press();
    m_view->loseKeyboard();
    settle();
    m_controller->toggleByClick();
    expectClosed();
    m_controller->toggleByClick();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, AClickLongAfterThePanelWasDismissedOpensIt)
{
    show();
    m_view->loseKeyboard();
    pass(QuickPastePanelController::clickLength);
    m_controller->toggleByClick();
    expectOpen();
}

TEST_F(QuickPastePanelControllerTest, LosingTheKeyboardCloses)
{
    show();
    m_view->loseKeyboard();
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, AWindowThatGoesByItselfEndsThePresentation)
{
    show();
    m_view->vanish();
    expectClosed();
}

TEST_F(QuickPastePanelControllerTest, ClosingKeepsTheTarget)
{
    const auto editor = bringToFront(u"org.example.editor"_s);
    show();
    m_controller->close();
    EXPECT_EQ(m_model->currentTargetApplication(), editor);
}

TEST_F(QuickPastePanelControllerTest, ClosingTellsOfTheChangeOnce)
{
    show();
    const QSignalSpy presented(m_model.get(), &AppModel::isPanelPresentedChanged);
    m_controller->close();
    m_controller->close();
    EXPECT_EQ(presented.size(), 1);
}

TEST_F(QuickPastePanelControllerTest, ItsClosuresDoNothingOnceItIsGone)
{
    show();
    m_controller.reset();
    m_model->setPanelPresented(false);
    m_model->showPanel();
    m_model->closePanel();
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_EQ(m_viewsMade, 1);
    EXPECT_EQ(m_clicks.watches(), 0U);
}

// Keys

class QuickPastePanelControllerKeysTest : public QuickPastePanelControllerTest
{
protected:
    QuickPastePanelControllerKeysTest()
    {
        m_editor = bringToFront(u"org.example.editor"_s);
        m_oldest = save(ClipPayload({.plainText = "oldest", .rtf = "{rtf}"}));
        m_middle = save("middle");
        m_newest = save("newest");
        show();
    }

    std::shared_ptr<FakeRunningApplication> m_editor;
    Clip m_oldest;
    Clip m_middle;
    Clip m_newest;
};

TEST_F(QuickPastePanelControllerKeysTest, ArrowsMoveTheSelectionWhateverIsHeld)
{
    for (const Qt::KeyboardModifiers modifiers :
         {Qt::KeyboardModifiers(Qt::NoModifier), Qt::ShiftModifier | Qt::ControlModifier,
          Qt::KeyboardModifiers(Qt::AltModifier), Qt::KeyboardModifiers(Qt::KeypadModifier)}) {
        EXPECT_EQ(m_model->selectedID(), m_newest.id);
        EXPECT_TRUE(m_view->press(Qt::Key_Down, modifiers));
        EXPECT_EQ(m_model->selectedID(), m_middle.id);
        EXPECT_TRUE(m_view->press(Qt::Key_Up, modifiers));
    }
    EXPECT_EQ(m_model->selectedID(), m_newest.id);
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnPastesTheSelectionIntoTheTarget)
{
    m_model->setSelectedID(m_oldest.id);
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    expectClosed();
    EXPECT_EQ(written().rtf, "{rtf}");
    EXPECT_GE(m_editor->activations(), 1);
}

TEST_F(QuickPastePanelControllerKeysTest, EnterIsReturn)
{
    m_model->setSelectedID(m_oldest.id);
    EXPECT_TRUE(m_view->press(Qt::Key_Enter, Qt::KeypadModifier));
    expectClosed();
    EXPECT_EQ(written().rtf, "{rtf}");
}

TEST_F(QuickPastePanelControllerKeysTest, ShiftReturnPastesPlainText)
{
    m_model->setSelectedID(m_oldest.id);
    EXPECT_TRUE(m_view->press(Qt::Key_Return, Qt::ShiftModifier));
    EXPECT_EQ(written().rtf, std::nullopt);
    EXPECT_EQ(written().plainText, "oldest");
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnWithOtherModifiersPastesNormally)
{
    m_model->setSelectedID(m_oldest.id);
    EXPECT_TRUE(m_view->press(Qt::Key_Return, Qt::ShiftModifier | Qt::AltModifier));
    EXPECT_EQ(written().rtf, "{rtf}");
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnWithoutATargetCopies)
{
    m_controller->close();
    m_workspace.setFrontmost(nullptr);
    show();
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    EXPECT_EQ(written().plainText, "newest");
    EXPECT_EQ(message(), u"Copied to the clipboard."_s);
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnGoesToTheTargetOfThisOpening)
{
    m_controller->close();
    const auto terminal = bringToFront(u"org.example.terminal"_s);
    show();
    bringToFront(u"org.example.latecomer"_s);
    m_view->press(Qt::Key_Return);
    EXPECT_GE(terminal->activations(), 1);
    EXPECT_EQ(m_editor->activations(), 0);
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnWithNothingSelectedIsConsumed)
{
    m_model->clearHistory(true);
    run();
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    EXPECT_TRUE(m_view->press(Qt::Key_Return, Qt::ShiftModifier));
    expectOpen();
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnRightAfterTypingPastesWhatWasSearchedFor)
{
    m_model->setQuery(u"oldest"_s);
    m_model->reload(AppModel::Debounce::yes);
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty()) << "the list is still that of before";
    run();
    EXPECT_EQ(written().plainText, "oldest");
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnRightAfterTypingWhatIsNowherePastesNothing)
{
    m_model->setQuery(u"nothing has this"_s);
    m_model->reload(AppModel::Debounce::yes);
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    run();
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    expectOpen();
}

TEST_F(QuickPastePanelControllerKeysTest, CtrlBackspaceRightAfterTypingDeletesWhatWasSearchedFor)
{
    m_model->setQuery(u"oldest"_s);
    m_model->reload(AppModel::Debounce::yes);
    EXPECT_TRUE(m_view->press(Qt::Key_Backspace, Qt::ControlModifier));
    run();
    EXPECT_THAT(stored(), SizeIs(2));
    m_model->setQuery({});
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_THAT(texts(), ElementsAre("newest", "middle"));
}

TEST_F(QuickPastePanelControllerKeysTest, AKeyThatWaitsForTheListIsForgottenWhenTheUserGoesOn)
{
    m_model->setQuery(u"oldest"_s);
    m_model->reload(AppModel::Debounce::yes);
    m_view->press(Qt::Key_Return);
    m_view->press(Qt::Key_Escape);
    run();
    show();
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(QuickPastePanelControllerKeysTest, ReturnRightAfterOpeningPastesWhatWasCopiedBefore)
{
    m_controller->close();
    m_model->clipboardMonitor().start();
    m_pasteboard.copyText("copied just before");
    m_controller->show();
    EXPECT_TRUE(m_view->press(Qt::Key_Return));
    pass(600ms);
    ASSERT_FALSE(m_pasteboard.writes().empty());
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, "copied just before");
}

TEST_F(QuickPastePanelControllerKeysTest, CtrlPTogglesThePinOfTheSelection)
{
    m_model->setSelectedID(m_middle.id);
    EXPECT_TRUE(m_view->press(Qt::Key_P, Qt::ControlModifier));
    run();
    EXPECT_THAT(texts(), ElementsAre("middle", "newest", "oldest"));
    EXPECT_TRUE(m_model->clips().front().isPinned);
    EXPECT_TRUE(m_view->press(Qt::Key_P, Qt::ControlModifier));
    run();
    EXPECT_FALSE(m_model->selectedClip()->isPinned);
}

TEST_F(QuickPastePanelControllerKeysTest, CtrlBackspaceDeletesTheSelection)
{
    m_model->setSelectedID(m_middle.id);
    EXPECT_TRUE(m_view->press(Qt::Key_Backspace, Qt::ControlModifier));
    run();
    EXPECT_THAT(texts(), ElementsAre("newest", "oldest"));
}

TEST_F(QuickPastePanelControllerKeysTest, AltShiftAndADigitPasteByPositionIntoTheTarget)
{
    m_settings.setDirectPasteShortcuts(true);
    bringToFront(u"com.brackmoor.tessly"_s);
    m_model->setQuery(u"oldest"_s);
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_TRUE(m_view->press(Qt::Key_2, Qt::AltModifier | Qt::ShiftModifier));
    run();
    EXPECT_EQ(written().plainText, "middle") << "of the whole history, whatever is listed";
    EXPECT_GE(m_editor->activations(), 1);
    expectClosed();
}

TEST_F(QuickPastePanelControllerKeysTest, APositionThatThereIsNotIsToldOf)
{
    m_settings.setDirectPasteShortcuts(true);
    EXPECT_TRUE(m_view->press(Qt::Key_0, Qt::AltModifier | Qt::ShiftModifier));
    run();
    EXPECT_EQ(message(), u"There is no clipboard item at position 10."_s);
    expectOpen();
}

TEST_F(QuickPastePanelControllerKeysTest, EverythingElseIsLeftToTheSearchField)
{
    EXPECT_FALSE(m_view->press(Qt::Key_P));
    EXPECT_FALSE(m_view->press(Qt::Key_P, Qt::ShiftModifier));
    EXPECT_FALSE(m_view->press(Qt::Key_Backspace));
    EXPECT_FALSE(m_view->press(Qt::Key_A));
    m_settings.setDirectPasteShortcuts(false);
    EXPECT_FALSE(m_view->press(Qt::Key_1, Qt::AltModifier | Qt::ShiftModifier));
    run();
    EXPECT_THAT(texts(), SizeIs(3));
    EXPECT_FALSE(m_model->clips().front().isPinned);
}

// Kept open

class QuickPastePanelControllerKeptOpenTest : public QuickPastePanelControllerTest
{
protected:
    QuickPastePanelControllerKeptOpenTest()
    {
        makeController(KeepsOpen::forUITesting);
        show();
    }
};

TEST_F(QuickPastePanelControllerKeptOpenTest, IsGivenTheKeyboardAllTheSame)
{
    EXPECT_THAT(m_view->calls(), ElementsAre(Call::show, Call::activate));
    EXPECT_EQ(m_clicks.watches(), 0U);
}

TEST_F(QuickPastePanelControllerKeptOpenTest, NeitherClicksNorFocusNorEscapeCloseIt)
{
    m_clicks.press();
    settle();
    m_view->loseKeyboard();
    EXPECT_FALSE(m_view->press(Qt::Key_Escape));
    EXPECT_FALSE(m_view->press(Qt::Key_Return));
    expectOpen();
}

TEST_F(QuickPastePanelControllerKeptOpenTest, OnlyTheModelClosesIt)
{
    m_model->closePanel();
    expectClosed();
}

} // namespace
} // namespace tessly::test
