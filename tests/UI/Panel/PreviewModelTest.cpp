#include "PreviewModel.h"

#include "AppModelFixture.h"
#include "FakeFileInspector.h"
#include "Presentation.h"
#include "QtPrinting.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

constexpr qint64 large = ClipStore::heldContent / ClipStore::usualClips + 1;

class PreviewModelTest : public AppModelFixture
{
protected:
    void open()
    {
        m_model->reload(AppModel::Debounce::no);
        run();
        m_model->setPanelPresented(true);
        run();
    }
    void close()
    {
        m_model->setPanelPresented(false);
        run();
    }
    /// The panel is open, and the preview of the newest entry is up.
    void openPreview()
    {
        open();
        m_preview.show();
        run();
        ASSERT_TRUE(m_preview.isShown());
    }
    void selectNext()
    {
        m_model->selectNext();
        run();
    }

    [[nodiscard]] QStringList files() const
    {
        QStringList lines;
        for (const QVariant& entry : m_preview.files()) {
            const auto file = entry.value<PreviewFile>();
            lines.append(file.folder + u'|' + file.name + u'|' + file.status);
        }
        return lines;
    }
    [[nodiscard]] bool isBlank() const
    {
        return m_preview.title().isEmpty() && m_preview.facts().isEmpty() &&
               m_preview.text().isEmpty() && m_preview.files().isEmpty() &&
               !m_preview.hasPicture() && m_preview.note().isEmpty();
    }

    FakeFileInspector m_files;
    PreviewModel m_preview{{*m_model, *m_store, m_converter, m_files, m_clock}};
};

// When it is shown

TEST_F(PreviewModelTest, ComesOnceTheSelectionHasRested)
{
    save("one");
    open();
    QSignalSpy shown(&m_preview, &PreviewModel::isShownChanged);
    pass(399ms);
    EXPECT_FALSE(m_preview.isShown());
    EXPECT_TRUE(isBlank()) << "nothing is fetched before";
    pass(1ms);
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_EQ(m_preview.text(), u"one"_s);
    EXPECT_EQ(shown.size(), 1);
}

TEST_F(PreviewModelTest, ANewSelectionRestsAnew)
{
    save("older");
    save("newer");
    open();
    pass(399ms);
    selectNext();
    pass(399ms);
    EXPECT_FALSE(m_preview.isShown());
    pass(1ms);
    EXPECT_EQ(m_preview.text(), u"older"_s);
}

TEST_F(PreviewModelTest, TheSameSelectionRestsOnWhateverIsListed)
{
    save("one");
    open();
    pass(300ms);
    m_model->reload(AppModel::Debounce::no);
    run();
    pass(100ms);
    EXPECT_TRUE(m_preview.isShown());
}

TEST_F(PreviewModelTest, NothingComesWhileThePanelIsClosedOrEmpty)
{
    save("one");
    m_model->reload(AppModel::Debounce::no);
    run();
    m_preview.show();
    m_preview.toggle();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
    m_model->clearHistory(true);
    run();
    open();
    m_preview.show();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
}

TEST_F(PreviewModelTest, ItIsShownAtOnceWhenItIsAskedFor)
{
    save("one");
    open();
    m_preview.show();
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_EQ(m_preview.text(), u"one"_s);
}

TEST_F(PreviewModelTest, ItsKeyShowsItAtOnceAndThenSwitchesItOffForAllOpenings)
{
    save("older");
    save("newer");
    open();
    m_preview.toggle();
    EXPECT_TRUE(m_preview.isShown());
    m_preview.toggle();
    EXPECT_FALSE(m_preview.isShown());
    selectNext();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
    close();
    open();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
    m_preview.toggle();
    EXPECT_TRUE(m_preview.isShown());
    close();
    open();
    pass(400ms);
    EXPECT_TRUE(m_preview.isShown()) << "it is on again";
}

TEST_F(PreviewModelTest, WhereItIsSwitchedOffItCanBeAskedForInOneOpening)
{
    save("older");
    save("newer");
    openPreview();
    m_preview.toggle();
    m_preview.show();
    EXPECT_TRUE(m_preview.isShown());
    selectNext();
    pass(60ms);
    EXPECT_EQ(m_preview.text(), u"older"_s);
    close();
    open();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
}

