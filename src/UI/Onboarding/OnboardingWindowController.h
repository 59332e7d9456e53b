#pragma once

#include "OnboardingModel.h"
#include "WindowView.h"

#include <functional>
#include <memory>

namespace tessly {

/// Owns the welcome window and what is behind it. Closing the window completes nothing. Main thread
/// only.
class OnboardingWindowController
{
public:
    /// Asked at the first showing. Null if the window cannot be made.
    using ViewFactory = std::function<std::unique_ptr<WindowView>(OnboardingModel&)>;

    /// `model` must outlive this. `complete` is called from the event loop once the user has
    /// enabled the history, with the window still up; it may destroy this.
    OnboardingWindowController(
        AppModel& model, ViewFactory viewFactory, std::function<void()> complete);
    ~OnboardingWindowController();
    OnboardingWindowController(const OnboardingWindowController&) = delete;
    OnboardingWindowController& operator=(const OnboardingWindowController&) = delete;

    /// Shows the window and brings it to the front. Nothing happens if it cannot be made.
    void show();
    void close();
    [[nodiscard]] bool isShown() const;
    void setDesktop(const OnboardingDesktop& desktop) { m_onboarding.setDesktop(desktop); }

private:
    void completeSoon();

    ViewFactory m_viewFactory;
    std::function<void()> m_complete;
    OnboardingModel m_onboarding;
    std::unique_ptr<WindowView> m_view;
};

} // namespace tessly
