#pragma once

#include "PasteTarget.h"

#include <memory>
#include <utility>

namespace tessly {

/// The application of a window that was in front, as a desktop knows it: `Window` is a
/// TrackedWindow, `Windows` what follows those.
///
/// It stands for that very window: a paste must not end up in another one, be it of the same
/// application. So it is terminated once that window is gone, or nothing can be known of it any
/// more; who derives says when that window has the keyboard.
template <typename Window, typename Windows>
class WindowApplication : public PasteTarget
{
public:
    /// May outlive what follows the windows; nothing is active then.
    WindowApplication(std::shared_ptr<const Window> window, std::weak_ptr<Windows> windows)
        : m_window(std::move(window))
        , m_windows(std::move(windows))
    {
    }

    [[nodiscard]] std::optional<QString> localizedName() const final
    {
        return m_window->owner().name;
    }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const final
    {
        return m_window->owner().applicationID;
    }
    [[nodiscard]] QStringList names() const final { return m_window->owner().names; }
    [[nodiscard]] PasteChord pasteChord() const final { return m_window->owner().chord; }
    [[nodiscard]] bool isTerminated() const final
    {
        return m_window->isGone() || m_windows.expired();
    }

    [[nodiscard]] const std::shared_ptr<const Window>& window() const { return m_window; }

protected:
    /// Null once it has gone.
    [[nodiscard]] std::shared_ptr<Windows> windows() const { return m_windows.lock(); }

private:
    std::shared_ptr<const Window> m_window;
    std::weak_ptr<Windows> m_windows;
};

} // namespace tessly
