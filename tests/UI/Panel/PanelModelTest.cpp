#include "PanelModel.h"

#include "AppModelFixture.h"
#include "FakeFileInspector.h"
#include "QtPrinting.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;

namespace tessly::test {
namespace {

class PanelModelTest : public AppModelFixture
{
protected:
    PanelModelTest()
        : m_panel(std::make_unique<PanelModel>(
              PanelModel::Dependencies{*m_model, m_preview, m_pasteboard, m_clock}))
        , m_tester(m_panel->clips(), QAbstractItemModelTester::FailureReportingMode::Fatal)
    {
        m_model->closePanel = [this] { ++m_closings; };
    }

    void reload()
    {
        m_model->reload(AppModel::Debounce::no);
        run();
    }

    [[nodiscard]] QStringList previews() const
    {
        QStringList previews;
        const QAbstractItemModel& rows = *m_panel->clips();
        for (int row = 0; row < rows.rowCount(); ++row) {
            previews.append(text(row, ClipListModel::previewRole));
        }
        return previews;
    }

    [[nodiscard]] QString text(int row, int role) const
    {
        const QAbstractItemModel& rows = *m_panel->clips();
        return rows.data(rows.index(row, 0), role).toString();
    }

    /// The clip's of a row; empty if there is no such row.
    [[nodiscard]] QString id(int row) const { return text(row, ClipListModel::clipIDRole); }

    /// What the search field was given by a paste.
    [[nodiscard]] QString pastedText(const QByteArray& clipboard)
    {
        QSignalSpy pasted(m_panel.get(), &PanelModel::queryTextPasted);
        m_pasteboard.copyText(clipboard);
        m_panel->pasteIntoQuery();
        run();
        EXPECT_LE(pasted.size(), 1);
        return pasted.isEmpty() ? QString() : pasted.front().front().toString();
    }

