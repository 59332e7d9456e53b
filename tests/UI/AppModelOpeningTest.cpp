#include "AppModelFixture.h"
#include "InlineExecutor.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace tessly::test {
namespace {

/// The model of a program that has just started: the store has not opened its file yet, which holds
/// two clips.
class AppModelOpeningTest : public AppModelFixture
{
protected:
    AppModelOpeningTest()
    {
        save("one");
        save("two");
        m_model.reset();
        m_store.reset();
        auto executor = std::make_unique<ManualExecutor>();
        m_executor = executor.get();
        m_store = std::make_unique<ClipStore>(ClipStore::Means{
            .databasePath = m_databasePath,
            .now = [this] { return m_clock.now(); },
            .executor = std::move(executor),
            .makeReader = [] { return std::make_unique<InlineExecutor>(); }});
        m_model = std::make_unique<AppModel>(AppModel::Dependencies{
            *m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
            m_workspace, m_clock});
        m_model->clipboardMonitor().start();
        m_model->reload(AppModel::Debounce::no);
        settle();
    }

    void copy(const QByteArray& text)
    {
        m_pasteboard.copyText(text);
        m_clock.advance(350ms);
        settle();
    }
};

TEST_F(AppModelOpeningTest, ListsTheHistoryAndWhatIsCopied)
{
    EXPECT_THAT(texts(), ElementsAre("two", "one"));
    copy("three");
    EXPECT_TRUE(m_store->isOpening());
    EXPECT_THAT(texts(), ElementsAre("three", "two", "one"));
    EXPECT_EQ(m_model->statistics().totalItems, 3);
    const std::vector<Clip> early = m_model->clips();
    run();
    EXPECT_FALSE(m_store->isOpening());
    EXPECT_EQ(m_model->clips(), early);
    EXPECT_EQ(stored(), early);
}

TEST_F(AppModelOpeningTest, KeysActInThePanelWhileACopyWaits)
{
    copy("three");
    m_model->setPanelPresented(true);
    m_model->reload(AppModel::Debounce::no);
    settle();
    bool isCalled = false;
    m_model->whenListed([&] { isCalled = true; });
    EXPECT_TRUE(isCalled);
    EXPECT_EQ(m_model->selectedClip()->payload.held()->plainText(), "three");
}

TEST_F(AppModelOpeningTest, TheFirstPositionIsWhatWasCopiedLast)
{
    copy("three");
    m_model->pasteGlobalPosition(1);
    settle();
    EXPECT_EQ(m_pasteboard.writes().size(), 1U);
    EXPECT_EQ(m_pasteboard.pastedText(), "three");
    EXPECT_TRUE(m_store->isOpening());
}

TEST_F(AppModelOpeningTest, ACopyThatIsGivenUpLeavesTheListAndIsNotTriedAgain)
{
    m_settings.setMaxItemSizeMB(40);
    copy(QByteArray(30'000'000, '1'));
    const QUuid first = m_model->clips().front().id;
    copy(QByteArray(30'000'000, '2'));
    EXPECT_EQ(m_model->clips().size(), 3U);
    EXPECT_NE(m_model->clips().front().id, first);
    EXPECT_EQ(message(), QString());
    EXPECT_FALSE(m_model->lastError());
    pass(10s);
    EXPECT_EQ(stored().size(), 3U);
}

TEST_F(AppModelOpeningTest, ADeletionShowsOnceItIsDone)
{
    m_model->deleteSelected();
    settle();
    EXPECT_THAT(texts(), ElementsAre("two", "one"));
    run();
    EXPECT_THAT(texts(), ElementsAre("one"));
}

TEST_F(AppModelOpeningTest, TheEndSavesWhatWaits)
{
    copy("three");
    auto settling = m_model->settleForGood();
    settle();
    EXPECT_FALSE(settling.isReady());
    run();
    EXPECT_TRUE(settling.isReady());
    EXPECT_EQ(stored().size(), 3U);
}

} // namespace
} // namespace tessly::test
