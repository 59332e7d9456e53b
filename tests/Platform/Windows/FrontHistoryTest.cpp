#include "FrontHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

using Window = std::shared_ptr<const int>;
using namespace std::chrono_literals;

class FrontHistoryTest : public testing::Test
{
protected:
    using History = FrontHistory<int>;

    static constexpr History::TimePoint start{1h};
    const Window editor = std::make_shared<int>(1);
    const Window keeper = std::make_shared<int>(2);
    History history;
};

TEST_F(FrontHistoryTest, TellsWhatWasInFrontAtAMomentOrLater)
{
    history.add(editor, start);
    history.add(keeper, start + 5ms);
    EXPECT_THAT(history.since(start - 1ms), ElementsAre(editor, keeper));
    EXPECT_THAT(history.since(start), ElementsAre(editor, keeper));
    EXPECT_THAT(history.since(start + 1ms), ElementsAre(keeper));
    EXPECT_THAT(history.since(start + 6ms), IsEmpty());
}

TEST_F(FrontHistoryTest, WhatWasInFrontAgainIsToldOnceAndLast)
{
    history.add(editor, start);
    history.add(keeper, start + 1ms);
    history.add(editor, start + 2ms);
    EXPECT_THAT(history.since(start), ElementsAre(keeper, editor));
    EXPECT_THAT(history.since(start + 2ms), ElementsAre(editor));
}

TEST_F(FrontHistoryTest, ForgetsTheEarliestOfTooMany)
{
    std::vector<Window> windows;
    for (int number = 0; number < 100; ++number) {
        windows.push_back(std::make_shared<int>(number));
        history.add(windows.back(), start);
    }
    EXPECT_EQ(
        history.since(start),
        std::vector(windows.end() - static_cast<int>(History::capacity), windows.end()));
    EXPECT_EQ(windows.front().use_count(), 1);
}

TEST_F(FrontHistoryTest, ForgetsWhatIsLongAgo)
{
    history.add(editor, start);
    history.add(keeper, start + History::memory);
    EXPECT_THAT(history.since(start), ElementsAre(editor, keeper));
    history.add(keeper, start + History::memory + 1ms);
    EXPECT_THAT(history.since(start), ElementsAre(keeper));
    EXPECT_EQ(editor.use_count(), 1);
}

} // namespace
} // namespace tessly::test
