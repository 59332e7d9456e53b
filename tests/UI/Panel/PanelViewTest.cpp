#include "PanelViewFixture.h"

#include "QtPrinting.h"
#include "Tokens.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

class PanelViewTest : public PanelViewFixture
{
protected:
    void saveMany(int count)
    {
        for (int i = 1; i <= count; ++i) {
            save("entry " + QByteArray::number(i));
        }
    }

    [[nodiscard]] QString searchText() { return text(u"clipboard-search"_s); }
    [[nodiscard]] bool searchHasFocus() { return item(u"clipboard-search"_s).hasActiveFocus(); }
    [[nodiscard]] bool isCurrent(const QString& command)
    {
        return item(command).property("isCurrent").toBool();
    }
    [[nodiscard]] bool menuIsOpen() { return find(u"row-menu"_s) != nullptr; }
    /// What assistive technology is told of an item.
    [[nodiscard]] QString accessibleName(const QString& name)
    {
        QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&item(name));
        return interface != nullptr ? interface->text(QAccessible::Name) : QString();
    }
    [[nodiscard]] bool isLit(const QString& name)
    {
        const QVariant lit = item(name).property("isLit");
        EXPECT_TRUE(lit.isValid());
        return lit.toBool();
    }
    [[nodiscard]] qreal scrolledTo() { return item(u"history"_s).property("contentY").toReal(); }
    /// Whether the first row is as far from the edge as the design has it.
    [[nodiscard]] bool isAtTop()
    {
        QQuickItem* const first = find(u"row-0"_s);
        return first != nullptr &&
               first->mapToItem(&item(u"history"_s), QPointF()) == QPointF(8, 8);
    }
    /// Whether a row is within what is seen of the list.
    [[nodiscard]] bool isInSight(int row)
    {
        QQuickItem* const found = find(u"row-%1"_s.arg(row));
        if (found == nullptr) {
            return false;
        }
        const QQuickItem& list = item(u"history"_s);
        const qreal top = found->mapToItem(&list, QPointF()).y();
        return top >= 0 && top + found->height() <= list.height();
    }
};

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

// The search field and the clipboard

TEST_F(PanelViewTest, PastingIntoTheSearchGoesByItsOwnPasteboard)
{
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s);
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s, QClipboard::Selection);
    show();
    m_pasteboard.copyText("own\nsecond line");
    type(u"my "_s);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"my own"_s);
    press(Qt::Key_Home, Qt::ShiftModifier);
    press(Qt::Key_Insert, Qt::ShiftModifier);
    EXPECT_EQ(searchText(), u"own"_s) << "what was selected is replaced";
    EXPECT_EQ(m_model->query(), u"own"_s);
    click(u"clipboard-search"_s, Qt::MiddleButton);
    EXPECT_EQ(searchText(), u"own"_s) << "the middle button does nothing";
}

TEST_F(PanelViewTest, PastedTextIsSearchedFor)
{
    save("alpha");
    save("beta");
    show();
    m_pasteboard.copyText("alpha");
    press(Qt::Key_V, Qt::ControlModifier);
    settleSearch();
    EXPECT_THAT(texts(), ElementsAre("alpha"));
}

TEST_F(PanelViewTest, TheFieldTakesAThousandCharacters)
{
    show();
    m_pasteboard.copyText(QByteArray(500, 'x'));
    for (int i = 0; i < 3; ++i) {
        press(Qt::Key_V, Qt::ControlModifier);
    }
    type(u"y"_s);
    EXPECT_EQ(searchText(), QString(1000, u'x'));
    EXPECT_EQ(m_model->query(), QString(1000, u'x'));
}

TEST_F(PanelViewTest, CopyingFromTheSearchGoesByItsOwnPasteboard)
{
    show();
    type(u"some text"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"some text"_s);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(searchText(), QString());
    EXPECT_EQ(m_model->query(), QString());
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().plainText, "some text");
    EXPECT_EQ(m_pasteboard.writes()[1].front().plainText, "some text");
}

TEST_F(PanelViewTest, CuttingKeepsTheTextIfItCannotBeCopied)
{
    show();
    type(u"text"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    m_pasteboard.refuseWrites();
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"text"_s);
}

TEST_F(PanelViewTest, TheToolkitHearsOfNoCopy)
{
    show();
    EXPECT_TRUE(QGuiApplication::clipboard()->signalsBlocked());
}

// Filters

