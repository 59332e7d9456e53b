#pragma once

#include "Bundle.h"
#include "Clock.h"
#include "DesktopChoice.h"
#include "HotKeyCenter.h"
#include "ImageConverter.h"
#include "KeyEventPoster.h"
#include "LoginItem.h"
#include "OutsideClickMonitor.h"
#include "PanelView.h"
#include "Pasteboard.h"
#include "StatusItem.h"
#include "Workspace.h"

#include <QCoroTask>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// The desktop that the program runs on. Everything in it is used on the main thread and goes
/// before the QGuiApplication does.
class DesktopPlatform
{
public:
    DesktopPlatform() = default;
    DesktopPlatform(const DesktopPlatform&) = delete;
    DesktopPlatform& operator=(const DesktopPlatform&) = delete;
    virtual ~DesktopPlatform() = default;

    [[nodiscard]] virtual Pasteboard& pasteboard() = 0;
    [[nodiscard]] virtual Workspace& workspace() = 0;
    [[nodiscard]] virtual KeyEventPoster& keys() = 0;
    [[nodiscard]] virtual OutsideClickMonitor& outsideClicks() = 0;
    [[nodiscard]] virtual HotKeyCenter& hotKeys() = 0;
    [[nodiscard]] virtual StatusItem& statusItem() = 0;
    [[nodiscard]] virtual ImageConverter& imageConverter() = 0;
    [[nodiscard]] virtual LoginItem& loginItem() = 0;
    [[nodiscard]] virtual const Bundle& bundle() = 0;

    [[nodiscard]] virtual PanelSurface panelSurface() const { return PanelSurface::window; }
    /// Beside what the panel is shown where it is not known where the icon is (global,
    /// device-independent pixels): the pointer, or else the whole of a screen; empty if the desktop
    /// itself chooses one; none if there is no place. Asked once clicks outside are watched, unless
    /// the panel is kept open.
    [[nodiscard]] virtual QCoro::Task<std::optional<QRect>> panelAnchor();
    /// Has the desktop ask the user once more whether the program may press keys; false if it asks
    /// nobody.
    [[nodiscard]] virtual bool askAgain() { return false; }
    /// What recording and pasting need on this desktop, in a sentence or two for the user.
    [[nodiscard]] virtual QString recordingNote();
    [[nodiscard]] QString pastingNote();
    /// The names of what was found to work with.
    [[nodiscard]] virtual QStringList protocols() const = 0;
};

/// Makes what stands behind the interfaces, once, after the toolkit has started. Throws
/// std::runtime_error with a sentence for the user if the desktop has gone. `connectionLost` is
/// called, on the main thread, if it goes away while the program runs. `clock` must outlive it all.
[[nodiscard]] std::unique_ptr<DesktopPlatform> makeDesktopPlatform(
    const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost);

} // namespace tessly