TEST_F(PreviewModelTest, DismissedItComesBackInTheNextOpeningOrWhenItIsAskedFor)
{
    save("older");
    save("newer");
    open();
    pass(400ms);
    m_preview.dismiss();
    EXPECT_FALSE(m_preview.isShown());
    selectNext();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
    m_preview.show();
    EXPECT_EQ(m_preview.text(), u"older"_s);
    m_preview.dismiss();
    close();
    open();
    pass(400ms);
    EXPECT_TRUE(m_preview.isShown());
}

TEST_F(PreviewModelTest, WhereItWouldLieOverThePanelItComesOnlyWhenItIsAskedFor)
{
    save("one");
    m_preview.setPlace(PreviewModel::Room::overPanel, {10, 10});
    open();
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
    m_preview.toggle();
    EXPECT_TRUE(m_preview.isShown());
    m_preview.dismiss();
    // As after the opening on another screen.
    close();
    open();
    m_preview.setPlace(PreviewModel::Room::besidePanel, {10, 10});
    pass(400ms);
    EXPECT_TRUE(m_preview.isShown());
}

TEST_F(PreviewModelTest, ThePlaceOfALaterOpeningStopsOneThatWasComing)
{
    save("one");
    open();
    m_preview.setPlace(PreviewModel::Room::overPanel, {10, 10});
    pass(1s);
    EXPECT_FALSE(m_preview.isShown());
}

TEST_F(PreviewModelTest, ItGoesWithThePanelAndLetsGoOfWhatItHeld)
{
    save("older");
    save(ClipPayload({.imagePNG = FakeImageConverter::png("picture")}));
    openPreview();
    ASSERT_TRUE(m_preview.hasPicture());
    QSignalSpy shown(&m_preview, &PreviewModel::isShownChanged);
    close();
    EXPECT_EQ(shown.size(), 1);
    EXPECT_TRUE(isBlank());
    EXPECT_TRUE(m_preview.picture().pixels.isNull());
    // What was dropped is wiped once, a while after the start.
    pass(1min);
    EXPECT_EQ(m_clock.pending(), 0U) << "nothing is waited for";
}

// What follows the selection

TEST_F(PreviewModelTest, FollowsTheSelectionOnceItPauses)
{
    save("oldest");
    save("older");
    save("newer");
    openPreview();
    QSignalSpy entries(&m_preview, &PreviewModel::entryChanged);
    selectNext();
    pass(59ms);
    EXPECT_EQ(m_preview.text(), u"newer"_s);
    selectNext();
    pass(59ms);
    EXPECT_EQ(m_preview.text(), u"newer"_s);
    pass(1ms);
    EXPECT_EQ(m_preview.text(), u"oldest"_s);
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_EQ(entries.size(), 1);
}

TEST_F(PreviewModelTest, WhereASearchFindsNothingItIsGoneUntilSomethingIsFound)
{
    save("one");
    openPreview();
    const auto search = [this](const QString& query) {
        m_model->setQuery(query);
        m_model->reload(AppModel::Debounce::no);
        run();
    };
    search(u"nothing has this"_s);
    EXPECT_FALSE(m_preview.isShown());
    EXPECT_TRUE(isBlank());
    search(u"on"_s);
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_EQ(m_preview.text(), u"one"_s);
}

TEST_F(PreviewModelTest, WhenTheEntryIsDeletedTheNextOneIsShown)
{
    save("older");
    save("newer");
    openPreview();
    m_model->deleteSelected();
    run();
    pass(60ms);
    EXPECT_EQ(m_preview.text(), u"older"_s);
    m_model->deleteSelected();
    run();
    EXPECT_FALSE(m_preview.isShown());
}

