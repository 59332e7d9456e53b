#include "PanelViewTest.h"

namespace tessly::test {
namespace {

using PanelSearchFieldTest = PanelViewTest;

// The search field and the clipboard

TEST_F(PanelSearchFieldTest, PastingIntoTheSearchGoesByItsOwnPasteboard)
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

TEST_F(PanelSearchFieldTest, PastedTextIsSearchedFor)
{
    save("alpha");
    save("beta");
    show();
    m_pasteboard.copyText("alpha");
    press(Qt::Key_V, Qt::ControlModifier);
    settleSearch();
    EXPECT_THAT(texts(), ElementsAre("alpha"));
}

TEST_F(PanelSearchFieldTest, TheFieldTakesAThousandCharacters)
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

TEST_F(PanelSearchFieldTest, CopyingFromTheSearchGoesByItsOwnPasteboard)
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

TEST_F(PanelSearchFieldTest, CuttingKeepsTheTextIfItCannotBeCopied)
{
    show();
    type(u"text"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    m_pasteboard.refuseWrites();
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(searchText(), u"text"_s);
}

TEST_F(PanelSearchFieldTest, TheToolkitHearsOfNoCopy)
{
    show();
    EXPECT_TRUE(QGuiApplication::clipboard()->signalsBlocked());
}

// Filters

TEST_F(PanelSearchFieldTest, ChipsFilterByKind)
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

TEST_F(PanelSearchFieldTest, ChipsStandInTheirOrder)
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

} // namespace
} // namespace tessly::test
