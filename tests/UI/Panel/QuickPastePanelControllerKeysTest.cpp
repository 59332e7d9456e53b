#include "QuickPastePanelControllerTest.h"

namespace tessly::test {
namespace {

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