TEST_F(PreviewModelTest, OfManySelectionsTheLastIsFetchedAndNoneAtTheSameTime)
{
    for (int i = 0; i < 4; ++i) {
        save(ClipPayload({.imagePNG = FakeImageConverter::png(QByteArray::number(i))}));
    }
    m_converter.gate().hold();
    openPreview();
    for (int i = 0; i < 3; ++i) {
        selectNext();
        pass(60ms);
    }
    EXPECT_THAT(m_converter.scalings(), ElementsAre(FakeImageConverter::png("3")));
    m_converter.gate().releaseOne();
    run();
    EXPECT_FALSE(m_preview.hasPicture()) << "of another entry";
    EXPECT_THAT(
        m_converter.scalings(),
        ElementsAre(FakeImageConverter::png("3"), FakeImageConverter::png("0")));
    m_converter.gate().open();
    run();
    EXPECT_TRUE(m_preview.hasPicture());
}

TEST_F(PreviewModelTest, WhatArrivesAfterItWasClosedIsDropped)
{
    save("older");
    save(ClipPayload({.imagePNG = FakeImageConverter::png("picture")}));
    m_converter.gate().hold();
    openPreview();
    m_preview.dismiss();
    m_preview.show();
    m_preview.dismiss();
    m_converter.gate().open();
    run();
    EXPECT_TRUE(isBlank());
    m_preview.show();
    run();
    EXPECT_TRUE(m_preview.hasPicture());
}

TEST_F(PreviewModelTest, NothingHappensOnceItHasGone)
{
    save(ClipPayload({.imagePNG = FakeImageConverter::png("picture")}));
    m_converter.gate().hold();
    open();
    {
        PreviewModel other({*m_model, *m_store, m_converter, m_files, m_clock});
        other.show();
        m_model->setPanelPresented(false);
        open();
        other.show();
    }
    m_converter.gate().open();
    pass(1s);
    EXPECT_TRUE(m_preview.isShown());
}

// What is in it

TEST_F(PreviewModelTest, ATextIsShownWithItsSize)
{
    save("first line\nsecond line");
    openPreview();
    EXPECT_EQ(m_preview.title(), u"Text"_s);
    EXPECT_EQ(m_preview.facts(), u"22 bytes"_s);
    EXPECT_EQ(m_preview.text(), u"first line\nsecond line"_s);
    EXPECT_EQ(m_preview.note(), QString());
    EXPECT_FALSE(m_preview.isMonospaced());
}

TEST_F(PreviewModelTest, OfALargeTextTheBeginningIsFetchedAndShown)
{
    const Clip clip = save(QByteArray(large, 'x'));
    open();
    m_preview.show();
    EXPECT_TRUE(m_preview.isShown());
    EXPECT_EQ(m_preview.title(), u"Text"_s);
    EXPECT_EQ(m_preview.facts(), QString()) << "not fetched yet";
    run();
    EXPECT_EQ(m_preview.text(), QString(PreviewText::bytesAtMost, u'x'));
    EXPECT_EQ(m_preview.note(), u"Only the beginning is shown."_s);
    EXPECT_EQ(m_preview.facts(), byteCount(large)) << "of the whole";
}

TEST_F(PreviewModelTest, ALargeTextIsCutBetweenCharacters)
{
    // Of which the second of its two units would be the last one shown.
    save("x" + QByteArray("é").repeated(large));
    openPreview();
    EXPECT_EQ(m_preview.text(), u'x' + QString((PreviewText::bytesAtMost - 1) / 2, u'é'));
    EXPECT_EQ(m_preview.note(), u"Only the beginning is shown."_s);
}

TEST_F(PreviewModelTest, OfFormattedTextThePlainTextIsShown)
{
    save(ClipPayload({.plainText = "bold", .rtf = "{\\rtf1 \\b bold}", .html = "<b>bold</b>"}));
    openPreview();
    EXPECT_EQ(m_preview.title(), u"Rich Text"_s);
    EXPECT_EQ(m_preview.text(), u"bold"_s);
}

