#pragma once

#include "Clock.h"
#include "SettingsModel.h"
#include "WindowView.h"

#include <chrono>
#include <functional>
#include <memory>

namespace tessly {

/// Shows the settings window, of which there is one, and lets go of its memory some time after it
/// was closed. Main thread only.
class SettingsWindowController
{
public:
    /// Asked when the window is needed. Null if it cannot be made.
    using ViewFactory = std::function<std::unique_ptr<WindowView>(SettingsModel&)>;

    /// A window that was closed is often opened again soon.
    static constexpr Clock::Duration viewIsKept = std::chrono::seconds(10);

    /// `clock` must outlive this.
    SettingsWindowController(
        SettingsModel::Dependencies dependencies, Clock& clock, ViewFactory viewFactory);
    ~SettingsWindowController();
    SettingsWindowController(const SettingsWindowController&) = delete;
    SettingsWindowController& operator=(const SettingsWindowController&) = delete;

    /// Shows the window with fresh figures, or brings it to the front. Nothing happens if it cannot
    /// be made.
    void show();
    void close();
    [[nodiscard]] bool isShown() const;

private:
    void viewDidClose();

    Clock& m_clock;
    ViewFactory m_viewFactory;
    SettingsModel m_settings;
    std::unique_ptr<WindowView> m_view;
    std::unique_ptr<Clock::Timer> m_viewTimer;
};

} // namespace tessly