TEST_F(PanelViewTest, ChipsFilterByKind)
{
    save("plain");
    save("https://example.org/");
    show();
    EXPECT_TRUE(item(u"filter-all"_s).property("isSelected").toBool());
    click(u"filter-link"_s);
    EXPECT_EQ(m_model->selectedKind(), ClipKind::link);
    EXPECT_EQ(rowText(0, u"preview"_s), u"https://example.org/"_s);
    EXPECT_EQ(find(u"row-1"_s), nullptr);
    EXPECT_TRUE(item(u"filter-link"_s).property("isSelected").toBool());
    EXPECT_FALSE(item(u"filter-all"_s).property("isSelected").toBool());
    click(u"filter-all"_s);
    EXPECT_EQ(m_model->selectedKind(), std::nullopt);
    EXPECT_NE(find(u"row-1"_s), nullptr);
    EXPECT_TRUE(searchHasFocus()) << "typing still searches";
}

TEST_F(PanelViewTest, ChipsStandInTheirOrder)
{
    show();
    QStringList titles;
    qreal right = 0;
    for (const QString& kind :
         {u"all"_s, u"text"_s, u"richText"_s, u"image"_s, u"files"_s, u"link"_s}) {
        const QString name = u"filter-"_s + kind;
        EXPECT_GT(centerOf(name).x(), right);
        right = centerOf(name).x();
        titles.append(text(name, "title") + u'|' + text(name, "symbol"));
    }
    EXPECT_EQ(
        titles,
        (QStringList{
            u"All|square.stack.3d.up"_s, u"Text|text.alignleft"_s, u"Rich Text|textformat"_s,
            u"Image|photo"_s, u"Files|doc.on.doc"_s, u"Link|link"_s}));
}

// Rows

TEST_F(PanelViewTest, RowsShowPreviewAndMetadata)
{
    save("one");
    show();
    EXPECT_EQ(rowText(0, u"preview"_s), u"one"_s);
    EXPECT_EQ(rowText(0, u"metadata"_s), u"Text • now"_s);
}

TEST_F(PanelViewTest, AClickPastesTheRow)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, "older");
    EXPECT_GE(m_editor->activations(), 1);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PanelViewTest, ThePointerSelectsTheRowItComesUpon)
{
    saveMany(4);
    show();
    point(u"row-2"_s);
    EXPECT_TRUE(isSelected(2));
    point(u"row-1"_s);
    EXPECT_TRUE(isSelected(1));
    point(u"clipboard-search"_s);
    EXPECT_TRUE(isSelected(1)) << "leaving selects nothing";
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PanelViewTest, ThePointerSelectsARowOnceUntilItHasLeft)
{
    saveMany(4);
    show();
    point(u"row-2"_s);
    press(Qt::Key_Up);
    EXPECT_TRUE(isSelected(1));
    QTest::mouseMove(&window(), centerOf(u"row-2"_s) + QPoint(3, 3));
    run();
    EXPECT_TRUE(isSelected(1)) << "it is on the same row still";
    point(u"clipboard-search"_s);
    point(u"row-2"_s);
    EXPECT_TRUE(isSelected(2));
}

TEST_F(PanelViewTest, RowsThatComeUnderAPointerAtRestAreNotSelected)
{
    saveMany(20);
    show();
    point(u"row-5"_s);
    EXPECT_TRUE(isSelected(5));
    for (int i = 0; i < 10; ++i) {
        press(Qt::Key_Down);
    }
    EXPECT_TRUE(isSelected(15));
    EXPECT_GT(scrolledTo(), 0) << "the rows did move";
}

TEST_F(PanelViewTest, SelectingByPointerDoesNotScroll)
{
    saveMany(20);
    show();
    press(Qt::Key_Down);
    QQuickItem& list = item(u"history"_s);
    list.setProperty("contentY", 30.0);
    const qreal before = scrolledTo();
    for (const int x : {99, 100}) {
        QTest::mouseMove(&window(), list.mapToScene(QPointF(x, 6)).toPoint());
        run();
    }
    EXPECT_EQ(scrolledTo(), before);
    EXPECT_TRUE(isSelected(0)) << "a row that is half in sight";
}

TEST_F(PanelViewTest, TheFirstTenRowsHaveKeyCapsAsTheSettingSays)
{
    m_settings.setDirectPasteShortcuts(true);
    saveMany(12);
    show();
    EXPECT_EQ(rowText(0, u"shortcut"_s, "label"), u"⌥⇧1"_s);
    for (int i = 0; i < 11; ++i) {
        press(Qt::Key_Down);
    }
    EXPECT_EQ(rowText(9, u"shortcut"_s, "label"), u"⌥⇧0"_s);
    EXPECT_EQ(rowText(10, u"shortcut"_s, "label"), QString()) << "no badge at all";
    EXPECT_EQ(rowText(11, u"shortcut"_s, "label"), QString());
    m_settings.setDirectPasteShortcuts(false);
    run();
    EXPECT_EQ(find(u"shortcut"_s), nullptr);
}

