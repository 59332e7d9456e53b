#include "FallbackStatusItem.h"

#include "FakeStatusItem.h"
#include "LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

using Presence = StatusItem::Presence;
using Line = LogCapture::Line;

class FallbackStatusItemTest : public testing::Test
{
protected:
    FallbackStatusItemTest()
    {
        m_preferred->setTray(Presence::undecided);
        m_item.setEvents({
            .leftClicked = [this](auto rectangle) { m_clicks.push_back(rectangle); },
            .menu = [] { return std::vector<StatusMenuItem>{{.title = u"One"_s}}; },
            .presenceChanged = [this] { m_presences.push_back(m_item.presence()); },
        });
    }

    std::vector<Line> log() const { return m_log.lines(category); }

    const QString category = u"com.brackmoor.tessly.StatusItem"_s;
    const Line noTray = {
        QtInfoMsg, category,
        u"There is no tray: start Tessly again, or call it, to open the panel."_s};
    LogCapture m_log;
    FakeStatusItem* m_preferred = new FakeStatusItem;
    FakeStatusItem* m_fallback = new FakeStatusItem;
    FallbackStatusItem m_item{
        std::unique_ptr<StatusItem>(m_preferred), std::unique_ptr<StatusItem>(m_fallback)};
    std::vector<StatusItem::Rectangle> m_clicks;
    std::vector<Presence> m_presences;
};

TEST_F(FallbackStatusItemTest, TheFallbackWaitsForTheFirstToBeDecided)
{
    m_item.setVisible(true);
    EXPECT_TRUE(m_preferred->isVisible());
    EXPECT_FALSE(m_fallback->isVisible());
    EXPECT_EQ(m_item.presence(), Presence::undecided);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(FallbackStatusItemTest, WhereTheFirstIsPresentTheFallbackIsNotShown)
{
    m_item.setVisible(true);
    m_preferred->setTray(Presence::present);
    EXPECT_FALSE(m_fallback->isVisible());
    EXPECT_EQ(m_item.presence(), Presence::present);
}

TEST_F(FallbackStatusItemTest, WhereTheFirstIsAbsentTheFallbackIsShown)
{
    m_item.setVisible(true);
    m_preferred->setTray(Presence::absent);
    EXPECT_TRUE(m_fallback->isVisible());
    EXPECT_EQ(m_item.presence(), Presence::present);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(FallbackStatusItemTest, AFirstThatComesLaterTakesOver)
{
    m_item.setVisible(true);
    m_preferred->setTray(Presence::absent);
    m_preferred->setTray(Presence::present);
    EXPECT_FALSE(m_fallback->isVisible());
    m_preferred->setTray(Presence::absent);
    EXPECT_TRUE(m_fallback->isVisible());
    EXPECT_THAT(m_presences, ElementsAre(Presence::undecided, Presence::present));
}

TEST_F(FallbackStatusItemTest, WithoutAnyTrayOneLineIsLogged)
{
    m_fallback->setTray(Presence::absent);
    m_item.setVisible(true);
    m_preferred->setTray(Presence::absent);
    EXPECT_EQ(m_item.presence(), Presence::absent);
    EXPECT_THAT(log(), ElementsAre(noTray));

    m_preferred->setTray(Presence::present);
    m_preferred->setTray(Presence::absent);
    EXPECT_THAT(log(), ElementsAre(noTray));
}

TEST_F(FallbackStatusItemTest, NothingIsSaidWhileTheFallbackIsUndecided)
{
    m_fallback->setTray(Presence::undecided);
    m_item.setVisible(true);
    m_preferred->setTray(Presence::absent);
    EXPECT_THAT(log(), IsEmpty());
    m_fallback->setTray(Presence::absent);
    EXPECT_THAT(log(), ElementsAre(noTray));
}

TEST_F(FallbackStatusItemTest, HiddenBothAreHidden)
{
    m_item.setVisible(true);
    m_preferred->setTray(Presence::absent);
    m_item.setVisible(false);
    EXPECT_FALSE(m_preferred->isVisible());
    EXPECT_FALSE(m_fallback->isVisible());
    EXPECT_EQ(m_item.presence(), Presence::absent);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(FallbackStatusItemTest, EventsComeFromBothAndTheRectangleFromTheOneThatIsShown)
{
    m_preferred->setRectangle(QRect(1, 1, 1, 1));
    m_fallback->setRectangle(QRect(2, 2, 2, 2));
    m_item.setVisible(true);
    m_preferred->setTray(Presence::present);
    EXPECT_EQ(m_item.rectangle(), QRect(1, 1, 1, 1));
    m_preferred->leftClick();
    m_preferred->setTray(Presence::absent);
    EXPECT_EQ(m_item.rectangle(), QRect(2, 2, 2, 2));
    m_fallback->leftClick();
    EXPECT_THAT(m_clicks, ElementsAre(QRect(1, 1, 1, 1), QRect(2, 2, 2, 2)));
    EXPECT_EQ(m_fallback->openMenu().size(), 1U);
}

} // namespace

} // namespace tessly::test
