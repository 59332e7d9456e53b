#include "AppModelTest.h"

namespace tessly::test {
namespace {

using AppModelReloadTest = AppModelTest;

// Reloading

TEST_F(AppModelReloadTest, AReloadFetchesListStatisticsAndSelection)
{
    save("one");
    const Clip two = save("two");
    result(m_store->setPinned(true, two.id));
    reload();
    EXPECT_THAT(texts(), ElementsAre("two", "one"));
    EXPECT_EQ(m_model->statistics().totalItems, 2);
    EXPECT_EQ(m_model->statistics().pinnedItems, 1);
    EXPECT_GT(m_model->statistics().databaseBytes, 0);
    EXPECT_EQ(m_model->selectedID(), two.id);
}

TEST_F(AppModelReloadTest, TheListHoldsFiftyRowsAtTheMost)
{
    for (int i = 0; i < 51; ++i) {
        save(QByteArray::number(i));
    }
    reload();
    EXPECT_THAT(m_model->clips(), SizeIs(50));
    EXPECT_EQ(texts().front(), "50");
    EXPECT_EQ(m_model->statistics().totalItems, 51);
}

TEST_F(AppModelReloadTest, AReloadSearchesWithTheQueryAndTheKind)
{
    save("apple");
    save("banana");
    save("mailto:apple");
    m_model->setQuery(u"apple"_s);
    reload();
    EXPECT_THAT(texts(), ElementsAre("mailto:apple", "apple"));
    m_model->setSelectedKind(ClipKind::link);
    reload();
    EXPECT_THAT(texts(), ElementsAre("mailto:apple"));
    m_model->setQuery({});
    m_model->setSelectedKind(ClipKind::text);
    reload();
    EXPECT_THAT(texts(), ElementsAre("banana", "apple"));
}

TEST_F(AppModelReloadTest, ADebouncedReloadWaits120Milliseconds)
{
    save("text");
    m_model->reload(Debounce::yes);
    m_clock.advance(119ms);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(1ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    EXPECT_THAT(texts(), ElementsAre("text"));
}

TEST_F(AppModelReloadTest, TypingThreeLettersFastRunsOneSearchForAllOfThem)
{
    save("abc");
    save("abd");
    for (const QString& query : {u"a"_s, u"ab"_s, u"abc"_s}) {
        m_model->setQuery(query);
        m_model->reload(Debounce::yes);
        m_clock.advance(40ms);
    }
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(80ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    EXPECT_THAT(texts(), ElementsAre("abc"));
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelReloadTest, ADebouncedReloadSearchesForWhatWasTypedWhenItWasCalled)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::yes);
    m_model->setQuery(u"banana"_s);
    pass(120ms);
    EXPECT_THAT(texts(), ElementsAre("apple"));
}

TEST_F(AppModelReloadTest, AnUndebouncedReloadTakesTheDebouncedOnesPlace)
{
    save("text");
    m_model->reload(Debounce::yes);
    m_model->reload(Debounce::no);
    run();
    EXPECT_THAT(texts(), ElementsAre("text"));
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelReloadTest, ASearchThatEndsAfterANewerReloadBeganIsDropped)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    // The older search is done, its result on the way.
    m_model->setQuery(u"banana"_s);
    m_model->reload(Debounce::no);
    settle();
    EXPECT_EQ(m_executor->pending(), 1U) << "nothing is counted for the older one";
    EXPECT_THAT(m_model->clips(), IsEmpty());
    run();
    EXPECT_THAT(texts(), ElementsAre("banana"));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelReloadTest, AReloadThatIsOvertakenWhileItCountsIsDropped)
{
    save("apple");
    save("banana");
    m_model->setQuery(u"apple"_s);
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    settle();
    ASSERT_TRUE(m_executor->runOne());
    m_model->setQuery(u"banana"_s);
    m_model->reload(Debounce::yes);
    settle();
    EXPECT_THAT(m_model->clips(), IsEmpty()) << "also while the newer one still waits";
    pass(120ms);
    EXPECT_THAT(texts(), ElementsAre("banana"));
}

TEST_F(AppModelReloadTest, ASearchThatIsOvertakenBeforeItRunsIsInterruptedWithoutABanner)
{
    save("apple");
    const QSignalSpy banners(m_model.get(), &AppModel::bannerChanged);
    const QSignalSpy lists(m_model.get(), &AppModel::clipsChanged);
    m_model->setQuery(u"apple"_s);
    for (int i = 0; i < 10; ++i) {
        m_model->reload(Debounce::no);
    }
    EXPECT_EQ(m_executor->pending(), 10U);
    run();
    EXPECT_EQ(banners.count(), 0);
    EXPECT_EQ(lists.count(), 1);
    EXPECT_THAT(texts(), ElementsAre("apple"));
}

TEST_F(AppModelReloadTest, AReloadThatFailsShowsTheErrorAndLeavesTheList)
{
    const Clip clip = save("text");
    reload();
    breakStore();
    m_model->setQuery(u"nothing like it"_s);
    reload();
    EXPECT_TRUE(message().startsWith(u"Clipboard database operation failed: "_s))
        << message().toStdString();
    EXPECT_EQ(bannerKind(), BannerKind::error);
    EXPECT_THAT(texts(), ElementsAre("text"));
    EXPECT_EQ(m_model->selectedID(), clip.id);
    EXPECT_EQ(m_model->statistics().totalItems, 1);
}

TEST_F(AppModelReloadTest, AReloadWhoseCountFailsShowsTheErrorAndLeavesTheList)
{
    save("one");
    reload();
    save("two");
    m_model->reload(Debounce::no);
    ASSERT_TRUE(m_executor->runOne());
    breakStore();
    run();
    EXPECT_EQ(bannerKind(), BannerKind::error);
    EXPECT_THAT(texts(), ElementsAre("one"));
}

TEST_F(AppModelReloadTest, ObserversHearOfAReloadOnlyWhatChanged)
{
    save("one");
    reload();
    const QSignalSpy clips(m_model.get(), &AppModel::clipsChanged);
    const QSignalSpy statistics(m_model.get(), &AppModel::statisticsChanged);
    const QSignalSpy selection(m_model.get(), &AppModel::selectedIDChanged);
    reload();
    EXPECT_EQ(clips.count(), 0);
    EXPECT_EQ(statistics.count(), 0);
    EXPECT_EQ(selection.count(), 0);
    save("two");
    reload();
    EXPECT_EQ(clips.count(), 1);
    EXPECT_EQ(statistics.count(), 1);
    EXPECT_EQ(selection.count(), 0) << "the selected entry is still there";
}

TEST_F(AppModelReloadTest, WhoeverHearsOfTheNewListFindsTheSelectionInIt)
{
    save("one");
    reload();
    const Clip one = m_model->clips().front();
    const Clip two = save("two");
    result(m_store->remove(one.id));
    const Clip* selected = nullptr;
    QObject::connect(m_model.get(), &AppModel::clipsChanged, m_model.get(), [&] {
        selected = m_model->selectedClip();
        ASSERT_NE(selected, nullptr);
        EXPECT_EQ(selected->id, two.id);
    });
    reload();
    EXPECT_NE(selected, nullptr);
}

TEST_F(AppModelReloadTest, AModelThatGoesDuringAReloadLeavesNoTrace)
{
    save("text");
    m_model->reload(Debounce::no);
    m_executor->runOne();
    m_model.reset();
    run();
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelReloadTest, AModelThatGoesWhileTypingPausesSearchesNothing)
{
    m_model->reload(Debounce::yes);
    m_model->showBanner(u"text"_s, BannerKind::warning);
    m_model.reset();
    EXPECT_EQ(m_clock.pending(), 0U);
}

} // namespace
} // namespace tessly::test