    FakeFileInspector m_files;
    PreviewModel m_preview{{*m_model, *m_store, m_converter, m_files, m_clock}};
    std::unique_ptr<PanelModel> m_panel;
    QAbstractItemModelTester m_tester;
    int m_closings = 0;
};

// What it shows

TEST_F(PanelModelTest, ShowsWhatTheModelHeldBeforeItCame)
{
    save("one");
    reload();
    m_panel = std::make_unique<PanelModel>(
        PanelModel::Dependencies{*m_model, m_preview, m_pasteboard, m_clock});
    EXPECT_EQ(previews(), QStringList{u"one"_s});
    EXPECT_EQ(m_panel->selectedRow(), 0);
    EXPECT_FALSE(m_panel->isEmpty());
}

TEST_F(PanelModelTest, RowsFollowTheModel)
{
    QSignalSpy empty(m_panel.get(), &PanelModel::isEmptyChanged);
    EXPECT_TRUE(m_panel->isEmpty());
    save("older");
    save("newer");
    reload();
    EXPECT_EQ(previews(), (QStringList{u"newer"_s, u"older"_s}));
    EXPECT_FALSE(m_panel->isEmpty());
    m_model->clearHistory(true);
    run();
    EXPECT_TRUE(m_panel->isEmpty());
    EXPECT_EQ(empty.size(), 2);
}

TEST_F(PanelModelTest, WhereTheListIsFilteredNoRowHasAKeyOfItsPosition)
{
    m_settings.setDirectPasteShortcuts(true);
    save("alpha");
    save("beta");
    reload();
    const auto label = [this](int row) { return text(row, ClipListModel::shortcutLabelRole); };
    EXPECT_EQ(label(1), u"⌥⇧2"_s);
    m_panel->setQuery(u"alpha"_s);
    EXPECT_EQ(label(0), QString()) << "at once";
    pass(120ms);
    ASSERT_EQ(previews(), QStringList{u"alpha"_s});
    EXPECT_EQ(label(0), QString());
    m_panel->setQuery({});
    EXPECT_EQ(label(0), QString()) << "the rows are still those of before";
    pass(120ms);
    EXPECT_EQ(label(1), u"⌥⇧2"_s);
    m_panel->setQuery(u"  "_s);
    pass(120ms);
    EXPECT_EQ(label(1), u"⌥⇧2"_s) << "blanks filter nothing";
    m_panel->chooseKind(u"text"_s);
    run();
    EXPECT_EQ(label(1), QString());
    m_panel->chooseKind({});
    run();
    EXPECT_EQ(label(1), u"⌥⇧2"_s);
}

TEST_F(PanelModelTest, MovingTheSelectionStopsAtTheEnds)
{
    m_panel->moveSelection(1);
    EXPECT_EQ(m_panel->selectedRow(), -1) << "of an empty list";
    for (int i = 0; i < 5; ++i) {
        save("entry " + QByteArray::number(i));
    }
    reload();
    m_panel->moveSelection(3);
    EXPECT_EQ(m_panel->selectedRow(), 3);
    m_panel->moveSelection(3);
    EXPECT_EQ(m_panel->selectedRow(), 4);
    m_panel->moveSelection(-10);
    EXPECT_EQ(m_panel->selectedRow(), 0);
}

TEST_F(PanelModelTest, AQueryIsCutBetweenCharacters)
{
    m_panel->setQuery(QString(1000, u'x'));
    EXPECT_EQ(m_model->query(), QString(1000, u'x'));
    m_panel->setQuery(QString(40'000, u'y'));
    EXPECT_EQ(m_model->query(), QString(1000, u'y'));
    const QString pair = u"🎉"_s;
    m_panel->setQuery(QString(999, u'z') + pair);
    EXPECT_EQ(m_model->query(), QString(999, u'z'));
}

TEST_F(PanelModelTest, TheSelectedRowIsThatOfTheSelectedClip)
{
    EXPECT_EQ(m_panel->selectedRow(), -1);
    const Clip older = save("older");
    save("newer");
    reload();
    EXPECT_EQ(m_panel->selectedRow(), 0);
    QSignalSpy selected(m_panel.get(), &PanelModel::selectionChanged);
    m_model->setSelectedID(older.id);
    EXPECT_EQ(m_panel->selectedRow(), 1);
    EXPECT_EQ(selected.size(), 1);
    save("newest");
    reload();
    EXPECT_EQ(m_panel->selectedRow(), 2) << "it follows its clip";
    EXPECT_EQ(selected.size(), 1) << "which is the same still";
    m_model->setSelectedID(std::nullopt);
    EXPECT_EQ(m_panel->selectedRow(), -1) << "nothing selected selects nothing";
}

TEST_F(PanelModelTest, WhoeverHearsOfANewSelectionFindsItsRow)
{
    const Clip older = save("older");
    reload();
    QObject::connect(m_panel.get(), &PanelModel::selectedRowChanged, m_panel.get(), [this] {
        EXPECT_LT(m_panel->selectedRow(), m_panel->clips()->rowCount());
    });
    m_model->deleteSelected();
    run();
    EXPECT_EQ(m_panel->selectedRow(), -1);
}

TEST_F(PanelModelTest, OffersAllKindsInTheirOrder)
{
    QStringList filters;
    for (const QVariant& entry : m_panel->filters()) {
        const auto filter = entry.value<PanelFilter>();
        filters.append(filter.kind + u'|' + filter.title + u'|' + filter.symbol);
    }
    EXPECT_EQ(
        filters, (QStringList{
                     u"|All|square.stack.3d.up"_s, u"text|Text|text.alignleft"_s,
                     u"richText|Rich Text|textformat"_s, u"image|Image|photo"_s,
                     u"files|Files|doc.on.doc"_s, u"link|Link|link"_s}));
}

TEST_F(PanelModelTest, HintsAtThreeKeys)
{
    QStringList hints;
    for (const QVariant& entry : m_panel->hints()) {
        const auto hint = entry.value<PanelHint>();
        hints.append(hint.keys.join(u' ') + u'|' + hint.keyNames + u'|' + hint.title);
    }
    EXPECT_EQ(
        hints,
        (QStringList{u"↩|Return|paste"_s, u"⇧ ↩|Shift+Return|plain text"_s, u"⌘ P|Ctrl+P|pin"_s}));
}

TEST_F(PanelModelTest, CountsTheWholeHistoryWhateverIsListed)
{
    QSignalSpy counted(m_panel.get(), &PanelModel::itemCountChanged);
    EXPECT_EQ(m_panel->itemCount(), u"0 items"_s);
    save("one");
    save("two");
    m_model->setQuery(u"one"_s);
    reload();
    EXPECT_THAT(previews(), SizeIs(1));
    EXPECT_EQ(m_panel->itemCount(), u"2 items"_s);
    EXPECT_EQ(counted.size(), 1);
}

TEST_F(PanelModelTest, KeysStandOnTheRowsAsTheSettingSays)
{
    m_settings.setDirectPasteShortcuts(true);
    save("one");
    reload();
    EXPECT_EQ(text(0, ClipListModel::shortcutLabelRole), u"⌥⇧1"_s);
    m_settings.setDirectPasteShortcuts(false);
    EXPECT_EQ(text(0, ClipListModel::shortcutLabelRole), QString());
    m_settings.setDirectPasteShortcuts(true);
    EXPECT_EQ(text(0, ClipListModel::shortcutLabelRole), u"⌥⇧1"_s);
}

TEST_F(PanelModelTest, TellsTheBanner)
{
    QSignalSpy changed(m_panel.get(), &PanelModel::bannerChanged);
    EXPECT_FALSE(m_panel->hasBanner());
    EXPECT_EQ(m_panel->bannerMessage(), QString());
    const std::pair<AppModel::BannerKind, QString> kinds[] = {
        {AppModel::BannerKind::information, u"information"_s},
        {AppModel::BannerKind::warning, u"warning"_s},
        {AppModel::BannerKind::error, u"error"_s},
    };
    for (const auto& [kind, name] : kinds) {
        m_model->showBanner(u"News."_s, kind);
        EXPECT_TRUE(m_panel->hasBanner());
        EXPECT_EQ(m_panel->bannerMessage(), u"News."_s);
        EXPECT_EQ(m_panel->bannerKind(), name);
    }
    EXPECT_EQ(changed.size(), 3);
    m_panel->dismissBanner();
    EXPECT_FALSE(m_panel->hasBanner());
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(PanelModelTest, TellsAgesAnewAtEachOpening)
{
    save("one");
    reload();
    pass(10min);
    EXPECT_EQ(text(0, ClipListModel::metadataRole), u"Text • now"_s);
    m_model->setPanelPresented(true);
    EXPECT_EQ(text(0, ClipListModel::metadataRole), u"Text • 10 minutes ago"_s);
}

TEST_F(PanelModelTest, TellsAgesAnewWhileItIsUpAndRestsOtherwise)
{
    save("one");
    reload();
    const std::size_t resting = m_clock.pending();
    m_model->setPanelPresented(true);
    pass(30s);
    EXPECT_EQ(text(0, ClipListModel::metadataRole), u"Text • 30 seconds ago"_s);
    m_model->setPanelPresented(false);
    EXPECT_EQ(m_clock.pending(), resting);
}

TEST_F(PanelModelTest, TellsWhetherItIsUp)
{
    QSignalSpy presented(m_panel.get(), &PanelModel::isPresentedChanged);
    EXPECT_FALSE(m_panel->isPresented());
    m_model->setPanelPresented(true);
    EXPECT_TRUE(m_panel->isPresented());
    m_model->setPanelPresented(false);
    EXPECT_EQ(presented.size(), 2);
}

// What it does

TEST_F(PanelModelTest, TypingSearchesAfterAPause)
{
    save("alpha");
    save("beta");
    reload();
    QSignalSpy changed(m_panel.get(), &PanelModel::queryChanged);
    m_panel->setQuery(u"alp"_s);
    EXPECT_EQ(m_panel->query(), u"alp"_s);
    EXPECT_EQ(changed.size(), 1);
    pass(119ms);
    EXPECT_EQ(previews(), (QStringList{u"beta"_s, u"alpha"_s}));
    pass(1ms);
    EXPECT_EQ(previews(), QStringList{u"alpha"_s});
}

TEST_F(PanelModelTest, ChoosingAKindFiltersAtOnce)
{
    save("plain");
    save("https://example.org/");
    reload();
    QSignalSpy changed(m_panel.get(), &PanelModel::selectedKindChanged);
    m_panel->chooseKind(u"link"_s);
    run();
    EXPECT_EQ(m_panel->selectedKind(), u"link"_s);
    EXPECT_EQ(previews(), QStringList{u"https://example.org/"_s});
    m_panel->chooseKind({});
    run();
    EXPECT_EQ(m_panel->selectedKind(), QString());
    EXPECT_THAT(previews(), SizeIs(2));
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(PanelModelTest, ChoosingTheSameKindReloadsAllTheSame)
{
    QSignalSpy changed(m_panel.get(), &PanelModel::selectedKindChanged);
    save("new");
    m_panel->chooseKind({});
    run();
    EXPECT_EQ(previews(), QStringList{u"new"_s});
    EXPECT_EQ(changed.size(), 0);
}

TEST_F(PanelModelTest, ThePointerSelects)
{
    save("older");
    save("newer");
    reload();
    m_panel->selectClip(id(1));
    EXPECT_EQ(m_panel->selectedRow(), 1);
    m_panel->selectClip(QUuid::createUuid().toString(QUuid::WithoutBraces));
    m_panel->selectClip({});
    EXPECT_EQ(m_panel->selectedRow(), 1) << "there are no such clips";
    EXPECT_EQ(m_closings, 0);
}

TEST_F(PanelModelTest, AClickPastesIntoTheTarget)
{
    const auto editor = std::make_shared<FakeRunningApplication>(u"org.example.editor"_s);
    m_model->setCurrentTargetApplication(editor);
    save(ClipPayload({.plainText = "older", .rtf = "{rtf}"}));
    save("newer");
    reload();
    m_panel->activateClip(id(1));
    EXPECT_EQ(m_panel->selectedRow(), 1);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().rtf, "{rtf}");
    EXPECT_GE(editor->activations(), 1);
    EXPECT_EQ(m_closings, 1);
    m_panel->activateClip({});
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1)) << "there is no such clip";
}

TEST_F(PanelModelTest, CopiesARowAsItIsOrAsPlainText)
{
    save(ClipPayload({.plainText = "older", .rtf = "{rtf}"}));
    save("newer");
    reload();
    m_panel->copyClip(id(1), false);
    m_panel->copyClip(id(1), true);
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().rtf, "{rtf}");
    EXPECT_EQ(m_pasteboard.writes()[1].front().rtf, std::nullopt);
    EXPECT_EQ(m_panel->selectedRow(), 1);
}

TEST_F(PanelModelTest, PinsARowWithoutSelectingIt)
{
    save("older");
    save("newer");
    reload();
    m_panel->togglePinOfClip(id(1));
    run();
    EXPECT_EQ(previews(), (QStringList{u"older"_s, u"newer"_s}));
    EXPECT_EQ(m_panel->selectedRow(), 1) << "the selection is still the newer one";
    m_panel->togglePinOfClip(id(0));
    run();
    EXPECT_EQ(previews(), (QStringList{u"newer"_s, u"older"_s}));
}

TEST_F(PanelModelTest, DeletesARow)
{
    save("older");
    save("newer");
    reload();
    const QString older = id(1);
    m_panel->deleteClip(older);
    run();
    EXPECT_EQ(previews(), QStringList{u"newer"_s});
    m_panel->deleteClip(older);
    m_panel->togglePinOfClip(older);
    m_panel->deleteClip({});
    run();
    EXPECT_THAT(previews(), SizeIs(1));
}

TEST_F(PanelModelTest, PausesAndResumesRecordingAndSaysSo)
{
    QSignalSpy paused(m_panel.get(), &PanelModel::isPausedChanged);
    EXPECT_FALSE(m_panel->isPaused());
    m_panel->togglePaused();
    EXPECT_TRUE(m_panel->isPaused());
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::information);
    m_panel->togglePaused();
    EXPECT_FALSE(m_panel->isPaused());
    EXPECT_EQ(message(), u"Clipboard recording resumed."_s);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::information);
    EXPECT_EQ(paused.size(), 2);
}