TEST_F(PreviewModelTest, OfHTMLAloneItsTextIsShown)
{
    const QByteArray html = "<h1>Title</h1><p>Some <b>bold</b> words";
    save(ClipPayload({.html = html}));
    open();
    m_preview.show();
    EXPECT_EQ(m_preview.title(), u"Rich Text"_s);
    EXPECT_EQ(m_preview.text(), QString()) << "not made on this thread";
    run();
    EXPECT_EQ(m_preview.text(), u"Title\n\nSome bold words"_s);
    EXPECT_EQ(m_preview.facts(), byteCount(html.size()));
    EXPECT_EQ(m_preview.note(), QString());
    close();
    save(ClipPayload({.html = "<p>early</p><style>" + QByteArray(large, 'x') + "</style>late"}));
    openPreview();
    EXPECT_EQ(m_preview.text(), u"early"_s);
    EXPECT_EQ(m_preview.note(), u"Only the beginning is shown."_s);
}

TEST_F(PreviewModelTest, WhereThereIsNoTextAtAllThatIsSaid)
{
    for (const ClipPayload& payload :
         {ClipPayload({.html = "<script>alert(1)</script>"}),
          ClipPayload({.rtf = "{\\rtf1 \\b bold}"})}) {
        save(payload);
        openPreview();
        EXPECT_EQ(m_preview.text(), QString());
        EXPECT_EQ(m_preview.facts(), byteCount(payload.byteCount()));
        EXPECT_EQ(m_preview.note(), u"This entry has no plain text."_s);
        close();
    }
}

TEST_F(PreviewModelTest, WhereTheTextOfHTMLBeginsTooLateThatIsSaid)
{
    save(ClipPayload(
        {.html = "<style>" + QByteArray(ClipPreview::htmlAtMost, 'x') + "</style>late"}));
    openPreview();
    EXPECT_EQ(m_preview.text(), QString());
    EXPECT_EQ(m_preview.note(), u"There is no text at its beginning."_s);
}

TEST_F(PreviewModelTest, AnImageIsScaledToThePlaceAndShownWithItsSize)
{
    m_preview.setPlace(PreviewModel::Room::besidePanel, {30, 20});
    const QByteArray png = FakeImageConverter::png("picture");
    save(ClipPayload({.imagePNG = png}));
    m_converter.gate().hold();
    openPreview();
    EXPECT_EQ(m_preview.title(), u"Image"_s);
    EXPECT_EQ(m_preview.facts(), byteCount(png.size()));
    m_converter.gate().open();
    run();
    EXPECT_EQ(m_preview.facts(), u"60 × 40 pixels • "_s + byteCount(png.size()));
    EXPECT_EQ(m_preview.picture().size, QSize(30, 20));
    EXPECT_EQ(m_preview.note(), QString());
}

TEST_F(PreviewModelTest, AnImageThatCannotBeDecodedIsSaid)
{
    save(ClipPayload({.imagePNG = "GIF89a"}));
    openPreview();
    EXPECT_FALSE(m_preview.hasPicture());
    EXPECT_EQ(m_preview.facts(), u"6 bytes"_s);
    EXPECT_EQ(m_preview.note(), u"This image cannot be shown."_s);
}

TEST_F(PreviewModelTest, FilesAreShownAtOnceAndTheirStatusesWhenTheyAreKnown)
{
    m_files.put("/home/anna/a b.txt", {.kind = FileStatus::Kind::file, .bytes = 1200});
    m_files.put("/home/anna/Pictures", {.kind = FileStatus::Kind::folder});
    m_files.put("/net/far", {.kind = FileStatus::Kind::unknown});
    m_files.gate().hold();
    save(ClipPayload(
        {.fileURLs = {
             "file:///home/anna/a%20b.txt", "file:///home/anna/Pictures/", "file:///gone",
             "file:///net/far"}}));
    openPreview();
    EXPECT_EQ(m_preview.title(), u"Files"_s);
    EXPECT_EQ(m_preview.facts(), u"4 files"_s);
    EXPECT_EQ(
        files(),
        (QStringList{
            u"/home/anna/|a b.txt|"_s, u"/home/anna/|Pictures|"_s, u"/|gone|"_s, u"/net/|far|"_s}));
    QSignalSpy entries(&m_preview, &PreviewModel::entryChanged);
    m_files.gate().open();
    run();
    EXPECT_EQ(
        files(), (QStringList{
                     u"/home/anna/|a b.txt|1 KB"_s, u"/home/anna/|Pictures|Folder"_s,
                     u"/|gone|No longer there"_s, u"/net/|far|Cannot be reached"_s}));
    EXPECT_TRUE(m_preview.files().at(2).value<PreviewFile>().isMissing);
    EXPECT_EQ(entries.size(), 0);
}

