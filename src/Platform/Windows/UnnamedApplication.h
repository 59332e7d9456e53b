#pragma once

#include "PasteTarget.h"

#include <functional>

namespace tessly {

/// Whatever had the keyboard before the program's panel took it, on desktops that do not tell what
/// that is. All that can be known of it is whether the keyboard is with the program itself.
class UnnamedApplication final : public PasteTarget
{
public:
    /// Whether one of the program's own windows has the keyboard. A read of memory.
    using HasOwnFocus = std::function<bool()>;

    /// Asks the toolkit for the window that has the focus.
    UnnamedApplication();
    explicit UnnamedApplication(HasOwnFocus hasOwnFocus);
    ~UnnamedApplication() override;

    [[nodiscard]] std::optional<QString> localizedName() const override { return std::nullopt; }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override { return std::nullopt; }
    [[nodiscard]] bool isActive() const override;
    /// Its end would not be told.
    [[nodiscard]] bool isTerminated() const override { return false; }
    /// Does nothing: it comes back to the front by itself when the panel closes, and a window of
    /// the program that the user went to meanwhile keeps the keyboard.
    void activate() override {}
    /// The one that most programs know.
    [[nodiscard]] PasteChord pasteChord() const override { return PasteChord::controlV; }
    /// The one that editors and terminals both know, which paste CLIPBOARD or PRIMARY by it.
    [[nodiscard]] PasteChord textPasteChord() const override { return PasteChord::shiftInsert; }

private:
    HasOwnFocus m_hasOwnFocus;
};

} // namespace tessly
