#include "PanelViewTest.h"

namespace tessly::test {
namespace {

// Opening

TEST_F(PanelViewTest, HasTheSizeOfTheDesign)
{
    show();
    EXPECT_EQ(window().size(), QSize(660, 560));
}

TEST_F(PanelViewTest, WithoutAPlaceItIsInTheMiddleOfTheScreen)
{
    m_anchor = {};
    show();
    const QPoint off =
        window().geometry().center() - window().screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 2);
}

TEST_F(PanelViewTest, TypingSearchesAtOnceAfterEveryOpening)
{
    save("alpha");
    save("beta");
    for (int opening = 0; opening < 3; ++opening) {
        show();
        ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
        EXPECT_EQ(searchText(), QString()) << "the query begins empty";
        type(u"alp"_s);
        settleSearch();
        EXPECT_EQ(m_model->query(), u"alp"_s);
        EXPECT_THAT(texts(), ElementsAre("alpha"));
        EXPECT_EQ(rowText(0, u"preview"_s), u"alpha"_s);
        EXPECT_EQ(find(u"row-1"_s), nullptr);
        m_controller.close();
        run();
    }
}

TEST_F(PanelViewTest, TheFirstOpeningShowsTheNewestEntrySelected)
{
    for (int i = 1; i <= 26; ++i) {
        save("entry " + QByteArray::number(i));
        m_model->reload(AppModel::Debounce::no);
        run();
    }
    show();
    EXPECT_EQ(rowText(0, u"preview"_s), u"entry 26"_s);
    EXPECT_TRUE(isSelected(0));
    EXPECT_TRUE(isAtTop());
}

TEST_F(PanelViewTest, EveryOpeningBeginsAtTheTop)
{
    saveMany(30);
    show();
    for (int i = 0; i < 25; ++i) {
        press(Qt::Key_Down);
    }
    ASSERT_GT(scrolledTo(), 0);
    m_controller.close();
    show();
    EXPECT_TRUE(isSelected(0));
    EXPECT_TRUE(isAtTop()) << "after a move by keys";

    item(u"history"_s).setProperty("contentY", 600.0);
    run();
    m_controller.close();
    saveMany(12);
    show();
    EXPECT_TRUE(isSelected(0));
    EXPECT_TRUE(isAtTop()) << "scrolled by the wheel, and with new rows";
    EXPECT_EQ(rowText(0, u"preview"_s), u"entry 12"_s);
}

TEST_F(PanelViewTest, APointerThatLiesWhereItAppearsSelectsNothing)
{
    saveMany(6);
    show();
    const QPoint place = centerOf(u"row-3"_s);
    m_controller.close();
    m_controller.show();
    // What a window system tells of a window that appears under the pointer.
    QEnterEvent enter(place, place, window().mapToGlobal(place));
    QCoreApplication::sendEvent(&window(), &enter);
    QTest::mouseMove(&window(), place);
    run();
    EXPECT_TRUE(isSelected(0));
    QTest::mouseMove(&window(), place + QPoint(0, 2));
    run();
    EXPECT_TRUE(isSelected(3)) << "once it moves";
}

TEST_F(PanelViewTest, AWindowThatMovesUnderAPointerAtRestSelectsNothing)
{
    saveMany(6);
    show();
    m_controller.close();
    m_controller.show();
    const QPoint place = centerOf(u"row-3"_s);
    const QPoint onDesktop = window().mapToGlobal(place);
    QEnterEvent enter(place, place, onDesktop);
    QCoreApplication::sendEvent(&window(), &enter);
    const QPoint shifted = place + QPoint(0, 70);
    QMouseEvent move(
        QEvent::MouseMove, shifted, shifted, onDesktop, Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&window(), &move);
    run();
    EXPECT_TRUE(isSelected(0));
}

TEST_F(PanelViewTest, NoButtonIsLitFromTheLastOpening)
{
    show();
    point(u"open-settings"_s);
    ASSERT_TRUE(isLit(u"open-settings"_s));
    m_controller.close();
    show();
    EXPECT_FALSE(isLit(u"open-settings"_s));
    point(u"filter-link"_s);
    ASSERT_TRUE(isLit(u"filter-link"_s));
    m_controller.close();
    show();
    EXPECT_FALSE(isLit(u"filter-link"_s));
}

TEST_F(PanelViewTest, AButtonThatWasHeldWhenItClosedIsReleased)
{
    show();
    const QPoint place = centerOf(u"pause-recording"_s);
    QTest::mousePress(&window(), Qt::LeftButton, {}, place);
    ASSERT_TRUE(item(u"pause-recording"_s).property("isPressed").toBool());
    m_controller.close();
    EXPECT_EQ(window().mouseGrabberItem(), nullptr);
    QTest::mouseRelease(&window(), Qt::LeftButton, {}, place);
    show();
    EXPECT_FALSE(item(u"pause-recording"_s).property("isPressed").toBool());
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
}

TEST_F(PanelViewTest, NothingMovesWhileItIsClosed)
{
    save("alpha");
    show();
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
    m_controller.close();
    run();
    EXPECT_FALSE(window().isVisible());
    ASSERT_TRUE(waitUntil([this] {
        // The cursor blinks no more.
        return !window().activeFocusItem() ||
               !window().activeFocusItem()->property("cursorVisible").toBool();
    }));
    // What the history dropped is wiped once, a while after the start; then nothing is waited for.
    m_clock.advance(std::chrono::minutes(1));
    run();
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(PanelViewTest, TellsTheControllerWhenTheWindowIsClosedByOthers)
{
    show();
    window().close();
    run();
    EXPECT_FALSE(m_model->isPanelPresented());
    EXPECT_FALSE(window().isVisible());
    show();
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PanelViewTest, ClosesWhenAnotherWindowGetsTheKeyboard)
{
    show();
    QWindow other;
    other.show();
    other.requestActivate();
    EXPECT_TRUE(waitUntil([this] { return !m_model->isPanelPresented(); }));
}

// Keys

TEST_F(PanelViewTest, ArrowsMoveTheSelectionAndKeepItInSight)
{
    saveMany(20);
    show();
    EXPECT_TRUE(isSelected(0));
    press(Qt::Key_Down);
    EXPECT_FALSE(isSelected(0));
    EXPECT_TRUE(isSelected(1));
    for (int row = 2; row < 20; ++row) {
        press(Qt::Key_Down);
        EXPECT_TRUE(isInSight(row)) << row;
        EXPECT_TRUE(isSelected(row)) << row;
    }
    press(Qt::Key_Down);
    EXPECT_TRUE(isSelected(19)) << "the last stays selected";
    for (int row = 18; row >= 0; --row) {
        press(Qt::Key_Up);
        EXPECT_TRUE(isInSight(row)) << row;
    }
    EXPECT_TRUE(isSelected(0));
    EXPECT_TRUE(searchHasFocus());
}

TEST_F(PanelViewTest, ReturnPastesTheSelection)
{
    save("older");
    save("newer");
    show();
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, "older");
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PanelViewTest, EscapeCloses)
{
    show();
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(m_model->isPanelPresented());
}

TEST_F(PanelViewTest, BackspaceEditsTheSearchAndDeletesOnlyWithCtrl)
{
    save("alpha");
    show();
    type(u"alp"_s);
    press(Qt::Key_Backspace);
    EXPECT_EQ(searchText(), u"al"_s);
    settleSearch();
    EXPECT_THAT(texts(), SizeIs(1));
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"al"_s);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PanelViewTest, PIsALetterAndPinsOnlyWithCtrl)
{
    save("paper");
    show();
    type(u"p"_s);
    settleSearch();
    EXPECT_EQ(searchText(), u"p"_s);
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"p"_s);
    EXPECT_TRUE(m_model->clips().front().isPinned);
    EXPECT_NE(find(u"pin"_s), nullptr);
}

