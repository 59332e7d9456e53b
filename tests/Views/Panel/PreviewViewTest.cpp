#include "PanelViewFixture.h"

#include "QtPrinting.h"
#include "Tokens.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QScreen>
#include <QtTest/QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace tessly::test {
namespace {

/// What the toolkit has had to say against the views.
QStringList complaints;
QtMessageHandler usualHandler = nullptr;

void listen(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (message.contains("qrc:"_L1)) {
        complaints.append(message);
    }
    usualHandler(type, context, message);
}

class PreviewViewTest : public PanelViewFixture
{
protected:
    PreviewViewTest()
    {
        complaints.clear();
        usualHandler = qInstallMessageHandler(listen);
    }
    ~PreviewViewTest() override
    {
        qInstallMessageHandler(usualHandler);
        EXPECT_THAT(complaints, testing::IsEmpty());
    }

    /// The preview's window while it is shown, else null.
    [[nodiscard]] static QQuickWindow* card()
    {
        const auto windows = QGuiApplication::topLevelWindows();
        for (QWindow* const window : windows) {
            if (window->title() == u"Tessly Preview"_s && window->isVisible()) {
                return qobject_cast<QQuickWindow*>(window);
            }
        }
        return nullptr;
    }
    [[nodiscard]] static bool exists()
    {
        return std::ranges::any_of(QGuiApplication::topLevelWindows(), [](const QWindow* window) {
            return window->title() == u"Tessly Preview"_s;
        });
    }
    [[nodiscard]] static ViewDriver cardDriver() { return ViewDriver(*card()); }
    [[nodiscard]] static QString cardText(const QString& name) { return cardDriver().text(name); }

