#pragma once

#include "Bundle.h"
#include "HotKeyCenter.h"
#include "ImageConverter.h"
#include "KeyEventPoster.h"
#include "LoginItem.h"
#include "OutsideClickMonitor.h"
#include "Pasteboard.h"
#include "StatusItem.h"
#include "Workspace.h"

#include <functional>
#include <memory>

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
};

/// Throws what makeDesktopPlatform would if there is no desktop. To be asked before the toolkit
/// starts, which ends the process in that case.
void expectDesktop();

/// Chooses what stands behind the interfaces, once, at start. Throws std::runtime_error with a
/// sentence for the user if there is no desktop. `connectionLost` is called, on the main thread, if
/// the desktop goes away while the program runs.
[[nodiscard]] std::unique_ptr<DesktopPlatform>
makeDesktopPlatform(std::function<void()> connectionLost);

} // namespace tessly