TEST_F(PanelModelTest, ClosesThePanelBeforeItAsksForTheSettings)
{
    int closingsAtRequest = -1;
    QObject::connect(m_panel.get(), &PanelModel::settingsRequested, m_panel.get(), [&] {
        closingsAtRequest = m_closings;
    });
    m_panel->openSettings();
    EXPECT_EQ(closingsAtRequest, 1);
    m_model->closePanel = nullptr;
    m_panel->openSettings();
    EXPECT_EQ(m_closings, 1);
}

// The search field and the clipboard

TEST_F(PanelModelTest, PastesTheFirstLineOfTheClipboard)
{
    EXPECT_EQ(pastedText("word"), u"word"_s);
    EXPECT_EQ(pastedText("\n  first line \r\nsecond"), u"first line "_s);
    EXPECT_EQ(pastedText("tab\there"), u"tab here"_s);
    EXPECT_EQ(pastedText("one\xE2\x80\xA8two"), u"one"_s) << "a line separator";
    EXPECT_EQ(pastedText(" \n \t "), QString());
}

TEST_F(PanelModelTest, PastesNoMoreThanASearchNeeds)
{
    EXPECT_EQ(pastedText(QByteArray(5000, 'x')).size(), PanelModel::pasteLength);
    // A character of two units across the limit.
    const QByteArray party = "\xF0\x9F\x8E\x89";
    const QString text = pastedText('x' + party.repeated(400));
    EXPECT_EQ(text.size(), PanelModel::pasteLength - 1);
    EXPECT_TRUE(text.isValidUtf16());
}

