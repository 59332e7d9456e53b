#include "PanelViewTest.h"

namespace tessly::test {
namespace {

using PanelRowsTest = PanelViewTest;

// Rows

TEST_F(PanelRowsTest, RowsShowPreviewAndMetadata)
{
    save("one");
    show();
    EXPECT_EQ(rowText(0, u"preview"_s), u"one"_s);
    EXPECT_EQ(rowText(0, u"metadata"_s), u"Text • now"_s);
}

TEST_F(PanelRowsTest, AClickPastesTheRow)
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

TEST_F(PanelRowsTest, ThePointerSelectsTheRowItComesUpon)
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

TEST_F(PanelRowsTest, ThePointerSelectsARowOnceUntilItHasLeft)
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

TEST_F(PanelRowsTest, RowsThatComeUnderAPointerAtRestAreNotSelected)
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

TEST_F(PanelRowsTest, SelectingByPointerDoesNotScroll)
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

TEST_F(PanelRowsTest, TheFirstTenRowsHaveKeyCapsAsTheSettingSays)
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

TEST_F(PanelRowsTest, PinnedRowsHaveAPin)
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

TEST_F(PanelRowsTest, ACopyShowsAtOnceAtTheTop)
{
    saveMany(20);
    show();
    save("the newest");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(rowText(0, u"preview"_s), u"the newest"_s);
    EXPECT_TRUE(isInSight(0));
}

TEST_F(PanelRowsTest, ACopyDoesNotMoveWhatTheUserLooksAt)
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

TEST_F(PanelRowsTest, NoContentChangesTheMeasuresOfItsRow)
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

TEST_F(PanelRowsTest, MarkupIsShownAsItIs)
{
    save("<b>bold</b>");
    show();
    EXPECT_EQ(rowText(0, u"preview"_s), u"<b>bold</b>"_s);
    EXPECT_EQ(rowText(0, u"preview"_s, "textFormat").toInt(), 0) << "plain text";
}

} // namespace
} // namespace tessly::test