    /// Opens the panel, and the preview of the newest entry.
    void showCard()
    {
        show();
        press(Qt::Key_Space, Qt::ControlModifier);
        ASSERT_TRUE(waitUntil([] { return card() != nullptr && card()->isExposed(); }));
        drawCard();
    }
    void drawCard()
    {
        run();
        card()->grabWindow();
    }
    [[nodiscard]] bool searchHasFocus() { return item(u"clipboard-search"_s).hasActiveFocus(); }
};

// Coming and going

TEST_F(PreviewViewTest, ComesOnceTheSelectionHasRestedAndLeavesThePanelTheKeyboard)
{
    save("one");
    show();
    // The screen here has none.
    m_preview.setPlace(PreviewModel::Room::besidePanel, {100, 100});
    EXPECT_FALSE(exists()) << "nothing is made before";
    pass(PreviewModel::rest);
    ASSERT_NE(card(), nullptr);
    EXPECT_EQ(card()->transientParent(), &window());
    EXPECT_TRUE(window().isActive());
}

TEST_F(PreviewViewTest, OnASmallScreenItComesOverTheListWhenItIsAskedFor)
{
    save("one");
    show();
    pass(PreviewModel::rest);
    EXPECT_EQ(card(), nullptr);
    m_preview.show();
    ASSERT_NE(card(), nullptr);
    EXPECT_TRUE(window().geometry().contains(card()->geometry()));
    const QPoint list = window().mapToGlobal(item(u"history"_s).mapToScene({0, 0}).toPoint());
    EXPECT_GE(card()->y(), list.y());
    EXPECT_GE(card()->x(), list.x() + 200) << "the beginnings of the rows are seen";
}

TEST_F(PreviewViewTest, EscapeClosesItFirstAndNothingOfItIsLeft)
{
    save("one");
    showCard();
    press(Qt::Key_Escape);
    EXPECT_EQ(card(), nullptr);
    EXPECT_FALSE(exists());
    EXPECT_TRUE(window().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PreviewViewTest, ItGoesWithThePanel)
{
    save("one");
    showCard();
    m_controller.close();
    EXPECT_EQ(card(), nullptr);
    run();
    EXPECT_FALSE(exists());
    showCard();
    EXPECT_EQ(cardText(u"preview-text"_s), u"one"_s);
}

TEST_F(PreviewViewTest, TheRightArrowShowsItAtTheEndOfTheSearchTextAlone)
{
    save("needle");
    show();
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
    press(Qt::Key_Right);
    EXPECT_NE(card(), nullptr) << "of an empty text";
    press(Qt::Key_Escape);
    type(u"need"_s);
    settleSearch();
    press(Qt::Key_Left);
    press(Qt::Key_Right);
    EXPECT_EQ(card(), nullptr) << "it has only reached the end";
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(card(), nullptr);
    press(Qt::Key_Right);
    EXPECT_NE(card(), nullptr);
    EXPECT_EQ(text(u"clipboard-search"_s), u"need"_s);
}

TEST_F(PreviewViewTest, InTextFromRightToLeftTheArrowIsTheLeftOne)
{
    save("שלום");
    show();
    ASSERT_TRUE(waitUntil([this] { return searchHasFocus(); }));
    press(Qt::Key_Left);
    EXPECT_EQ(card(), nullptr) << "of an empty text";
    type(u"שלו"_s);
    settleSearch();
    press(Qt::Key_Right);
    EXPECT_EQ(card(), nullptr);
    press(Qt::Key_Left);
    EXPECT_EQ(card(), nullptr);
    press(Qt::Key_Left);
    EXPECT_NE(card(), nullptr);
}

TEST_F(PreviewViewTest, AClickOnItDoesNothing)
{
    save("one");
    showCard();
    QTest::mouseClick(card(), Qt::LeftButton, {}, QPoint(100, 200));
    run();
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(window().isActive());
    EXPECT_NE(card(), nullptr);
    EXPECT_THAT(m_pasteboard.writes(), testing::IsEmpty());
}

TEST_F(PreviewViewTest, FollowsTheSelection)
{
    save("older");
    save("newer");
    showCard();
    press(Qt::Key_Down);
    pass(PreviewModel::follow);
    EXPECT_EQ(cardText(u"preview-text"_s), u"older"_s);
}

// What is in it

TEST_F(PreviewViewTest, AnImageIsInTheMiddleAndItsPixelsAreThoseOfTheScreen)
{
    save(ClipPayload({.imagePNG = FakeImageConverter::png("picture")}));
    showCard();
    const QQuickItem& picture = cardDriver().item(u"preview-picture"_s);
    const QSize pixels = m_preview.picture().size;
    const qreal scale = card()->effectiveDevicePixelRatio();
    EXPECT_EQ(picture.size() * scale, QSizeF(pixels));
    EXPECT_LE(picture.width(), card()->width() - 2 * TokenMetrics().previewPadding);
    EXPECT_EQ(
        card()->grabWindow().pixelColor(
            (picture.mapToScene(QPointF(picture.width() / 2, picture.height() / 2)) * scale)
                .toPoint()),
        QColor(0x7f, 0x7f, 0x7f));
    EXPECT_EQ(cardDriver().find(u"preview-text"_s), nullptr);
}

TEST_F(PreviewViewTest, MarkupIsShownAndFollowedByNothing)
{
    const QByteArray markup = "<b>bold</b> <img src=\"http://example.org/a.png\"> &amp;";
    save(ClipPayload({.plainText = markup, .html = markup}));
    showCard();
    const QQuickItem& label = cardDriver().item(u"preview-text"_s);
    EXPECT_EQ(label.property("text").toString(), QString::fromUtf8(markup));
    EXPECT_EQ(label.property("textFormat").toInt(), int{Qt::PlainText});
}

TEST_F(PreviewViewTest, CodeHasCharactersOfOneWidthAndProseDoesNot)
{
    save("Dear Anna,\nthank you.");
    save("int main()\n{\n    return 0;\n}");
    showCard();
    const auto family = [] {
        return cardDriver().item(u"preview-text"_s).property("font").value<QFont>().family();
    };
    EXPECT_EQ(family(), Tokens().fixedFamily());
    press(Qt::Key_Down);
    pass(PreviewModel::follow);
    EXPECT_EQ(family(), QGuiApplication::font().family());
}

TEST_F(PreviewViewTest, ColumnsAreNotWrappedAndOtherTextIs)
{
    const QByteArray row = "one  two  three  " + QByteArray(200, 'x') + '\n';
    save(QByteArray(300, 'y') + " and on");
    save(row + row);
    showCard();
    const auto width = [] { return cardDriver().item(u"preview-text"_s).width(); };
    EXPECT_GT(width(), card()->width());
    press(Qt::Key_Down);
    pass(PreviewModel::follow);
    drawCard();
    EXPECT_LT(width(), card()->width());
    EXPECT_GT(cardDriver().item(u"preview-text"_s).property("lineCount").toInt(), 1);
}

TEST_F(PreviewViewTest, ALongTextScrollsByKeysAndBeginsAtItsTop)
{
    save(QByteArray("another line of prose\n").repeated(200));
    save(QByteArray("a line of prose\n").repeated(200));
    showCard();
    const auto top = [] {
        return cardDriver().item(u"preview-text-area"_s).property("contentY").toReal();
    };
    press(Qt::Key_PageDown, Qt::ShiftModifier);
    const qreal page = top();
    EXPECT_GT(page, 100);
    EXPECT_EQ(m_panel.selectedRow(), 0) << "it is not the list that moves";
    press(Qt::Key_PageDown, Qt::ShiftModifier);
    EXPECT_GT(top(), page);
    press(Qt::Key_PageUp, Qt::ShiftModifier);
    EXPECT_EQ(top(), page);
    for (int i = 0; i < 50; ++i) {
        press(Qt::Key_PageDown, Qt::ShiftModifier);
    }
    const QQuickItem& area = cardDriver().item(u"preview-text-area"_s);
    EXPECT_EQ(top(), area.property("contentHeight").toReal() - area.height());
    press(Qt::Key_Down);
    pass(PreviewModel::follow);
    EXPECT_EQ(top(), 0);
}

TEST_F(PreviewViewTest, WhatIsCutSaysSo)
{
    save(QByteArray(PreviewText::bytesAtMost + 1, 'x'));
    showCard();
    EXPECT_EQ(cardText(u"preview-note"_s), u"Only the beginning is shown."_s);
}

TEST_F(PreviewViewTest, FilesHaveTheirPathsAndWhatIsKnownOfThem)
{
    m_files.put("/home/anna/a.txt", {.kind = FileStatus::Kind::file, .bytes = 12});
    save(ClipPayload({.fileURLs = {"file:///home/anna/a.txt", "file:///gone"}}));
    m_files.gate().hold();
    showCard();
    const auto row = [](int index, const QString& name) {
        QQuickItem& file = cardDriver().item(u"preview-file-%1"_s.arg(index));
        return ViewDriver::find(name, file)->property("text").toString();
    };
    EXPECT_EQ(row(0, u"file-name"_s), u"a.txt"_s);
    EXPECT_EQ(row(0, u"file-folder"_s), u"/home/anna/"_s);
    EXPECT_EQ(row(0, u"file-status"_s), QString());
    m_files.gate().open();
    drawCard();
    EXPECT_EQ(row(0, u"file-status"_s), u"12 bytes"_s);
    EXPECT_EQ(row(1, u"file-status"_s), u"No longer there"_s);
    EXPECT_EQ(cardDriver().find(u"preview-text"_s), nullptr);
}

TEST_F(PreviewViewTest, ManyFilesAreARowEachAsFarAsTheyAreSeen)
{
    QByteArrayList urls;
    for (int i = 0; i < 10'000; ++i) {
        urls.append("file:///tmp/" + QByteArray::number(i));
    }
    save(ClipPayload({.fileURLs = urls}));
    showCard();
    EXPECT_NE(cardDriver().find(u"preview-file-0"_s), nullptr);
    EXPECT_EQ(cardDriver().find(u"preview-file-50"_s), nullptr);
    EXPECT_EQ(cardText(u"preview-note"_s), u"And 9900 more."_s);
}

TEST_F(PreviewViewTest, HostileTextIsDrawn)
{
    const QByteArrayList texts = {
        QByteArray("\xCC\x81").repeated(20'000),
        QByteArray(200'000, '\n'),
        QByteArray("\xE2\x80\xAE").repeated(3000),
        QByteArray(30'000, '\0'),
        QByteArray("\xF0\x9F\x91\xA8\xE2\x80\x8D").repeated(2000),
        QByteArray("{\t").repeated(4000),
        QByteArray("\xD7\xA9 x").repeated(3000)};
    for (const QByteArray& text : texts) {
        save(text);
    }
    showCard();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        drawCard();
        EXPECT_NE(card(), nullptr);
        press(Qt::Key_Down);
        pass(PreviewModel::follow);
    }
}

TEST_F(PreviewViewTest, AssistiveTechnologyIsToldOfIt)
{
    save("some words");
    showCard();
    QAccessibleInterface* const pane = cardDriver().accessible(u"preview-card"_s);
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->role(), QAccessible::Pane);
    EXPECT_EQ(pane->text(QAccessible::Name), u"Preview"_s);
    EXPECT_EQ(pane->text(QAccessible::Description), u"Text, 10 bytes"_s);
    EXPECT_TRUE(cardDriver().accessibleObjects().contains(u"StaticText|some words"_s));
}

} // namespace
} // namespace tessly::test
