#include "SettingsWindowController.h"

#include "AppModelFixture.h"
#include "FakeWindowView.h"
#include "QtPrinting.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {
namespace {

class SettingsWindowControllerTest : public AppModelFixture
{
protected:
    std::unique_ptr<WindowView> makeView(SettingsModel& settings)
    {
        ++m_viewsMade;
        m_shownSettings = &settings;
        auto view = std::make_unique<FakeWindowView>(m_record);
        m_view = view.get();
        return view;
    }

    FakeWindowView::Record m_record;
    FakeWindowView* m_view = nullptr;
    SettingsModel* m_shownSettings = nullptr;
    int m_viewsMade = 0;
    SettingsWindowController m_controller{
        {*m_model, m_pasteboard, u"1.0"_s}, m_clock, [this](SettingsModel& settings) {
            return makeView(settings);
        }};
};

TEST_F(SettingsWindowControllerTest, MakesTheWindowWhenItIsNeeded)
{
    EXPECT_EQ(m_viewsMade, 0);
    EXPECT_FALSE(m_controller.isShown());
    m_controller.close();
    EXPECT_EQ(m_viewsMade, 0);
    m_controller.show();
    EXPECT_EQ(m_viewsMade, 1);
    EXPECT_TRUE(m_controller.isShown());
}

TEST_F(SettingsWindowControllerTest, ThereIsOneWindow)
{
    m_controller.show();
    m_controller.show();
    EXPECT_EQ(m_viewsMade, 1);
    EXPECT_EQ(m_record.showings, 2) << "it comes to the front";
}

TEST_F(SettingsWindowControllerTest, TheFiguresAreFreshAtEveryShowing)
{
    save("one");
    m_controller.show();
    run();
    EXPECT_EQ(m_shownSettings->historyCount(), u"1 items"_s);
    save("two");
    m_controller.show();
    run();
    EXPECT_EQ(m_shownSettings->historyCount(), u"2 items"_s);
}

TEST_F(SettingsWindowControllerTest, AWindowThatWasClosedGoesAfterAWhile)
{
    m_controller.show();
    m_controller.close();
    EXPECT_FALSE(m_controller.isShown());
    pass(SettingsWindowController::viewIsKept - 1ms);
    EXPECT_TRUE(m_record.isAlive);
    pass(1ms);
    EXPECT_FALSE(m_record.isAlive);
    m_controller.show();
    EXPECT_EQ(m_viewsMade, 2);
    EXPECT_TRUE(m_controller.isShown());
}

TEST_F(SettingsWindowControllerTest, AWindowThatIsOpenedAgainSoonStays)
{
    m_controller.show();
    m_view->closeByUser();
    EXPECT_FALSE(m_controller.isShown());
    pass(5s);
    m_controller.show();
    pass(1min);
    EXPECT_TRUE(m_record.isAlive);
    EXPECT_TRUE(m_controller.isShown());
    EXPECT_EQ(m_viewsMade, 1);
}

TEST_F(SettingsWindowControllerTest, ClosingTheWindowCancelsTheQuestion)
{
    save("one");
    m_controller.show();
    m_shownSettings->clearEverything();
    m_view->closeByUser();
    EXPECT_FALSE(m_shownSettings->isClearingPending());
    run();
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(SettingsWindowControllerTest, AWindowThatCannotBeMadeIsTriedAgain)
{
    int attempts = 0;
    SettingsWindowController controller(
        {*m_model, m_pasteboard, QString()}, m_clock, [&attempts](SettingsModel&) {
            ++attempts;
            return std::unique_ptr<WindowView>();
        });
    controller.show();
    EXPECT_FALSE(controller.isShown());
    controller.show();
    EXPECT_EQ(attempts, 2);
    controller.close();
}

} // namespace
} // namespace tessly::test
