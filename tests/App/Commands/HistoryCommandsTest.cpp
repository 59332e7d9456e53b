#include "HistoryCommands.h"

#include "AppModelFixture.h"
#include "Services/Store/ExportedClips.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Case = ActionOutcome::Case;
using PasteStyle = AppModel::PasteStyle;

namespace {

/// "one", "two", "three" in the history, "one" the newest, and an editor in front.
class HistoryCommandsTest : public AppModelFixture
{
protected:
    HistoryCommandsTest()
    {
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        m_model->reload(AppModel::Debounce::no);
        run();
        pass(1min);
        m_workspace.setFrontmost(m_editor);
        m_commands = std::make_unique<HistoryCommands>(HistoryCommands::Dependencies{
            .model = *m_model,
            .store = *m_store,
            .workspace = m_workspace,
            .abilities = {.capture = [] { return true; }, .tray = [] { return false; }},
        });
    }

    ActionCompletion note()
    {
        return [this](const ActionOutcome& outcome) { m_outcomes.push_back(outcome); };
    }
    /// What the one command since the last call came to.
    ActionOutcome outcome()
    {
        run();
        EXPECT_THAT(m_outcomes, SizeIs(1));
        const ActionOutcome last = m_outcomes.empty() ? ActionOutcome{} : m_outcomes.back();
        m_outcomes.clear();
        return last;
    }
    ActionOutcome pasteOutcome()
    {
        run();
        pass(1s);
        return outcome();
    }
    std::vector<ClipSummary>
    list(const QString& query = {}, std::optional<ClipKind> kind = {}, qint64 limit = -1)
    {
        HistoryCommands::Entries listed;
        m_commands->list(
            query, kind, limit, [&](HistoryCommands::Entries found) { listed = std::move(found); },
            note());
        run();
        EXPECT_NE(listed, nullptr);
        return listed ? *listed : std::vector<ClipSummary>();
    }
    [[nodiscard]] QByteArray written() const
    {
        return m_pasteboard.ownItems().empty()
                   ? QByteArray()
                   : m_pasteboard.ownItems().front().plainText.value_or(QByteArray());
    }

    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s);
    std::vector<ActionOutcome> m_outcomes;
    std::unique_ptr<HistoryCommands> m_commands;
};

TEST_F(HistoryCommandsTest, PastingTakesTheEntryAtThePositionOfTheWholeHistory)
{
    m_model->setQuery(u"three"_s);
    m_model->reload(AppModel::Debounce::no);
    run();
    m_commands->paste(2, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome(), ActionOutcome{});
    EXPECT_EQ(written(), "two");
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_editor));
}

TEST_F(HistoryCommandsTest, PastingReachesBeyondTheTenPositionsThatHaveKeys)
{
    for (int i = 0; i < 12; ++i) {
        save(QByteArray::number(i));
    }
    m_commands->paste(15, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome().resultCase, Case::done);
    EXPECT_EQ(written(), "three");
}

TEST_F(HistoryCommandsTest, PastingGoesToWhatIsInFrontAtTheTimeOfTheCall)
{
    m_commands->paste(1, PasteStyle::original, note());
    const auto other = std::make_shared<FakeRunningApplication>(u"org.example.Other"_s);
    m_workspace.setFrontmost(other);
    m_editor->becomeActiveAfter(1);
    EXPECT_EQ(pasteOutcome().resultCase, Case::done);
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_editor));
}

TEST_F(HistoryCommandsTest, PastingDoesNotNeedThePositionKeysToBeSwitchedOn)
{
    m_settings.setDirectPasteShortcuts(false);
    m_commands->paste(1, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome().resultCase, Case::done);
    EXPECT_THAT(m_keys.pastes(), SizeIs(1));
}

