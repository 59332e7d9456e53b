#pragma once

#include "FallbackStatusItem.h"
#include "FocusedKeyEventPoster.h"
#include "FreedesktopPlatform.h"
#include "PortalHotKeyCenter.h"
#include "PortalKeySender.h"
#include "ShellExtension.h"
#include "ShellWorkspace.h"
#include "UnnamedWorkspace.h"
#include "WaylandDesktop.h"
#include "X11Desktop.h"
#include "X11OutsideClickMonitor.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"

namespace tessly {

/// A Wayland session whose clipboard can only be reached by way of its X server. That shows the
/// windows of X11 programs and no others, and takes keys for those alone; GNOME Shell tells of the
/// others where the program's extension of it is enabled.
class XWaylandPlatform final : public FreedesktopPlatform
{
public:
    XWaylandPlatform(
        const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost);
    ~XWaylandPlatform() override;

    Pasteboard& pasteboard() override { return m_pasteboard; }
    Workspace& workspace() override { return m_workspace; }
    KeyEventPoster& keys() override { return m_keys; }
    OutsideClickMonitor& outsideClicks() override { return m_outsideClicks; }
    HotKeyCenter& hotKeys() override { return m_hotKeys; }
    StatusItem& statusItem() override { return m_statusItem; }
    [[nodiscard]] QCoro::Task<std::optional<QRect>> panelAnchor() override;
    [[nodiscard]] QString recordingNote() override;
    [[nodiscard]] bool askAgain() override;
    [[nodiscard]] QStringList protocols() const override;

private:
    X11Pasteboard m_pasteboard;
    X11Desktop m_desktop;
    X11Workspace m_x11Workspace{m_desktop};
    UnnamedWorkspace m_unnamedWorkspace{&m_x11Workspace};
    const std::shared_ptr<ShellExtension> m_shell;
    ShellWorkspace m_workspace{m_shell, m_unnamedWorkspace};
    X11OutsideClickMonitor m_outsideClicks{m_desktop};
    /// For the user's keyboard.
    WaylandDesktop m_compositor;
    DesktopPortal m_portal;
    PortalKeySender m_sender;
    FocusedKeyEventPoster m_keys;
    PortalHotKeyCenter m_hotKeys;
    FallbackStatusItem m_statusItem;
};

} // namespace tessly