TEST_F(PreviewModelTest, AFileSystemThatHangsHoldsUpNoOtherEntry)
{
    save("older");
    save(ClipPayload({.fileURLs = {"file:///net/far"}}));
    m_files.gate().hold();
    openPreview();
    selectNext();
    pass(60ms);
    EXPECT_EQ(m_preview.text(), u"older"_s);
    m_files.gate().open();
    run();
    EXPECT_EQ(m_preview.text(), u"older"_s);
    EXPECT_THAT(m_preview.files(), IsEmpty());
}

TEST_F(PreviewModelTest, WhatIsFoundOutOfOtherFilesTooLateIsDropped)
{
    m_files.put("/net/far", {.kind = FileStatus::Kind::folder});
    save(ClipPayload({.fileURLs = {"file:///gone"}}));
    save(ClipPayload({.fileURLs = {"file:///net/far"}}));
    m_files.gate().hold();
    openPreview();
    selectNext();
    pass(60ms);
    ASSERT_TRUE(m_files.gate().releaseOne());
    run();
    EXPECT_EQ(files(), QStringList{u"/|gone|"_s});
    m_files.gate().open();
    run();
    EXPECT_EQ(files(), QStringList{u"/|gone|No longer there"_s});
}

TEST_F(PreviewModelTest, OfManyFilesTheFirstAreShown)
{
    QByteArrayList urls;
    for (int i = 0; i < 10'000; ++i) {
        urls.append("file:///tmp/" + QByteArray::number(i));
    }
    save(ClipPayload({.fileURLs = urls}));
    openPreview();
    EXPECT_THAT(m_preview.files(), SizeIs(100));
    EXPECT_EQ(m_preview.facts(), u"10000 files"_s);
    EXPECT_EQ(m_preview.note(), u"And 9900 more."_s);
    ASSERT_THAT(m_files.questions(), SizeIs(1));
    EXPECT_THAT(m_files.questions().front(), SizeIs(100));
}

TEST_F(PreviewModelTest, OfMoreFilesThanAreCountedTheFirstAreShown)
{
    QByteArrayList urls;
    for (int i = 0; i < 100'000; ++i) {
        urls.append("file:///tmp/some%20folder/" + QByteArray::number(i));
    }
    save(ClipPayload({.fileURLs = urls}));
    openPreview();
    EXPECT_THAT(m_preview.files(), SizeIs(100));
    EXPECT_THAT(m_preview.facts().toStdString(), testing::MatchesRegex("More than [0-9]{5} files"));
    EXPECT_EQ(m_preview.note(), u"Only the beginning is shown."_s);
}

TEST_F(PreviewModelTest, NamesOfFilesAreLinesLikeAnyOther)
{
    save(ClipPayload({.fileURLs = {"file:///a%0Ab%E2%80%AEtxt.exe", "file:///%FF"}}));
    openPreview();
    EXPECT_EQ(files(), (QStringList{u"/|a btxt.exe|No longer there"_s, u"/|�|No longer there"_s}));
    EXPECT_EQ(m_files.questions().front().at(1), "/\xFF") << "as the file system has it";
}

TEST_F(PreviewModelTest, AnEntryThatWasDeletedBehindTheListIsSaid)
{
    save(QByteArray(large, 'x'));
    open();
    executeSQL("DELETE FROM clips");
    m_preview.show();
    run();
    EXPECT_EQ(m_preview.note(), u"This entry is no longer in the history."_s);
    EXPECT_TRUE(m_preview.text().isEmpty());
}

TEST_F(PreviewModelTest, AHistoryThatCannotBeReadIsSaidInThePreviewAlone)
{
    save(QByteArray(large, 'x'));
    open();
    breakStore();
    m_preview.show();
    run();
    EXPECT_TRUE(m_preview.note().startsWith(u"Clipboard database operation failed: "_s));
    EXPECT_EQ(message(), QString());
}

} // namespace
} // namespace tessly::test