TEST_F(PanelViewTest, PinnedRowsHaveAPin)
{
    const Clip older = save("older");
    save("newer");
    show();
    EXPECT_EQ(find(u"pin"_s), nullptr);
    m_model->togglePin(&older);
    run();
    EXPECT_EQ(rowText(0, u"preview"_s), u"older"_s);
    EXPECT_EQ(rowText(0, u"pin"_s, "name"), u"pin.fill"_s);
    EXPECT_EQ(rowText(1, u"pin"_s, "name"), QString());
}

TEST_F(PanelViewTest, ACopyShowsAtOnceAtTheTop)
{
    saveMany(20);
    show();
    save("the newest");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(rowText(0, u"preview"_s), u"the newest"_s);
    EXPECT_TRUE(isInSight(0));
}

TEST_F(PanelViewTest, ACopyDoesNotMoveWhatTheUserLooksAt)
{
    saveMany(30);
    show();
    QQuickItem& list = item(u"history"_s);
    list.setProperty("contentY", 600.0);
    run();
    QQuickItem* row = nullptr;
    for (int i = 5; row == nullptr && i < 20; ++i) {
        row = isInSight(i) ? find(u"row-%1"_s.arg(i)) : nullptr;
    }
    ASSERT_NE(row, nullptr);
    const qreal before = row->mapToScene(QPointF()).y();
    save("the newest");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(row->mapToScene(QPointF()).y(), before);
}

TEST_F(PanelViewTest, NoContentChangesTheMeasuresOfItsRow)
{
    const std::vector<QByteArray> contents = {
        "plain",
        QByteArray(25 * 1024 * 1024, 'x'),
        QByteArray("long ").repeated(2000),
        "line\nline\r\nline\xE2\x80\xA8line\x0Bline\x0Cline\xC2\x85line",
        QByteArrayLiteral("\x01\x02\x1B[31m\x07\x7F control\0zero"),
        "שלום עולם, זה טקסט בעברית שנועד לבדוק את הכיוון של השורה כשהיא ארוכה יותר מן הרוחב",
        "مرحبا بالعالم",
        "🎉 👩‍👩‍👧‍👦 🏴󠁧󠁢󠁥󠁮󠁧󠁿 🇩🇪",
        "Z" + QByteArray("\xCD\x9B\xCD\xAB").repeated(60) + "algo",
        "<b>bold</b> <img src='file:///etc/passwd'> &amp; <a href='x'>link</a>",
        "\xE2\x80\xAE"
        "reversed"
        "\xE2\x80\xAC",
        "ประเทศไทย हिन्दी 日本語 한국어",
    };
    for (const QByteArray& content : contents) {
        save(content);
    }
    show();
    const qreal height = item(u"row-0"_s).height();
    for (int row = 0; row < static_cast<int>(contents.size()); ++row) {
        QQuickItem& found = item(u"row-%1"_s.arg(row));
        EXPECT_EQ(found.height(), height) << row;
        EXPECT_EQ(found.width(), 660 - 2 * 8) << row;
        EXPECT_LE(
            rowText(row, u"preview"_s, "contentWidth").toDouble(),
            rowText(row, u"preview"_s, "width").toDouble())
            << row;
        EXPECT_EQ(rowText(row, u"preview"_s, "lineCount"), u"1"_s) << row;
        press(Qt::Key_Down);
    }
}

TEST_F(PanelViewTest, MarkupIsShownAsItIs)
{
    save("<b>bold</b>");
    show();
    EXPECT_EQ(rowText(0, u"preview"_s), u"<b>bold</b>"_s);
    EXPECT_EQ(rowText(0, u"preview"_s, "textFormat").toInt(), 0) << "plain text";
}

// The menu of a row