TEST_F(PanelModelTest, ReadsNothingButASmallText)
{
    EXPECT_EQ(pastedText("word"), u"word"_s);
    EXPECT_THAT(
        m_pasteboard.requests(),
        ElementsAre(FakePasteboard::Request{
            FakePasteboard::Request::What::flavour, m_pasteboard.changeCount(), Flavour::plainText,
            PanelModel::pasteByteLimit}));
    EXPECT_EQ(
        pastedText(QByteArray(static_cast<qsizetype>(PanelModel::pasteByteLimit) + 1, 'x')),
        QString());
}

TEST_F(PanelModelTest, AClipboardWhoseOwnerHangsPastesNothingAndHoldsNothingUp)
{
    QSignalSpy pasted(m_panel.get(), &PanelModel::queryTextPasted);
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("late");
    m_panel->pasteIntoQuery();
    run();
    EXPECT_EQ(pasted.size(), 0);
    m_pasteboard.gate().open();
    run();
    EXPECT_EQ(pasted.size(), 1);
}

TEST_F(PanelModelTest, APasteThatComesAfterThePanelClosedIsDropped)
{
    m_model->setPanelPresented(true);
    QSignalSpy pasted(m_panel.get(), &PanelModel::queryTextPasted);
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("late");
    m_panel->pasteIntoQuery();
    m_model->setPanelPresented(false);
    m_model->setPanelPresented(true);
    m_pasteboard.gate().open();
    run();
    EXPECT_EQ(pasted.size(), 0);
}

TEST_F(PanelModelTest, OfTwoPastesTheLaterCounts)
{
    QSignalSpy pasted(m_panel.get(), &PanelModel::queryTextPasted);
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    m_panel->pasteIntoQuery();
    m_panel->pasteIntoQuery();
    m_pasteboard.gate().open();
    run();
    EXPECT_EQ(pasted.size(), 1);
}

TEST_F(PanelModelTest, MayGoWhileAPasteIsUnderWay)
{
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("late");
    m_panel->pasteIntoQuery();
    EXPECT_EQ(m_pasteboard.gate().waiting(), 1U);
    m_panel.reset();
    m_pasteboard.gate().open();
    run();
    EXPECT_EQ(m_model->query(), QString());
}

TEST_F(PanelModelTest, CopiesFromTheSearchFieldAsItsOwn)
{
    EXPECT_TRUE(m_panel->copyQueryText(u"wörd"_s));
    EXPECT_TRUE(m_pasteboard.isOwn());
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, u"wörd"_s.toUtf8());
    EXPECT_FALSE(m_panel->copyQueryText({}));
    m_pasteboard.refuseWrites();
    EXPECT_FALSE(m_panel->copyQueryText(u"word"_s));
}

} // namespace
} // namespace tessly::test