TEST_F(PanelViewTest, TabGoesThroughAllControlsAndReturnsToTheField)
{
    save("one");
    show();
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
    const QStringList controls = {u"pause-recording"_s, u"open-settings"_s,   u"filter-all"_s,
                                  u"filter-text"_s,     u"filter-richText"_s, u"filter-image"_s,
                                  u"filter-files"_s,    u"filter-link"_s};
    for (const QString& name : controls) {
        press(Qt::Key_Tab);
        EXPECT_TRUE(item(name).hasActiveFocus()) << name.toStdString();
        EXPECT_NE(ViewDriver::find(u"focus-ring"_s, item(name)), nullptr) << name.toStdString();
    }
    press(Qt::Key_Tab);
    EXPECT_TRUE(searchHasFocus());
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(item(u"filter-link"_s).hasActiveFocus());
    m_controller.close();
    show();
    EXPECT_TRUE(waitUntil([this] { return searchHasFocus(); })) << "at the next opening";
}

TEST_F(PanelViewTest, AControlWithTheKeyboardIsPressedByItAndPastesNothing)
{
    save("plain");
    save("https://example.org/");
    show();
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    for (int i = 0; i < 3; ++i) {
        press(Qt::Key_Tab);
    }
    ASSERT_TRUE(item(u"filter-text"_s).hasActiveFocus());
    press(Qt::Key_Return);
    EXPECT_EQ(m_model->selectedKind(), ClipKind::text);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    EXPECT_TRUE(window().isVisible());
    QSignalSpy requested(&m_panel, &PanelModel::settingsRequested);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(requested.size(), 1);
}

