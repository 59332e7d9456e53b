#include "OnboardingModel.h"

#include "AppModelFixture.h"
#include "FakeWindowView.h"
#include "OnboardingWindowController.h"
#include "QtPrinting.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {
namespace {

class OnboardingModelTest : public AppModelFixture
{
protected:
    /// What the next launch reads.
    [[nodiscard]] bool isCompletedAtTheNextLaunch()
    {
        return AppSettings(m_defaults).hasCompletedOnboarding();
    }

    /// Nothing else waits while these tests look.
    [[nodiscard]] bool isWatching() const { return m_clock.pending() > 0; }

    int m_completions = 0;
};

TEST_F(OnboardingModelTest, ShowsThreeThingsToKnow)
{
    const OnboardingModel onboarding(*m_model, [] {});
    QStringList rows;
    for (const QVariant& row : onboarding.rows()) {
        const auto permission = row.value<PermissionRow>();
        rows.append(permission.symbol + u'|' + permission.title + u'|' + permission.detail);
    }
    EXPECT_EQ(
        rows, (QStringList{
                  u"clipboard|Clipboard history|Choose Always Allow"_s,
                  u"keyboard|Automatic paste|Allow in Accessibility"_s,
                  u"lock.shield|Local storage|No cloud"_s}));
}

TEST_F(OnboardingModelTest, TellsOfEachThingWhatItComesToOnThisDesktop)
{
    OnboardingModel onboarding(*m_model, [] {});
    onboarding.setDesktop(
        {.recording = u"recorded so"_s, .pasting = u"pasted so"_s, .storage = u"kept there"_s});
    QStringList notes;
    for (const QVariant& row : onboarding.rows()) {
        notes.append(row.value<PermissionRow>().note);
    }
    EXPECT_EQ(notes, (QStringList{u"recorded so"_s, u"pasted so"_s, u"kept there"_s}));
}

TEST_F(OnboardingModelTest, TellsHowToOpenThePanel)
{
    OnboardingModel onboarding(*m_model, [] {});
    int changes = 0;
    QObject::connect(&onboarding, &OnboardingModel::desktopChanged, [&changes] { ++changes; });
    EXPECT_TRUE(onboarding.hint().contains(u"icon"_s));
    EXPECT_EQ(onboarding.command(), QString());
    onboarding.setDesktop({.hasTray = true});
    EXPECT_EQ(changes, 0);
    onboarding.setDesktop({.hasTray = false});
    EXPECT_TRUE(onboarding.hint().contains(u"“tessly toggle”"_s));
    EXPECT_EQ(onboarding.command(), u"tessly toggle"_s);
    EXPECT_EQ(changes, 1);
    onboarding.setDesktop({.hasTray = true});
    EXPECT_EQ(onboarding.command(), QString()) << "one that appears later counts";
}

TEST_F(OnboardingModelTest, TheCommandIsCopiedAndNotRecorded)
{
    OnboardingModel onboarding(*m_model, [] {});
    onboarding.setDesktop({.hasTray = false});
    m_model->clipboardMonitor().start();
    onboarding.copyCommand();
    pass(5s);
    EXPECT_EQ(m_pasteboard.pastedText(), "tessly toggle");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(OnboardingModelTest, EnablingDoesItsStepsInOrder)
{
    // What is done already when each of the later steps comes.
    QStringList steps;
    PasteService pasteService(
        m_pasteboard, m_keys, m_clock,
        {.checkAutomaticPasteAccess =
             [this, &steps] {
                 steps.append(isWatching() ? u"check late"_s : u"check"_s);
                 return false;
             },
         .requestAutomaticPasteAccess =
             [this, &steps] {
                 steps.append(
                     m_settings.hasCompletedOnboarding() ? u"request"_s : u"request early"_s);
                 return false;
             }});
    m_model = std::make_unique<AppModel>(AppModel::Dependencies{
        *m_store, m_settings, pasteService, m_launchAtLogin, m_pasteboard, m_converter, m_workspace,
        m_clock});
    steps.clear();
    save("one");
    OnboardingModel onboarding(*m_model, [this, &steps] {
        steps.append(isWatching() ? u"complete"_s : u"complete early"_s);
    });
    onboarding.enable();
    EXPECT_EQ(steps, (QStringList{u"request"_s, u"check"_s, u"complete"_s}));
    EXPECT_TRUE(isCompletedAtTheNextLaunch());
    run();
    EXPECT_THAT(texts(), ElementsAre("one")) << "the history is loaded";
    m_model.reset();
}

TEST_F(OnboardingModelTest, AccessIsNotRetried)
{
    m_keys.setAllowed(false);
    OnboardingModel onboarding(*m_model, [] {});
    onboarding.enable();
    m_model->clipboardMonitor().stop();
    run();
    pass(1min);
    EXPECT_EQ(m_clock.pending(), 0U) << "nothing asks again";
    EXPECT_FALSE(m_model->automaticPasteAccessGranted());
}

TEST_F(OnboardingModelTest, EnablingTwiceCompletesOnce)
{
    OnboardingModel onboarding(*m_model, [this] { ++m_completions; });
    onboarding.enable();
    onboarding.enable();
    EXPECT_EQ(m_completions, 1);
}

TEST_F(OnboardingModelTest, WhatWasCopiedBeforeIsNotRecorded)
{
    OnboardingModel onboarding(*m_model, [] {});
    m_pasteboard.copyText("before");
    pass(5s);
    onboarding.enable();
    pass(5s);
    EXPECT_THAT(stored(), IsEmpty());
    m_pasteboard.copyText("after");
    pass(1s);
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_THAT(texts(), ElementsAre("after"));
}

class OnboardingWindowControllerTest : public OnboardingModelTest
{
protected:
    OnboardingWindowControllerTest()
    {
        m_controller = std::make_unique<OnboardingWindowController>(
            *m_model,
            [this](OnboardingModel& onboarding) {
                m_onboarding = &onboarding;
                auto view = std::make_unique<FakeWindowView>(m_record);
                m_view = view.get();
                return view;
            },
            [this] {
                ++m_completions;
                // As the program does it.
                m_controller->close();
                m_controller.reset();
            });
    }

    FakeWindowView::Record m_record;
    FakeWindowView* m_view = nullptr;
    OnboardingModel* m_onboarding = nullptr;
    std::unique_ptr<OnboardingWindowController> m_controller;
};

TEST_F(OnboardingWindowControllerTest, EnablingEndsItOnceTheButtonsPressIsOver)
{
    m_controller->show();
    EXPECT_TRUE(m_controller->isShown());
    m_onboarding->enable();
    EXPECT_EQ(m_completions, 0);
    EXPECT_TRUE(m_record.isAlive) << "its window is in the middle of an event";
    run();
    EXPECT_EQ(m_completions, 1);
    EXPECT_EQ(m_controller, nullptr);
    EXPECT_FALSE(m_record.isAlive);
    EXPECT_EQ(m_record.closings, 1);
    EXPECT_TRUE(isCompletedAtTheNextLaunch());
    EXPECT_TRUE(isWatching());
}

TEST_F(OnboardingWindowControllerTest, ClosingTheWindowCompletesNothing)
{
    m_controller->show();
    m_view->closeByUser();
    run();
    EXPECT_FALSE(m_controller->isShown());
    EXPECT_EQ(m_completions, 0);
    EXPECT_FALSE(isCompletedAtTheNextLaunch());
    EXPECT_FALSE(isWatching());
}

TEST_F(OnboardingWindowControllerTest, AControllerThatGoesBeforeItIsToldIsNotTold)
{
    m_controller->show();
    m_onboarding->enable();
    m_controller.reset();
    run();
    EXPECT_EQ(m_completions, 0);
}

TEST_F(OnboardingWindowControllerTest, BringsTheWindowToTheFrontWhenAskedAgain)
{
    m_controller->show();
    m_controller->show();
    EXPECT_EQ(m_record.showings, 2);
}

TEST_F(OnboardingWindowControllerTest, WithoutAWindowNothingHappens)
{
    OnboardingWindowController controller(
        *m_model, [](OnboardingModel&) { return std::unique_ptr<WindowView>(); }, [] {});
    controller.show();
    EXPECT_FALSE(controller.isShown());
    controller.close();
}

} // namespace
} // namespace tessly::test
