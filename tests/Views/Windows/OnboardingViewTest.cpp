#include "OnboardingModel.h"
#include "QtPrinting.h"
#include "WindowFixture.h"
#include "WindowViews.h"

#include <gmock/gmock.h>

#include <QScreen>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class OnboardingViewTest : public WindowFixture
{
protected:
    OnboardingViewTest() { m_view = makeOnboardingView(m_onboarding); }
    ~OnboardingViewTest() override { m_view.reset(); }

    [[nodiscard]] QString rowText(const QString& row, const QString& name)
    {
        QQuickItem* const found = ViewDriver::find(name, item(row));
        return found != nullptr ? found->property("text").toString() : QString();
    }

    int m_completions = 0;
    OnboardingModel m_onboarding{*m_model, [this] { ++m_completions; }};
};

TEST_F(OnboardingViewTest, HasTheSizeOfTheDesignInTheMiddleOfTheScreen)
{
    show();
    EXPECT_EQ(window().size(), QSize(650, 510));
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
    EXPECT_EQ(window().title(), u"Welcome to Tessly"_s);
    const QRect screen = window().screen()->availableGeometry();
    EXPECT_NEAR(window().geometry().center().x(), screen.center().x(), 1);
}

TEST_F(OnboardingViewTest, ShowsThreeThingsToKnow)
{
    show();
    EXPECT_EQ(text(u"onboarding-title"_s), u"Tessly"_s);
    EXPECT_EQ(rowText(u"permission-clipboard"_s, u"permission-title"_s), u"Clipboard history"_s);
    EXPECT_EQ(rowText(u"permission-clipboard"_s, u"permission-detail"_s), u"Choose Always Allow"_s);
    EXPECT_EQ(rowText(u"permission-keyboard"_s, u"permission-title"_s), u"Automatic paste"_s);
    EXPECT_EQ(
        rowText(u"permission-keyboard"_s, u"permission-detail"_s), u"Allow in Accessibility"_s);
    EXPECT_EQ(rowText(u"permission-lock.shield"_s, u"permission-title"_s), u"Local storage"_s);
    EXPECT_EQ(rowText(u"permission-lock.shield"_s, u"permission-detail"_s), u"No cloud"_s);
}

TEST_F(OnboardingViewTest, ShowsWhatEachComesToOnThisDesktop)
{
    m_onboarding.setDesktop(
        {.recording = u"recorded so"_s, .pasting = u"pasted so"_s, .storage = u"kept there"_s});
    show();
    EXPECT_EQ(rowText(u"permission-clipboard"_s, u"permission-note"_s), u"recorded so"_s);
    EXPECT_EQ(rowText(u"permission-keyboard"_s, u"permission-note"_s), u"pasted so"_s);
    EXPECT_EQ(rowText(u"permission-lock.shield"_s, u"permission-note"_s), u"kept there"_s);
}

TEST_F(OnboardingViewTest, WhatIsLongFitsAboveTheButton)
{
    m_onboarding.setDesktop(
        {.recording =
             u"Nothing to allow on this desktop. To learn which application a copy is from, "
             "it needs its extension of GNOME Shell: gnome-extensions enable "
             "tessly@brackmoor.com"_s,
         .pasting = u"GNOME will ask once whether Tessly may press keys."_s,
         .storage = u"In ~/.local/share/Tessly, for nobody else to read."_s,
         .hasTray = false});
    show();
    EXPECT_LE(
        item(u"onboarding-page"_s).property("contentHeight").toReal(),
        item(u"onboarding-page"_s).height());
}

TEST_F(OnboardingViewTest, WithoutATrayTheCommandCanBeCopied)
{
    show();
    EXPECT_EQ(find(u"copy-command"_s), nullptr);
    m_onboarding.setDesktop({.hasTray = false});
    click(u"copy-command"_s);
    EXPECT_EQ(m_pasteboard.pastedText(), "tessly toggle");
    EXPECT_EQ(m_completions, 0);
}

TEST_F(OnboardingViewTest, AClickEnables)
{
    show();
    click(u"enable-clipboard-history"_s);
    EXPECT_EQ(m_completions, 1);
    EXPECT_TRUE(m_settings.hasCompletedOnboarding());
}

TEST_F(OnboardingViewTest, ReturnEnablesFromTheStart)
{
    show();
    press(Qt::Key_Return);
    EXPECT_EQ(m_completions, 1);
    EXPECT_TRUE(m_settings.hasCompletedOnboarding());
}

TEST_F(OnboardingViewTest, TheKeyboardReachesBothButtons)
{
    show();
    ASSERT_TRUE(tabTo(u"enable-clipboard-history"_s));
    ASSERT_TRUE(tabTo(u"close"_s));
    press(Qt::Key_Space);
    EXPECT_FALSE(m_view->isShown());
    EXPECT_EQ(m_completions, 0);
}

TEST_F(OnboardingViewTest, ClosingEnablesNothing)
{
    int closings = 0;
    m_view->setEvents({.didClose = [&closings] { ++closings; }});
    show();
    click(u"close"_s);
    EXPECT_FALSE(m_view->isShown());
    show();
    press(Qt::Key_Escape);
    EXPECT_FALSE(m_view->isShown());
    show();
    window().close();
    EXPECT_FALSE(m_view->isShown());
    EXPECT_EQ(closings, 3);
    EXPECT_EQ(m_completions, 0);
    EXPECT_FALSE(m_settings.hasCompletedOnboarding());
}

TEST_F(OnboardingViewTest, IsReadInItsOrder)
{
    show();
    const QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"Dialog|Welcome to Tessly"_s)),
        (QStringList{
            u"Dialog|Welcome to Tessly"_s,
            u"Heading|Tessly"_s,
            u"StaticText|Clipboard history"_s,
            u"StaticText|Choose Always Allow"_s,
            u"StaticText|Automatic paste"_s,
            u"StaticText|Allow in Accessibility"_s,
            u"StaticText|Local storage"_s,
            u"StaticText|No cloud"_s,
            u"StaticText|To open Quick Paste, click the Tessly icon in the bar."_s,
            u"Button|Enable"_s,
            u"Button|Close"_s,
        }));
    EXPECT_TRUE(driver().accessible(u"enable-clipboard-history"_s)->state().defaultButton);
}

} // namespace
} // namespace tessly::test