TEST_F(PanelViewTest, TypingGoesToTheFieldWhateverHasTheKeyboard)
{
    save("alpha");
    show();
    type(u"a"_s);
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    type(u"lp"_s);
    EXPECT_TRUE(searchHasFocus());
    EXPECT_EQ(searchText(), u"alp"_s);
    settleSearch();
    EXPECT_EQ(m_model->query(), u"alp"_s);
}

TEST_F(PanelViewTest, PageKeysMoveTheSelectionByWhatIsSeenAtOnce)
{
    saveMany(40);
    show();
    press(Qt::Key_PageDown);
    const int page = m_panel.selectedRow();
    EXPECT_GE(page, 4);
    EXPECT_LE(page, 7);
    EXPECT_TRUE(isInSight(page));
    press(Qt::Key_PageDown);
    EXPECT_EQ(m_panel.selectedRow(), 2 * page);
    EXPECT_TRUE(isInSight(2 * page));
    press(Qt::Key_PageUp);
    EXPECT_EQ(m_panel.selectedRow(), page);
    for (int i = 0; i < 10; ++i) {
        press(Qt::Key_PageDown);
    }
    EXPECT_EQ(m_panel.selectedRow(), 39);
    EXPECT_TRUE(searchHasFocus());
}

TEST_F(PanelViewTest, HomeAndEndStayWithTheText)
{
    save("one");
    save("two");
    show();
    press(Qt::Key_Down);
    type(u"o"_s);
    press(Qt::Key_Home);
    type(u"w"_s);
    EXPECT_EQ(searchText(), u"wo"_s);
    press(Qt::Key_End);
    type(u"x"_s);
    EXPECT_EQ(searchText(), u"wox"_s);
}

TEST_F(PanelViewTest, AltShiftAndADigitPasteByTheKeysPlace)
{
    m_settings.setDirectPasteShortcuts(true);
    save("older");
    save("newer");
    show();
    // The key that bears 2, and " with Shift, as the German layout has it.
    QKeyEvent event(
        QEvent::KeyPress, Qt::Key_QuoteDbl, Qt::AltModifier | Qt::ShiftModifier, 11, 0, 0, u"\""_s);
    QCoreApplication::sendEvent(&window(), &event);
    run();
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, "older");
}

TEST_F(PanelViewTest, AKeyThatIsHeldPastesOnce)
{
    save("one");
    show();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(&window(), &repeated);
    run();
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    EXPECT_TRUE(window().isVisible());
}

} // namespace
} // namespace tessly::test
