#pragma once

#include "PasteTarget.h"
#include "X11Window.h"

#include <memory>

namespace tessly {

class X11WindowTracker;

/// The application of a window that was in front.
///
/// It stands for that very window: a paste must not end up in another one, be it of the same
/// application. So it is active when that window has the keyboard, and terminated once that window
/// is destroyed.
class X11RunningApplication final : public PasteTarget
{
public:
    /// May outlive the tracker; nothing is active then.
    X11RunningApplication(
        std::shared_ptr<const X11Window> window, std::weak_ptr<X11WindowTracker> windows);

    [[nodiscard]] std::optional<QString> localizedName() const override;
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override;
    [[nodiscard]] QStringList names() const override;
    [[nodiscard]] bool isActive() const override;
    [[nodiscard]] bool isTerminated() const override;
    void activate() override;
    [[nodiscard]] PasteChord pasteChord() const override;

    [[nodiscard]] const std::shared_ptr<const X11Window>& window() const { return m_window; }

private:
    std::shared_ptr<const X11Window> m_window;
    std::weak_ptr<X11WindowTracker> m_windows;
};

} // namespace tessly