TEST_F(PanelViewTest, TheOtherButtonOpensTheMenuOfARow)
{
    save("older");
    save("newer");
    show();
    EXPECT_FALSE(menuIsOpen());
    click(u"row-1"_s, Qt::RightButton);
    ASSERT_TRUE(menuIsOpen());
    EXPECT_EQ(text(u"menu-copy"_s, "title"), u"Copy"_s);
    EXPECT_EQ(text(u"menu-copy-plain"_s, "title"), u"Copy as Plain Text"_s);
    EXPECT_EQ(text(u"menu-pin"_s, "title"), u"Pin"_s);
    EXPECT_EQ(text(u"menu-delete"_s, "title"), u"Delete"_s);
    EXPECT_TRUE(item(u"menu-delete"_s).property("isDestructive").toBool());
    qreal above = 0;
    for (const QString& name :
         {u"menu-copy"_s, u"menu-copy-plain"_s, u"menu-pin"_s, u"menu-delete"_s}) {
        EXPECT_GT(centerOf(name).y(), above);
        above = centerOf(name).y();
    }
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(PanelViewTest, TheMenuCopies)
{
    save(ClipPayload({.plainText = "older", .rtf = "{rtf}"}));
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-copy"_s);
    EXPECT_FALSE(window().isVisible());
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-copy-plain"_s);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().rtf, "{rtf}");
    EXPECT_EQ(m_pasteboard.writes()[1].front().plainText, "older");
    EXPECT_EQ(m_pasteboard.writes()[1].front().rtf, std::nullopt);
}

TEST_F(PanelViewTest, TheMenuPinsAndUnpins)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-pin"_s);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_THAT(texts(), ElementsAre("older", "newer"));
    click(u"row-0"_s, Qt::RightButton);
    EXPECT_EQ(text(u"menu-pin"_s, "title"), u"Unpin"_s);
    click(u"menu-pin"_s);
    EXPECT_THAT(texts(), ElementsAre("newer", "older"));
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PanelViewTest, TheMenuDeletes)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    click(u"menu-delete"_s);
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(PanelViewTest, TheMenuActsOnItsClipThoughTheRowsHaveMoved)
{
    save("older");
    save("newer");
    show();
    click(u"row-1"_s, Qt::RightButton);
    save("newest");
    m_model->reload(AppModel::Debounce::no);
    run();
    click(u"menu-delete"_s);
    EXPECT_THAT(texts(), ElementsAre("newest", "newer"));
}

TEST_F(PanelViewTest, TheMenuTakesTheKeysWhileItIsOpen)
{
    save("older");
    save("newer");
    show();
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(isSelected(0)) << "the rows do not hear of it";
    press(Qt::Key_Up);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(texts(), ElementsAre("older"));
    EXPECT_TRUE(window().isVisible());
    type(u"x"_s);
    EXPECT_EQ(searchText(), u"x"_s) << "the keyboard is back";
}

TEST_F(PanelViewTest, APointerThatRestsBesideTheMenusCommandsLeavesTheMenuToTheKeys)
{
    save("older");
    save("newer");
    show();
    point(u"row-0"_s);
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Up);
    rest(u"row-0"_s);
    EXPECT_TRUE(isCurrent(u"menu-delete"_s));
    press(Qt::Key_Return);
    EXPECT_THAT(texts(), ElementsAre("older"));
}

