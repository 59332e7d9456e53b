#pragma once

#include "PasteTarget.h"
#include "ShellWindow.h"

#include <memory>

namespace tessly {

class ShellExtension;

/// The application of a window that was in front, as GNOME Shell tells it.
///
/// It stands for that very window, as those of other desktops do; it is terminated once that window
/// is closed, or nothing can be known of it any more.
class ShellApplication final : public PasteTarget
{
public:
    /// May outlive the extension; nothing is active then.
    ShellApplication(
        std::shared_ptr<const ShellWindow> window, std::weak_ptr<ShellExtension> extension);

    [[nodiscard]] std::optional<QString> localizedName() const override;
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override;
    [[nodiscard]] QStringList names() const override;
    [[nodiscard]] bool isActive() const override;
    [[nodiscard]] bool isTerminated() const override;
    void activate() override;
    [[nodiscard]] PasteChord pasteChord() const override;

    [[nodiscard]] const std::shared_ptr<const ShellWindow>& window() const { return m_window; }

private:
    std::shared_ptr<const ShellWindow> m_window;
    std::weak_ptr<ShellExtension> m_extension;
};

} // namespace tessly
