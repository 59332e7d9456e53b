#include "AppModelFixture.h"

#include "PasteboardItems.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using BannerKind = AppModel::BannerKind;
using PasteStyle = AppModel::PasteStyle;

namespace {

constexpr qint64 large = ClipStore::heldContent / ClipStore::usualClips + 1;

/// A picture and a text that the list does not hold, and a text that it does, the newest first; an
/// editor in front.
class AppModelContentTest : public AppModelFixture
{
protected:
    AppModelContentTest()
    {
        save("small");
        save(m_text);
        save(m_picture);
        m_model->reload(AppModel::Debounce::no);
        run();
        pass(1min);
        m_workspace.setFrontmost(m_editor);
        m_model->closePanel = [this] { ++m_panelCloses; };
    }

    [[nodiscard]] const Clip& clip(std::size_t index) const { return m_model->clips().at(index); }
    [[nodiscard]] ActionCompletion completion()
    {
        return [this](const ActionOutcome& outcome) { m_outcomes.push_back(outcome); };
    }
    void expectFailure(ActionOutcome::Case resultCase, const QString& text)
    {
        EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
        EXPECT_THAT(m_keys.pastes(), IsEmpty());
        EXPECT_TRUE(message().startsWith(text)) << message().toStdString();
        EXPECT_EQ(bannerKind(), BannerKind::error);
        ASSERT_THAT(m_outcomes, SizeIs(1));
        EXPECT_EQ(m_outcomes.front(), (ActionOutcome{resultCase, message()}));
    }

    const ClipPayload m_picture{{.imagePNG = QByteArray(large, 'p')}};
    const ClipPayload m_text{{.plainText = QByteArray(large, 't'), .html = "<p>t"}};
    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s);
    int m_panelCloses = 0;
    std::vector<ActionOutcome> m_outcomes;
};

} // namespace

TEST_F(AppModelContentTest, TheListHoldsWhatIsSmall)
{
    ASSERT_THAT(m_model->clips(), SizeIs(3));
    EXPECT_EQ(clip(0).payload.held(), nullptr);
    EXPECT_EQ(clip(1).payload.held(), nullptr);
    EXPECT_NE(clip(2).payload.held(), nullptr);
}

TEST_F(AppModelContentTest, APasteFetchesWhatTheListDoesNotHold)
{
    m_model->paste(clip(0), PasteStyle::original, m_editor, completion());
    settle();
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty()) << "the store has not answered yet";
    run();
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(m_picture));
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_editor));
    EXPECT_THAT(m_outcomes, ElementsAre(ActionOutcome()));
    EXPECT_EQ(clip(0).payload.held(), nullptr) << "it is fetched for the paste alone";
}

TEST_F(AppModelContentTest, ACompletedPasteOfItIsRecorded)
{
    m_settings.setMoveUsedItemsToTop(true);
    m_model->paste(clip(1), PasteStyle::original, m_editor);
    run();
    pass(60ms);
    EXPECT_EQ(clip(0).payload, ListedPayload(m_text));
}

TEST_F(AppModelContentTest, APasteAsPlainTextTakesTheTextOfIt)
{
    m_model->paste(clip(1), PasteStyle::plainTextOnly, m_editor);
    run();
    EXPECT_EQ(m_pasteboard.ownItems(), plainTextItems(m_text));
}

TEST_F(AppModelContentTest, APositionsKeyFetchesItToo)
{
    m_model->pasteGlobalPosition(2);
    run();
    pass(60ms);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(m_text));
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelContentTest, CopyingFetchesItToo)
{
    m_model->copy(clip(0), PasteStyle::original, completion());
    run();
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(m_picture));
    EXPECT_EQ(message(), u"Copied to the clipboard."_s);
    EXPECT_EQ(m_panelCloses, 1);
    EXPECT_THAT(m_outcomes, ElementsAre(ActionOutcome()));
}

TEST_F(AppModelContentTest, PastesKeepTheirOrderWhateverHasToBeFetched)
{
    m_keys.setPasteboard(&m_pasteboard);
    for (const std::size_t index : {0U, 2U, 1U}) {
        m_model->paste(clip(index), PasteStyle::original, m_editor);
    }
    for (int i = 0; i < 3; ++i) {
        run();
        pass(60ms);
        m_pasteboard.fetch();
        pass(60ms);
    }
    EXPECT_EQ(
        m_pasteboard.writes(),
        (std::vector{
            pasteboardItems(m_picture), pasteboardItems(ClipPayload({.plainText = "small"})),
            pasteboardItems(m_text)}));
    EXPECT_THAT(m_keys.pastes(), SizeIs(3));
}

