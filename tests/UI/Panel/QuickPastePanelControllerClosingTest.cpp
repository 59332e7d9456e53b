#include "QuickPastePanelControllerTest.h"

namespace tessly::test {
namespace {

using QuickPastePanelControllerClosingTest = QuickPastePanelControllerTest;

// Closing

TEST_F(QuickPastePanelControllerClosingTest, TheModelClosesIt)
{
    show();
    m_model->closePanel();
    expectClosed();
    EXPECT_EQ(m_view->calls().back(), Call::close);
}

TEST_F(QuickPastePanelControllerClosingTest, ClosingBeforeTheFirstOpeningPutsTheStateRight)
{
    m_model->setPanelPresented(true);
    m_model->closePanel();
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_EQ(m_viewsMade, 0);
}

TEST_F(QuickPastePanelControllerClosingTest, ClosingWhileClosedPutsTheStateRight)
{
    show();
    m_controller->close();
    m_model->setPanelPresented(true);
    m_controller->close();
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, EscapeCloses)
{
    show();
    EXPECT_TRUE(m_view->press(Qt::Key_Escape));
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, EscapeClosesThePreviewFirst)
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

TEST_F(QuickPastePanelControllerClosingTest, CtrlSpaceSwitchesThePreview)
{
    save("one");
    show();
    EXPECT_TRUE(m_view->press(Qt::Key_Space, Qt::ControlModifier));
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_TRUE(m_view->press(Qt::Key_Space, Qt::ControlModifier));
    EXPECT_FALSE(m_preview.isShown());
    expectOpen();
}

TEST_F(QuickPastePanelControllerClosingTest, WhateverClosesThePanelClosesThePreview)
{
    save("one");
    show();
    m_preview.show();
    m_clicks.press();
    settle();
    EXPECT_FALSE(m_preview.isShown());
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, APressInAnotherApplicationClosesFromTheEventLoop)
{
    show();
    m_clicks.press();
    expectOpen();
    settle();
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, APressThatIsToldTooLateDoesNotCloseTheNextOpening)
{
    makeController(KeepsOpen::no);
    show();
    m_clicks.press();
    m_controller->close();
    settle();
    show();
    expectOpen();
}

TEST_F(QuickPastePanelControllerClosingTest, TogglingOpensAndCloses)
{
    m_controller->toggle();
    expectOpen();
    m_controller->toggle();
    expectClosed();
    m_controller->toggle();
    expectOpen();
}

TEST_F(QuickPastePanelControllerClosingTest, AClickOnTheStatusItemOpensAndCloses)
{
    m_controller->toggleByClick();
    expectOpen();
    m_controller->toggleByClick();
    expectClosed();
    m_controller->toggleByClick();
    expectOpen();
}

TEST_F(QuickPastePanelControllerClosingTest, AClickWhosePressClosedThePanelDoesNotOpenItAgain)
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

TEST_F(QuickPastePanelControllerClosingTest, AClickLongAfterThePanelWasDismissedOpensIt)
{
    show();
    m_view->loseKeyboard();
    pass(QuickPastePanelController::clickLength);
    m_controller->toggleByClick();
    expectOpen();
}

TEST_F(QuickPastePanelControllerClosingTest, LosingTheKeyboardCloses)
{
    show();
    m_view->loseKeyboard();
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, AWindowThatGoesByItselfEndsThePresentation)
{
    show();
    m_view->vanish();
    expectClosed();
}

TEST_F(QuickPastePanelControllerClosingTest, ClosingKeepsTheTarget)
{
    const auto editor = bringToFront(u"org.example.editor"_s);
    show();
    m_controller->close();
    EXPECT_EQ(m_model->currentTargetApplication(), editor);
}

TEST_F(QuickPastePanelControllerClosingTest, ClosingTellsOfTheChangeOnce)
{
    show();
    const QSignalSpy presented(m_model.get(), &AppModel::isPanelPresentedChanged);
    m_controller->close();
    m_controller->close();
    EXPECT_EQ(presented.size(), 1);
}

TEST_F(QuickPastePanelControllerClosingTest, ItsClosuresDoNothingOnceItIsGone)
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

} // namespace
} // namespace tessly::test