TEST_F(PanelViewTest, APointerThatRestsOnACommandOfTheMenuLeavesTheMenuToTheKeys)
{
    save("older");
    save("newer");
    show();
    click(u"row-0"_s, Qt::RightButton);
    point(u"menu-copy"_s);
    EXPECT_TRUE(isCurrent(u"menu-copy"_s));
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    rest(u"menu-copy"_s);
    EXPECT_TRUE(isCurrent(u"menu-pin"_s));
    press(Qt::Key_Return);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(PanelViewTest, ThePointerLightsTheCommandOfTheMenuThatItIsOn)
{
    saveMany(3);
    show();
    click(u"row-0"_s, Qt::RightButton);
    for (const QString& name :
         {u"menu-copy"_s, u"menu-copy-plain"_s, u"menu-pin"_s, u"menu-delete"_s}) {
        point(name);
        EXPECT_TRUE(isCurrent(name)) << name.toStdString();
    }
    EXPECT_TRUE(isSelected(0)) << "nothing behind the menu hears of it";
    point(u"row-0"_s);
    EXPECT_FALSE(isCurrent(u"menu-delete"_s)) << "beside the menu";
    press(Qt::Key_Return);
    EXPECT_TRUE(menuIsOpen());
}

TEST_F(PanelViewTest, EscapeClosesTheMenuFirst)
{
    save("one");
    show();
    click(u"row-0"_s, Qt::RightButton);
    press(Qt::Key_Escape);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_TRUE(window().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PanelViewTest, APressBesideTheMenuOnlyClosesIt)
{
    save("one");
    save("two");
    show();
    click(u"row-0"_s, Qt::RightButton);
    click(u"filter-link"_s);
    EXPECT_FALSE(menuIsOpen());
    EXPECT_EQ(m_model->selectedKind(), std::nullopt);
    EXPECT_TRUE(searchHasFocus());
}

TEST_F(PanelViewTest, TheMenuIsGoneAtTheNextOpening)
{
    save("one");
    show();
    click(u"row-0"_s, Qt::RightButton);
    m_controller.close();
    show();
    EXPECT_FALSE(menuIsOpen());
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
}

TEST_F(PanelViewTest, TheMenuStaysInsideThePanel)
{
    saveMany(8);
    show();
    QTest::mouseClick(&window(), Qt::RightButton, {}, QPoint(645, 500));
    run();
    ASSERT_TRUE(menuIsOpen());
    const QQuickItem& menu = item(u"row-menu"_s);
    const QRectF area = menu.mapRectToScene(QRectF(0, 0, menu.width(), menu.height()));
    EXPECT_TRUE(QRectF(0, 0, 660, 560).contains(area));
}

// The banner

TEST_F(PanelViewTest, TheBannerComesWithItsKindAndGoes)
{
    show();
    EXPECT_EQ(find(u"banner"_s), nullptr);
    const TokenColors colors = tokenColors(QGuiApplication::palette());
    const std::tuple<AppModel::BannerKind, QString, QColor> kinds[] = {
        {AppModel::BannerKind::information, u"info.circle.fill"_s, colors.bannerInformation},
        {AppModel::BannerKind::warning, u"exclamationmark.triangle.fill"_s, colors.bannerWarning},
        {AppModel::BannerKind::error, u"xmark.octagon.fill"_s, colors.bannerError},
    };
    for (const auto& [kind, symbol, color] : kinds) {
        m_model->showBanner(u"Some news."_s, kind);
        ASSERT_TRUE(waitUntil([this] {
            QQuickItem* const banner = find(u"banner"_s);
            return banner != nullptr && banner->opacity() == 1;
        }));
        EXPECT_EQ(text(u"banner-message"_s), u"Some news."_s);
        EXPECT_EQ(text(u"banner-symbol"_s, "name"), symbol);
        EXPECT_EQ(item(u"banner"_s).property("color").value<QColor>(), color);
    }
    pass(4s);
    EXPECT_TRUE(waitUntil([this] { return find(u"banner"_s) == nullptr; }));
}

TEST_F(PanelViewTest, TheBannerIsDismissedByItsButton)
{
    show();
    m_model->setBanner(AppModel::Banner{u"It stays."_s, AppModel::BannerKind::warning});
    ASSERT_TRUE(waitUntil([this] {
        QQuickItem* const banner = find(u"banner"_s);
        return banner != nullptr && banner->opacity() == 1;
    }));
    pass(10s);
    EXPECT_NE(find(u"banner"_s), nullptr);
    click(u"dismiss-banner"_s);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_TRUE(waitUntil([this] { return find(u"banner"_s) == nullptr; }));
}

// Empty states

TEST_F(PanelViewTest, AnEmptyHistorySaysSo)
{
    show();
    EXPECT_EQ(text(u"empty-history-label"_s), u"Clipboard is empty"_s);
    EXPECT_EQ(text(u"empty-history-symbol"_s, "name"), u"doc.on.clipboard"_s);
    EXPECT_EQ(accessibleName(u"empty-history"_s), u"Clipboard is empty"_s);
    save("one");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(find(u"empty-history"_s), nullptr);
    EXPECT_NE(find(u"row-0"_s), nullptr);
}

TEST_F(PanelViewTest, ASearchWithoutResultSaysSo)
{
    save("one");
    show();
    type(u" "_s);
    settleSearch();
    type(u"zzz"_s);
    settleSearch();
    EXPECT_EQ(text(u"empty-history-label"_s), u"No matching clips"_s);
    EXPECT_EQ(text(u"empty-history-symbol"_s, "name"), u"magnifyingglass"_s);
}

TEST_F(PanelViewTest, AFilterWithoutResultAndWithoutQueryIsAnEmptyClipboard)
{
    save("one");
    show();
    click(u"filter-image"_s);
    EXPECT_EQ(text(u"empty-history-label"_s), u"Clipboard is empty"_s);
}

// Header and footer

TEST_F(PanelViewTest, ThePauseButtonPausesAndResumes)
{
    show();
    EXPECT_EQ(text(u"pause-recording"_s, "symbol"), u"pause.circle"_s);
    EXPECT_EQ(text(u"pause-recording"_s, "help"), u"Pause clipboard recording"_s);
    click(u"pause-recording"_s);
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(text(u"pause-recording"_s, "symbol"), u"record.circle"_s);
    EXPECT_EQ(text(u"pause-recording"_s, "help"), u"Resume clipboard recording"_s);
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    click(u"pause-recording"_s);
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(message(), u"Clipboard recording resumed."_s);
}

TEST_F(PanelViewTest, TheSettingsButtonClosesAndAsksForTheSettings)
{
    show();
    QSignalSpy requested(&m_panel, &PanelModel::settingsRequested);
    QObject::connect(&m_panel, &PanelModel::settingsRequested, &m_panel, [this] {
        EXPECT_FALSE(window().isVisible()) << "the panel is closed first";
    });
    click(u"open-settings"_s);
    EXPECT_EQ(requested.size(), 1);
}

TEST_F(PanelViewTest, TheFooterCountsTheWholeHistory)
{
    saveMany(3);
    show();
    EXPECT_EQ(text(u"item-count"_s), u"3 items"_s);
    type(u"2"_s);
    settleSearch();
    EXPECT_THAT(texts(), SizeIs(1));
    EXPECT_EQ(text(u"item-count"_s), u"3 items"_s);
}

// Names and help

TEST_F(PanelViewTest, EverythingHasANameForAssistiveTechnology)
{
    m_settings.setDirectPasteShortcuts(true);
    save("one\ntwo");
    show();
    EXPECT_EQ(accessibleName(u"row-0"_s), u"Text, one two"_s);
    EXPECT_EQ(accessibleName(u"shortcut"_s), u"Alt+Shift+1"_s);
    EXPECT_EQ(accessibleName(u"clipboard-search"_s), u"Search clipboard history"_s);
    EXPECT_EQ(accessibleName(u"open-settings"_s), u"Settings"_s);
    EXPECT_EQ(accessibleName(u"pause-recording"_s), u"Pause clipboard recording"_s);
    EXPECT_EQ(accessibleName(u"filter-richText"_s), u"Rich Text"_s);
    EXPECT_EQ(accessibleName(u"hint-paste"_s), u"Return: paste"_s);
    EXPECT_EQ(accessibleName(u"hint-plain text"_s), u"Shift+Return: plain text"_s);
    EXPECT_EQ(accessibleName(u"hint-pin"_s), u"Ctrl+P: pin"_s);
    EXPECT_EQ(accessibleName(u"item-count"_s), u"1 items"_s);
}

TEST_F(PanelViewTest, ARowCanBeChosenByAssistiveTechnology)
{
    save("one");
    show();
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(&item(u"row-0"_s));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->role(), QAccessible::ListItem);
    ASSERT_NE(row->actionInterface(), nullptr);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
}

TEST_F(PanelViewTest, ButtonsAndKeyCapsHaveToolTips)
{
    m_settings.setDirectPasteShortcuts(true);
    save("one");
    show();
    const std::pair<QString, QString> tips[] = {
        {u"open-settings"_s, u"Settings"_s}, {u"pause-recording"_s, u"Pause clipboard recording"_s},
        {u"shortcut"_s, u"Alt+Shift+1"_s},   {u"hint-plain text"_s, u"Shift+Return"_s},
        {u"hint-pin"_s, u"Ctrl+P"_s},
    };
    for (const auto& [name, tip] : tips) {
        point(name);
        ASSERT_TRUE(waitUntil([this] { return find(u"tool-tip"_s) != nullptr; }))
            << name.toStdString();
        EXPECT_EQ(text(u"tool-tip"_s), tip);
        const QQuickItem& shown = item(u"tool-tip"_s);
        EXPECT_TRUE(
            QRectF(0, 0, 660, 560)
                .contains(shown.mapRectToScene(QRectF(0, 0, shown.width(), shown.height()))));
        point(u"history"_s);
        EXPECT_EQ(find(u"tool-tip"_s), nullptr);
    }
}

// Appearance

TEST_F(PanelViewTest, ColoursFollowThePaletteWhileItIsOpen)
{
    const QPalette before = QGuiApplication::palette();
    show();
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(dark);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(dark).panel);
    QGuiApplication::setPalette(before);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(before).panel);
}

TEST_F(PanelViewTest, IsDrawnWithoutAGPU)
{
    show();
    EXPECT_EQ(window().rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
}

} // namespace
} // namespace tessly::test