TEST_F(AppModelContentTest, WhatIsCopiedWhileItIsFetchedIsRecorded)
{
    m_model->clipboardMonitor().start();
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    settle();
    m_pasteboard.copyText("just copied");
    run();
    pass(60ms);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(m_picture));
    EXPECT_EQ(clip(0).payload, ListedPayload(ClipPayload({.plainText = "just copied"})));
}

TEST_F(AppModelContentTest, AnEntryThatIsDeletedMeanwhileIsNotPasted)
{
    // Nobody has told the list of it.
    const Clip picture = clip(0);
    executeSQL("DELETE FROM clips WHERE image_png IS NOT NULL");
    m_model->paste(picture, PasteStyle::original, m_editor, completion());
    run();
    pass(60ms);
    expectFailure(
        ActionOutcome::Case::notRestored, u"That clipboard item is no longer in the history."_s);
}

TEST_F(AppModelContentTest, AnEntryThatIsDeletedMeanwhileIsNotCopied)
{
    const Clip picture = clip(0);
    m_model->deleteClip(picture);
    m_model->copy(picture, PasteStyle::original, completion());
    run();
    expectFailure(
        ActionOutcome::Case::notRestored, u"That clipboard item is no longer in the history."_s);
    EXPECT_EQ(m_panelCloses, 0);
}

TEST_F(AppModelContentTest, AHistoryThatCannotBeReadIsAnErrorAndNoPaste)
{
    breakStore();
    m_model->paste(clip(0), PasteStyle::original, m_editor, completion());
    run();
    pass(60ms);
    expectFailure(ActionOutcome::Case::storeFailed, u"Clipboard database operation failed: "_s);
}

TEST_F(AppModelContentTest, AHistoryThatCannotBeReadIsAnErrorAndNoCopy)
{
    breakStore();
    m_model->copy(clip(0), PasteStyle::original, completion());
    run();
    expectFailure(ActionOutcome::Case::storeFailed, u"Clipboard database operation failed: "_s);
    EXPECT_EQ(m_panelCloses, 0);
}

TEST_F(AppModelContentTest, AFetchThatTakesLongCallsNobodyToTheFront)
{
    m_model->paste(clip(0), PasteStyle::original, m_editor, completion());
    settle();
    m_editor->setActive(false);
    m_clock.advance(2s);
    run();
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(m_picture));
    EXPECT_EQ(m_editor->activations(), 0);
    EXPECT_THAT(m_keys.pastes(), IsEmpty());
    EXPECT_EQ(message(), u"Copied to the clipboard."_s);
    ASSERT_THAT(m_outcomes, SizeIs(1));
    EXPECT_EQ(m_outcomes.front().resultCase, ActionOutcome::Case::copiedOnly);

    // Where the user still waits for it, it is pasted.
    m_model->paste(clip(1), PasteStyle::original, m_editor, completion());
    settle();
    m_editor->setActive(true);
    m_clock.advance(2s);
    run();
    pass(60ms);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelContentTest, AFetchThatFailsHoldsUpNobody)
{
    const Clip picture = clip(0);
    m_model->deleteClip(picture);
    run();
    m_model->paste(picture, PasteStyle::original, m_editor);
    m_model->paste(clip(1), PasteStyle::original, m_editor);
    run();
    pass(60ms);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(ClipPayload({.plainText = "small"})));
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelContentTest, AHistoryThatCannotBeReadLeavesWhatTheListHolds)
{
    breakStore();
    m_model->paste(clip(2), PasteStyle::original, m_editor);
    run();
    pass(60ms);
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(ClipPayload({.plainText = "small"})));
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(AppModelContentTest, NothingIsWrittenOnceTheModelHasGone)
{
    m_model->paste(clip(0), PasteStyle::original, m_editor);
    m_model->copy(clip(1), PasteStyle::original);
    settle();
    m_model.reset();
    run();
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

} // namespace tessly::test
