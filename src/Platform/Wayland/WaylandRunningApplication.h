#pragma once

#include "PasteTarget.h"
#include "TrackedWindow.h"

#include <memory>

namespace tessly {

class WaylandToplevels;

/// The application of a window that was in front.
///
/// It stands for that very window: a paste must not end up in another one, be it of the same
/// application. So it is active while the compositor calls that window activated, and terminated
/// once that window is closed, or nothing can be known of it any more.
class WaylandRunningApplication final : public PasteTarget
{
public:
    /// May outlive what follows the windows; nothing is active then.
    WaylandRunningApplication(
        std::shared_ptr<const TrackedWindow> window, std::weak_ptr<WaylandToplevels> windows);

    [[nodiscard]] std::optional<QString> localizedName() const override;
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override;
    [[nodiscard]] QStringList names() const override;
    [[nodiscard]] bool isActive() const override;
    [[nodiscard]] bool isTerminated() const override;
    void activate() override;
    [[nodiscard]] PasteChord pasteChord() const override;

    [[nodiscard]] const std::shared_ptr<const TrackedWindow>& window() const { return m_window; }

private:
    std::shared_ptr<const TrackedWindow> m_window;
    std::weak_ptr<WaylandToplevels> m_windows;
};

} // namespace tessly
