#include "ClipStoreOpeningTest.h"

namespace tessly::test {

// Reading and recording

TEST_F(ClipStoreOpeningTest, ListsAndRecordsBeforeTheHistoryIsChecked)
{
    fill({"one", "two"});
    openHeld();
    EXPECT_THAT(listed(), ElementsAre("two", "one"));
    EXPECT_THAT(listed(u"on"_s), ElementsAre("one"));
    auto saving = save("three");
    EXPECT_THAT(listed(), ElementsAre("three", "two", "one"));
    EXPECT_EQ(await(m_store->statistics()).totalItems, 3);
    const Clip early = list().front();

    EXPECT_EQ(letGo(), ClipStore::Opening());
    EXPECT_FALSE(m_store->isOpening());
    EXPECT_EQ(await(std::move(saving)), early) << "it is what was listed";
    EXPECT_EQ(list().front(), early);
    EXPECT_THAT(listed(), ElementsAre("three", "two", "one"));
}

TEST_F(ClipStoreOpeningTest, PositionsCountTheCopiesThatWait)
{
    const std::vector<Clip> before = fill({"one", "two", "three"});
    executeSQL("UPDATE clips SET is_pinned = 1, pin_order = 1 WHERE plain_text = 'one'");
    openHeld();
    note(save("new"), "new");
    note(save("two"), "two");
    note(save("one"), "one");
    const std::vector<QByteArray> expected = {"one", "two", "new", "three"};
    EXPECT_EQ(listed(), expected);
    for (int position = 1; position <= 4; ++position) {
        const std::optional<Clip> clip = await(m_store->clip(position));
        ASSERT_TRUE(clip);
        EXPECT_EQ(clip->payload.held()->plainText(), expected[std::size_t(position) - 1]);
    }
    EXPECT_FALSE(await(m_store->clip(5)));
    const auto summaries = await(m_store->summaries({}, std::nullopt, -1));
    letGo();
    EXPECT_EQ(*summaries, *await(m_store->summaries({}, std::nullopt, -1)))
        << "as it is once they are saved";
    EXPECT_EQ(summaries->at(1).id, before[1].id);
    EXPECT_EQ(summaries->at(1).copyCount, 2);
}

TEST_F(ClipStoreOpeningTest, FindsTheCopiesThatWaitByTheirWordsAndKinds)
{
    fill({"a red rose"});
    openHeld();
    note(save("The Red Balloon"), "text");
    note(save(megabytes(1, 'i')), "image");
    EXPECT_THAT(listed(u"red"_s), ElementsAre("The Red Balloon", "a red rose"));
    EXPECT_THAT(listed(u"balloon  the"_s), ElementsAre("The Red Balloon"));
    EXPECT_THAT(list(u"absent"_s), IsEmpty());
    EXPECT_THAT(list({}, ClipKind::image), SizeIs(1));
    EXPECT_THAT(await(m_store->search({}, std::nullopt, 2)), SizeIs(2)) << "the limit holds";
}

TEST_F(ClipStoreOpeningTest, ContentThatWaitsOrIsStoredCanBePastedAndPreviewed)
{
    const std::vector<Clip> before = fill({"stored"});
    openHeld();
    const ClipPayload large = megabytes(1, 'i');
    note(save(large), "image");
    EXPECT_EQ(await(m_store->payload(before[0].id)), text("stored"));
    const Clip listedImage = list().front();
    EXPECT_EQ(listedImage.payload.held(), nullptr) << "more than a list holds";
    EXPECT_EQ(await(m_store->payload(listedImage.id)), large);
    EXPECT_EQ(await(m_store->preview(before[0].id)), ClipPreview::of(text("stored")));
    EXPECT_EQ(await(m_store->preview(listedImage.id)), ClipPreview::of(large));
    letGo();
    EXPECT_EQ(await(m_store->preview(before[0].id)), ClipPreview::of(text("stored")));
    EXPECT_EQ(await(m_store->preview(listedImage.id)), ClipPreview::of(large));
    await(m_store->remove(listedImage.id));
    EXPECT_EQ(await(m_store->preview(listedImage.id)), std::nullopt);
}

TEST_F(ClipStoreOpeningTest, TheCheckMayEndAsTheFirstReadBegins)
{
    fill({"stored"});
    ClipStore::Means ending = means();
    ending.makeReader = [this]() -> std::unique_ptr<Executor> {
        letGo();
        return std::make_unique<InlineExecutor>();
    };
    openHeld(std::move(ending));
    EXPECT_THAT(listed(), ElementsAre("stored"));
    EXPECT_THAT(listed(u"stor"_s), ElementsAre("stored"));
}

TEST_F(ClipStoreOpeningTest, ContentThatIsNotWhatWasStoredIsReadOnlyAfterTheCheck)
{
    const std::vector<Clip> before = fill({"stored"});
    executeSQL("UPDATE clips SET plain_text = 'another''s'");
    openHeld();
    EXPECT_THAT(listed(), ElementsAre("not held"));
    auto reading = m_store->payload(before[0].id);
    auto previewing = m_store->preview(before[0].id);
    // In its order behind those.
    EXPECT_EQ(await(m_store->statistics()).totalItems, 1);
    EXPECT_FALSE(reading.isReady());
    EXPECT_FALSE(previewing.isReady());
    letGo();
    EXPECT_EQ(await(std::move(reading)), text("another's"));
    EXPECT_EQ(await(std::move(previewing)), ClipPreview::of(text("another's")));
}

TEST_F(ClipStoreOpeningTest, WhatCannotBeReadBeforeTheCheckIsReadAfterIt)
{
    // There is no file yet.
    openHeld();
    auto listing = m_store->search({}, std::nullopt, -1);
    note(save("one"), "one");
    letGo();
    await(std::move(listing));
    EXPECT_THAT(listed(), ElementsAre("one"));
}

TEST_F(ClipStoreOpeningTest, ASearchThatIsOvertakenEndsBeforeTheCheckDoes)
{
    fill({"one"});
    openHeld();
    std::stop_source overtaken;
    overtaken.request_stop();
    EXPECT_THROW(
        await(m_store->search({}, std::nullopt, 10, {}, overtaken.get_token())), ClipStoreError);
    EXPECT_TRUE(m_store->isOpening());
}

// What waits

TEST_F(ClipStoreOpeningTest, SavesTheCopiesInTheirOrderAndAsOfTheirTimes)
{
    openHeld();
    m_now = 2'000;
    note(save("a"), "a");
    m_now = 3'000;
    note(save("b"), "b");
    m_now = 4'000;
    note(save("a"), "a again");
    m_now = 9'000;
    letGo();
    const std::vector<Clip> clips = list();
    ASSERT_THAT(listed(), ElementsAre("a", "b"));
    EXPECT_EQ(clips[0].createdAt, 2'001);
    EXPECT_EQ(clips[0].lastUsedAt, 4'001);
    EXPECT_EQ(clips[0].copyCount, 2);
    EXPECT_EQ(clips[1].lastUsedAt, 3'001);
    EXPECT_EQ(clips[1].sourceAppName, u"Editor"_s);
    EXPECT_THAT(m_done, ElementsAre("a", "b", "a again"));
}

TEST_F(ClipStoreOpeningTest, TheOldestCopiesMakeRoomForTheLatest)
{
    fill({});
    openHeld();
    const LogCapture log;
    for (const char fill : {'1', '2', '3', '4', '5'}) {
        note(save(megabytes(10, fill)), "saved");
    }
    EXPECT_THAT(list(), SizeIs(5));
    EXPECT_THAT(logged(log), IsEmpty());
    note(save(megabytes(11, '6')), "saved");
    EXPECT_TRUE(waitUntil([this] { return m_done.size() == 2; })) << "let go of at once";
    EXPECT_EQ(m_done[0], "saved: Too much was copied while the history was being checked.");
    EXPECT_EQ(logged(log), QStringList({givenUp, givenUp}));
    EXPECT_THAT(list(), SizeIs(4));
    letGo();
    EXPECT_THAT(list(), SizeIs(4));
    EXPECT_TRUE(waitUntil([this] { return m_done.size() == 6; }));
    EXPECT_EQ(await(m_store->payload(list()[0].id)), megabytes(11, '6'));
    EXPECT_EQ(await(m_store->payload(list()[3].id)), megabytes(10, '3'));
}

TEST_F(ClipStoreOpeningTest, ACopyThatIsTooLargeToWaitCostsNoOther)
{
    openHeld();
    const LogCapture log;
    note(save("kept"), "kept");
    EXPECT_THROW(await(save(megabytes(51, 'x'))), CopyGivenUp);
    EXPECT_EQ(logged(log), QStringList({givenUp}));
    letGo();
    EXPECT_THAT(listed(), ElementsAre("kept"));
}

TEST_F(ClipStoreOpeningTest, WhatChangesEntriesWaitsInItsOrderAndIsNotReportedBefore)
{
    const std::vector<Clip> before = fill({"a", "b", "c", "d"});
    openHeld();
    note(m_store->setPinned(true, before[0].id), "pinned");
    note(m_store->remove(before[1].id), "deleted");
    note(save("cleared"), "saved");
    note(m_store->clear(false), "cleared");
    note(save("e"), "saved");
    note(m_store->markUsed(before[0].id, true), "used");
    note(m_store->trimHistory(10), "trimmed");
    EXPECT_EQ(await(m_store->scrub()), ClipStore::Upkeep::hindered) << "not now";
    EXPECT_THAT(listed(), SizeIs(6));
    EXPECT_THAT(m_done, IsEmpty());
    letGo();
    EXPECT_THAT(listed(), ElementsAre("a", "e"));
    EXPECT_THAT(
        m_done, ElementsAre("pinned", "deleted", "saved", "cleared", "saved", "used", "trimmed"));
    EXPECT_THAT(nextStart(), ElementsAre("a", "e"));
}

TEST_F(ClipStoreOpeningTest, AnEntryThatWaitsCanBeDeleted)
{
    fill({"a"});
    openHeld();
    note(save("b"), "saved");
    note(m_store->remove(list().front().id), "deleted");
    letGo();
    EXPECT_THAT(listed(), ElementsAre("a"));
    EXPECT_THAT(m_done, ElementsAre("saved", "deleted"));
}

// The end of the program

TEST_F(ClipStoreOpeningTest, TheEndCutsTheCheckShortAndSavesWhatWaits)
{
    fill({"one" + QByteArray(600, ' '), "two"});
    // A check that goes on would find it.
    damageTable("clips_kind_index");
    openHeld();
    note(save("three"), "saved");
    auto finishing = m_store->finish();
    EXPECT_EQ(letGo(), ClipStore::Opening());
    await(std::move(finishing));
    EXPECT_EQ(m_done.size(), 1U);

    m_store.reset();
    m_check.reset();
    m_store = std::make_unique<ClipStore>(means());
    EXPECT_TRUE(await(m_store->opened()).damagedFolder) << "the next start checks again";
}

TEST_F(ClipStoreOpeningTest, WhatACheckSaysThatIsInterruptedIsNotBelieved)
{
    fill({"one", "two"});
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    ClipStore::Means interrupted = means();
    interrupted.executor = std::move(executor);
    // When the check's first step begins, whose answer then is that pages are missing.
    const std::function<void()> finish = [this] {
        if (m_notes.empty()) {
            note(m_store->finish(), "finished");
        }
    };
    const SQLiteHook hook([&finish](sqlite3* connection) {
        const auto begun = [](unsigned, void* finish, void*, void* text) {
            if (std::strstr(static_cast<const char*>(text), "quick_check") != nullptr) {
                (*static_cast<const std::function<void()>*>(finish))();
            }
            return 0;
        };
        sqlite3_trace_v2(
            connection, SQLITE_TRACE_STMT, begun, const_cast<std::function<void()>*>(&finish));
    });
    m_store = std::make_unique<ClipStore>(std::move(interrupted));
    auto saving = save("three");
    while (jobs.runOne()) {
    }
    EXPECT_EQ(await(m_store->opened()), ClipStore::Opening());
    EXPECT_EQ(await(std::move(saving)).copyCount, 1);
    EXPECT_THAT(m_notes, SizeIs(1)) << "there was a check";
    m_store.reset();
    EXPECT_THAT(nextStart(), ElementsAre("three", "two", "one"));
}

TEST_F(ClipStoreOpeningTest, AStoreThatGoesSavesWhatWaits)
{
    fill({"one"});
    openHeld();
    note(save("two"), "saved");
    m_check->letGo();
    m_store.reset();
    EXPECT_THAT(nextStart(), ElementsAre("two", "one"));
}

} // namespace tessly::test
