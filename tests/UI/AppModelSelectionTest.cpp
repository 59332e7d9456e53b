#include "AppModelTest.h"

namespace tessly::test {
namespace {

// The selection

class AppModelSelectionTest : public AppModelTest
{
protected:
    AppModelSelectionTest()
    {
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        reload();
    }

    [[nodiscard]] QByteArray selected() const
    {
        return m_model->selectedClip()
                   ? m_model->selectedClip()->payload.held()->plainText().value_or(QByteArray())
                   : "(none)";
    }
};

TEST_F(AppModelSelectionTest, MovesByOneRowAndStopsAtTheEnds)
{
    EXPECT_EQ(selected(), "one");
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    m_model->selectNext();
    EXPECT_EQ(selected(), "two");
    m_model->selectNext();
    EXPECT_EQ(selected(), "three");
    const QSignalSpy spy(m_model.get(), &AppModel::selectedIDChanged);
    m_model->selectNext();
    EXPECT_EQ(selected(), "three");
    EXPECT_EQ(spy.count(), 0);
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "two");
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(AppModelSelectionTest, NothingSelectedMeansTheFirstRow)
{
    m_model->setSelectedID(std::nullopt);
    EXPECT_EQ(selected(), "one");
    m_model->selectNext();
    EXPECT_EQ(selected(), "one");
    EXPECT_TRUE(m_model->selectedID().has_value());
    m_model->setSelectedID(std::nullopt);
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    EXPECT_TRUE(m_model->selectedID().has_value());
}

TEST_F(AppModelSelectionTest, ASelectionOutsideTheListIsNoClipAndMovesToTheFirstRow)
{
    m_model->setSelectedID(QUuid::createUuid());
    EXPECT_EQ(selected(), "(none)");
    m_model->selectPrevious();
    EXPECT_EQ(selected(), "one");
    m_model->setSelectedID(QUuid::createUuid());
    m_model->selectNext();
    EXPECT_EQ(selected(), "one");
}

TEST_F(AppModelSelectionTest, StaysWithItsClipThroughAReload)
{
    m_model->selectNext();
    save("zero");
    reload();
    EXPECT_THAT(texts(), ElementsAre("zero", "one", "two", "three"));
    EXPECT_EQ(selected(), "two");
}

TEST_F(AppModelSelectionTest, MovesToTheFirstRowWhenItsClipIsFilteredOut)
{
    m_model->setQuery(u"t"_s);
    reload();
    EXPECT_THAT(texts(), ElementsAre("two", "three"));
    EXPECT_EQ(selected(), "two");
}

TEST_F(AppModelSelectionTest, IsAbsentInAnEmptyList)
{
    m_model->setQuery(u"nothing like it"_s);
    reload();
    EXPECT_EQ(m_model->selectedID(), std::nullopt);
    EXPECT_EQ(m_model->selectedClip(), nullptr);
    m_model->selectNext();
    m_model->selectPrevious();
    EXPECT_EQ(m_model->selectedID(), std::nullopt);
}

} // namespace
} // namespace tessly::test
