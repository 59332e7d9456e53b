#include "QtPrinting.h"
#include "QuickConfirmation.h"
#include "TestSupport.h"
#include "ViewDriver.h"

#include <gmock/gmock.h>

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {
namespace {

class ConfirmationViewTest : public testing::Test
{
protected:
    void ask(const QString& message = u"Clear unpinned history?"_s)
    {
        m_confirmation.ask(
            message, u"Clear"_s, u"Cancel"_s, [this](bool answer) { m_answers.push_back(answer); });
        ASSERT_TRUE(waitUntil([this] { return window().isExposed() && window().isActive(); }));
    }
    [[nodiscard]] ViewWindow& window() { return m_confirmation.window(); }
    [[nodiscard]] ViewDriver driver() { return ViewDriver(window()); }
    /// Lets the answer arrive.
    [[nodiscard]] const std::vector<bool>& answers()
    {
        QCoreApplication::processEvents();
        return m_answers;
    }

    QuickConfirmation m_confirmation;
    std::vector<bool> m_answers;
};

TEST_F(ConfirmationViewTest, AsksWithoutWaiting)
{
    EXPECT_FALSE(m_confirmation.isAsking());
    ask();
    EXPECT_TRUE(m_confirmation.isAsking());
    EXPECT_THAT(answers(), IsEmpty());
    EXPECT_EQ(driver().text(u"alert-title"_s), u"Clear unpinned history?"_s);
    EXPECT_EQ(driver().find(u"alert-message"_s), nullptr) << "no informative text";
    EXPECT_EQ(driver().text(u"alert-confirm"_s, "title"), u"Clear"_s);
    EXPECT_EQ(driver().text(u"alert-cancel"_s, "title"), u"Cancel"_s);
    EXPECT_LT(driver().centerOf(u"alert-confirm"_s).y(), driver().centerOf(u"alert-cancel"_s).y());
    EXPECT_EQ(window().title(), u"Clear History"_s);
}

TEST_F(ConfirmationViewTest, ReturnConfirms)
{
    ask();
    driver().press(Qt::Key_Return);
    EXPECT_THAT(answers(), ElementsAre(true));
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(m_confirmation.isAsking());
}

TEST_F(ConfirmationViewTest, EscapeCancels)
{
    ask();
    driver().press(Qt::Key_Escape);
    EXPECT_THAT(answers(), ElementsAre(false));
    EXPECT_FALSE(window().isVisible());
}

TEST_F(ConfirmationViewTest, TheCloseButtonCancels)
{
    ask();
    window().close();
    EXPECT_THAT(answers(), ElementsAre(false));
    EXPECT_FALSE(window().isVisible());
}

TEST_F(ConfirmationViewTest, ButtonsAnswer)
{
    ask();
    driver().click(u"alert-confirm"_s);
    EXPECT_THAT(answers(), ElementsAre(true));
    ask();
    driver().click(u"alert-cancel"_s);
    EXPECT_THAT(answers(), ElementsAre(true, false));
}

TEST_F(ConfirmationViewTest, EveryQuestionBeginsWithItsDefault)
{
    ask();
    driver().press(Qt::Key_Tab);
    driver().press(Qt::Key_Return);
    EXPECT_THAT(answers(), ElementsAre(false)) << "Tab moved to Cancel";
    ask();
    driver().press(Qt::Key_Return);
    EXPECT_THAT(answers(), ElementsAre(false, true));
}

TEST_F(ConfirmationViewTest, AskingAgainAsksNothingNew)
{
    ask();
    int others = 0;
    m_confirmation.ask(u"Another?"_s, u"Yes"_s, u"No"_s, [&others](bool) { ++others; });
    EXPECT_EQ(driver().text(u"alert-title"_s), u"Clear unpinned history?"_s);
    driver().press(Qt::Key_Return);
    EXPECT_THAT(answers(), ElementsAre(true));
    EXPECT_EQ(others, 0);
}

TEST_F(ConfirmationViewTest, IsAsHighAsItsTextNeeds)
{
    ask();
    const int height = window().height();
    driver().press(Qt::Key_Escape);
    ask(u"A question that is so long that it takes more than one line of the window, and more"_s);
    EXPECT_GT(window().height(), height);
    EXPECT_LE(driver().centerOf(u"alert-cancel"_s).y() + 15, window().height() - 10);
}

TEST_F(ConfirmationViewTest, WhoeverAsksMayLetItGoWhenAnswered)
{
    auto confirmation = std::make_unique<QuickConfirmation>();
    confirmation->ask(u"?"_s, u"Yes"_s, u"No"_s, [&confirmation](bool) { confirmation.reset(); });
    ViewDriver(confirmation->window()).press(Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(confirmation, nullptr);
}

TEST_F(ConfirmationViewTest, IsReadWithItsAnswers)
{
    ask();
    const QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"StaticText|Clear unpinned history?"_s)),
        (QStringList{
            u"StaticText|Clear unpinned history?"_s, u"Button|Clear"_s, u"Button|Cancel"_s}));
    EXPECT_TRUE(driver().accessible(u"alert-confirm"_s)->state().defaultButton);
}

} // namespace
} // namespace tessly::test
