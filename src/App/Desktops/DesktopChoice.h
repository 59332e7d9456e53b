#pragma once

#include "XServerProbe.h"

#include <QByteArray>
#include <QStringList>

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace tessly {

/// Which way leads to the desktop that the program runs on.
struct DesktopChoice
{
    enum class Kind {
        x11,
        /// A Wayland compositor that shows the clipboard only to programs with a window in front:
        /// by way of the X server it brings along, to which it mirrors the clipboard.
        xwayland,
        wayland,
    };

    Kind kind = Kind::x11;
    /// Whether the clipboard can be read and written at all.
    bool hasClipboard = true;
    /// Whether the panel can be a layer surface.
    bool hasLayerShell = false;
    /// The protocols found that the program has a use for, by their names.
    QStringList protocols = {};
    /// What the user should know of it; empty if there is nothing.
    QString remark = {};
    /// The X server without which the clipboard is out of reach, and that does not answer yet; null
    /// if none is waited for.
    std::shared_ptr<XServerProbe> awaited = nullptr;

    /// What $QT_QPA_PLATFORM has to be for it.
    [[nodiscard]] QByteArray toolkitPlatform() const;

    bool operator==(const DesktopChoice&) const = default;
};

/// What was found of a desktop.
struct DesktopFindings
{
    XServerProbe::Outcome xServer = XServerProbe::Outcome::absent;
    /// The interfaces that the compositor offers; none if there is no compositor.
    std::optional<std::set<std::string>> compositor = {};
};

/// None if there is no desktop at all.
[[nodiscard]] std::optional<DesktopChoice> desktopChoice(const DesktopFindings& findings);

/// Looks at the session and chooses. Waits for the compositor, and where it matters for the X
/// server: 5 s where the program can do something without it, 30 s where it cannot. Throws
/// std::runtime_error with a sentence for the user if there is no desktop.
[[nodiscard]] DesktopChoice chooseDesktop();

} // namespace tessly