TEST_F(HistoryCommandsTest, PastingAndCopyingAsPlainTextWritePlainTextAlone)
{
    save(ClipPayload({.plainText = "rich", .html = "<b>rich"}));
    m_commands->paste(1, PasteStyle::plainTextOnly, note());
    EXPECT_EQ(pasteOutcome().resultCase, Case::done);
    ASSERT_THAT(m_pasteboard.ownItems(), SizeIs(1));
    EXPECT_FALSE(m_pasteboard.ownItems().front().html.has_value());
    m_commands->copy(1, PasteStyle::original, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_TRUE(m_pasteboard.ownItems().front().html.has_value());
    m_commands->copy(1, PasteStyle::plainTextOnly, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_FALSE(m_pasteboard.ownItems().front().html.has_value());
}

TEST_F(HistoryCommandsTest, APositionThatTheHistoryDoesNotHaveIsSaidAndNothingIsDone)
{
    const ActionOutcome none{Case::noSuchPosition, u"There is no clipboard item at position 4."_s};
    m_commands->copy(4, PasteStyle::original, note());
    EXPECT_EQ(outcome(), none);
    m_commands->setPinned(4, true, note());
    EXPECT_EQ(outcome(), none);
    m_commands->setPinned(4, false, note());
    EXPECT_EQ(outcome(), none);
    m_commands->deleteEntry(4, note());
    EXPECT_EQ(outcome(), none);
    EXPECT_FALSE(m_model->banner().has_value());
    m_commands->paste(4, PasteStyle::original, note());
    EXPECT_EQ(outcome(), none);
    EXPECT_EQ(message(), none.message) << "as for the position's key";
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::warning);
    for (const qint64 position : {0LL, -1LL, std::numeric_limits<qint64>::min()}) {
        m_commands->copy(position, PasteStyle::original, note());
        EXPECT_EQ(outcome().resultCase, Case::noSuchPosition);
    }
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
    EXPECT_THAT(stored(), SizeIs(3));
}

TEST_F(HistoryCommandsTest, APasteThatPressedNoKeysIsNoSuccess)
{
    m_workspace.setFrontmost(nullptr);
    m_commands->paste(1, PasteStyle::original, note());
    const ActionOutcome copied = pasteOutcome();
    EXPECT_EQ(copied.resultCase, Case::copiedOnly);
    EXPECT_FALSE(copied.message.isEmpty());
    EXPECT_EQ(message(), u"Copied to the clipboard."_s);
    EXPECT_EQ(written(), "one");

    m_workspace.setFrontmost(m_editor);
    m_editor->setActive(false);
    m_commands->paste(1, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome().resultCase, Case::copiedOnly) << "it never came to the front";

    m_editor->setActive(true);
    m_keys.breakKeys();
    m_commands->paste(1, PasteStyle::original, note());
    const ActionOutcome failed = pasteOutcome();
    EXPECT_EQ(failed.resultCase, Case::notRestored);
    EXPECT_EQ(failed.message, u"Could not restore that clipboard item."_s);
}

TEST_F(HistoryCommandsTest, AMissingPermissionIsSaid)
{
    m_keys.setAllowed(false);
    m_commands->paste(1, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome().resultCase, Case::needsAccess);
    EXPECT_EQ(message(), u"Allow Tessly in Accessibility, then click again."_s);
    EXPECT_THAT(m_pasteboard.writes(), IsEmpty());
}

TEST_F(HistoryCommandsTest, WhatCannotBeWrittenIsSaid)
{
    m_pasteboard.refuseWrites();
    m_commands->copy(1, PasteStyle::original, note());
    EXPECT_EQ(outcome().resultCase, Case::notRestored);
    EXPECT_FALSE(m_model->banner().has_value()) << "as the panel's copy";
    m_commands->paste(1, PasteStyle::original, note());
    EXPECT_EQ(outcome().resultCase, Case::notRestored);
    EXPECT_EQ(message(), u"Could not restore that clipboard item."_s);
}

TEST_F(HistoryCommandsTest, WhatIsTooLargeForAListIsFetched)
{
    const QByteArray text(ClipStore::heldContent, 'x');
    save(text);
    m_commands->paste(1, PasteStyle::original, note());
    EXPECT_EQ(pasteOutcome(), ActionOutcome{});
    EXPECT_EQ(written(), text);
    m_commands->copy(2, PasteStyle::original, note());
    EXPECT_EQ(outcome(), ActionOutcome{});
    m_commands->copy(1, PasteStyle::original, note());
    EXPECT_EQ(outcome(), ActionOutcome{});
    EXPECT_EQ(written(), text);
}

TEST_F(HistoryCommandsTest, PinningAndUnpinningActOnTheEntryAtThePosition)
{
    m_commands->setPinned(3, true, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("three", "one", "two"));
    m_commands->setPinned(3, true, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("two", "three", "one"));
    // Once more, the second of them: it goes before the other.
    m_commands->setPinned(2, true, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("three", "two", "one"));
    m_commands->setPinned(1, false, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("two", "one", "three"));
    EXPECT_EQ(m_model->statistics().pinnedItems, 1);
}

TEST_F(HistoryCommandsTest, DeletingRemovesTheEntryAtThePosition)
{
    m_commands->deleteEntry(2, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("one", "three"));
}

TEST_F(HistoryCommandsTest, ClearingKeepsPinnedEntriesUnlessEverythingGoes)
{
    m_commands->setPinned(2, true, {});
    run();
    m_commands->clear(false, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(texts(), ElementsAre("two"));
    EXPECT_EQ(message(), u"Clipboard history cleared."_s);
    m_commands->clear(true, note());
    EXPECT_EQ(outcome().resultCase, Case::done);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(HistoryCommandsTest, PausingAndResumingSayWhatTheyChange)
{
    m_commands->pause();
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::warning);
    m_model->dismissBanner();
    m_commands->pause();
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_FALSE(m_model->banner().has_value());
    m_commands->resume();
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(message(), u"Clipboard recording resumed."_s);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::information);
    m_commands->resume();
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
}

TEST_F(HistoryCommandsTest, AListTellsEachEntrysPositionInTheWholeHistory)
{
    save(ClipPayload({.imagePNG = "\x89PNG\r\n\x1a\n" + QByteArray(1000, 'x')}));
    save(ClipPayload({.fileURLs = {"file:///tmp/one", "file:///tmp/two"}}));
    m_commands->setPinned(5, true, {});
    run();
    const std::vector<Clip> clips = stored();
    const std::vector<ClipSummary> all = list();
    ASSERT_EQ(all.size(), clips.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Clip& clip = clips[i];
        const ClipSummary expected{
            .position = static_cast<qint64>(i) + 1,
            .id = clip.id,
            .kind = clip.payload.kind(),
            .preview = clip.payload.previewLine(),
            .createdAt = clip.createdAt,
            .lastUsedAt = clip.lastUsedAt,
            .sourceAppName = clip.sourceAppName,
            .sourceBundleID = clip.sourceBundleID,
            .isPinned = clip.isPinned,
            .pinOrder = clip.pinOrder,
            .copyCount = clip.copyCount,
            .byteCount = clip.payload.held()->byteCount(),
        };
        EXPECT_EQ(all[i], expected) << i;
    }
    const auto positions = [](const std::vector<ClipSummary>& entries) {
        std::vector<qint64> positions;
        for (const ClipSummary& entry : entries) {
            positions.push_back(entry.position);
        }
        return positions;
    };
    EXPECT_THAT(positions(list(u"t"_s)), ElementsAre(1, 2, 5));
    EXPECT_THAT(positions(list({}, ClipKind::image)), ElementsAre(3));
    EXPECT_THAT(positions(list(u"  "_s, ClipKind::text, 2)), ElementsAre(1, 4));
    EXPECT_THAT(list({}, std::nullopt, 0), IsEmpty());
    EXPECT_THAT(list(u"nothing like it"_s), IsEmpty());
}

TEST_F(HistoryCommandsTest, APreviewIsNeverTheWholeOfALongText)
{
    save(QByteArray(2'000'000, 'x'));
    const std::vector<ClipSummary> entries = list({}, std::nullopt, 1);
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(entries.front().preview.size(), 400);
    EXPECT_EQ(entries.front().byteCount, 2'000'000);
}

TEST_F(HistoryCommandsTest, TheStatusTellsWhatIsThereAndWhatWorks)
{
    m_commands->setPinned(2, true, {});
    m_commands->pause();
    run();
    std::optional<StatusReport> report;
    m_commands->status([&](const StatusReport& told) { report = told; }, note());
    run();
    ASSERT_TRUE(report.has_value());
    EXPECT_TRUE(report->isRunning);
    EXPECT_TRUE(report->isPaused);
    EXPECT_EQ(report->items, 3);
    EXPECT_EQ(report->pinned, 1);
    EXPECT_GT(report->bytes, 0);
    EXPECT_TRUE(report->session == u"x11"_s || report->session == u"wayland"_s);
    EXPECT_TRUE(report->capture);
    EXPECT_FALSE(report->paste) << "what nobody tells of does not work";
    EXPECT_FALSE(report->hotKeys);
    EXPECT_FALSE(report->tray);
}

TEST_F(HistoryCommandsTest, WhatIsImportedIsListedAndWhatIsNotIsTold)
{
    const QByteArray line = lineOf(textClip("imported"));
    std::vector<ImportOutcome> outcomes;
    const auto import = [&] {
        m_commands->importLines(
            [&line] { return QByteArrayView(line); },
            [&](const ImportOutcome& told) { outcomes.push_back(told); }, note());
        run();
    };
    import();
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three", "imported"));
    import();
    m_settings.setMaxHistory(10);
    for (int i = 0; i < 6; ++i) {
        save(QByteArray::number(i));
    }
    const QByteArray other = lineOf(textClip("other", 2));
    m_commands->importLines(
        [&other] { return QByteArrayView(other); },
        [&](const ImportOutcome& told) { outcomes.push_back(told); }, note());
    run();
    ASSERT_THAT(outcomes, SizeIs(3));
    EXPECT_EQ(outcomes[0].added, 1);
    EXPECT_EQ(outcomes[1].present, 1);
    EXPECT_THAT(outcomes[2].refused, SizeIs(1));
    EXPECT_THAT(m_outcomes, IsEmpty());
}

TEST_F(HistoryCommandsTest, AStoreThatFailsIsSaidByEveryCommand)
{
    breakStore();
    const auto expectFailure = [this](const auto& act) {
        act();
        const ActionOutcome failure = outcome();
        EXPECT_EQ(failure.resultCase, Case::storeFailed);
        EXPECT_TRUE(failure.message.startsWith(u"Clipboard database operation failed: "_s))
            << failure.message.toStdString();
    };
    expectFailure([&] { m_commands->paste(1, PasteStyle::original, note()); });
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
    expectFailure([&] { m_commands->copy(1, PasteStyle::original, note()); });
    expectFailure([&] { m_commands->setPinned(1, true, note()); });
    expectFailure([&] { m_commands->deleteEntry(1, note()); });
    expectFailure([&] { m_commands->clear(true, note()); });
    const auto fail = [](auto&&...) { ADD_FAILURE() << "answered"; };
    expectFailure([&] { m_commands->list({}, {}, -1, fail, note()); });
    expectFailure([&] { m_commands->status(fail, note()); });
    m_model->dismissBanner();
    expectFailure(
        [&] { m_commands->importLines([] { return QByteArrayView("a line"); }, fail, note()); });
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
}

TEST_F(HistoryCommandsTest, CommandsUnderWayEndWithTheProgram)
{
    m_commands->paste(1, PasteStyle::original, note());
    m_commands->deleteEntry(2, note());
    m_commands->list({}, {}, -1, [](auto&&) { ADD_FAILURE(); }, note());
    m_commands->status([](auto&&) { ADD_FAILURE(); }, note());
    m_commands->importLines(
        [] { return QByteArrayView("a line"); }, [](auto&&) { ADD_FAILURE(); }, note());
    m_commands.reset();
    m_model.reset();
    run();
    EXPECT_THAT(m_outcomes, IsEmpty());
    EXPECT_THAT(stored(), SizeIs(3));
}

} // namespace
} // namespace tessly::test
