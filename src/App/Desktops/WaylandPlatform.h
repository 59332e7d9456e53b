#pragma once

#include "DesktopPortal.h"
#include "FreedesktopPlatform.h"
#include "KeySender.h"
#include "NoOutsideClickMonitor.h"
#include "PasteClipboard.h"
#include "PortalHotKeyCenter.h"
#include "WaylandDesktop.h"

namespace tessly {

class PortalKeySender;
class WaylandOutsideClickMonitor;

/// A Wayland session, without any X server. Compositors differ in what they let programs do: each
/// thing is done in the first way that is there.
class WaylandPlatform final : public FreedesktopPlatform
{
public:
    WaylandPlatform(
        const DesktopChoice& choice, Clock& clock, const std::function<void()>& connectionLost);
    ~WaylandPlatform() override;

    Pasteboard& pasteboard() override { return *m_pasteboard; }
    Workspace& workspace() override { return *m_workspace; }
    KeyEventPoster& keys() override { return *m_keys; }
    OutsideClickMonitor& outsideClicks() override;
    HotKeyCenter& hotKeys() override { return m_hotKeys; }
    StatusItem& statusItem() override { return *m_statusItem; }
    [[nodiscard]] PanelSurface panelSurface() const override;
    [[nodiscard]] QCoro::Task<std::optional<QRect>> panelAnchor() override;
    [[nodiscard]] bool askAgain() override;
    [[nodiscard]] QStringList protocols() const override;

private:
    void makePasteboard(const DesktopChoice& choice, const std::function<void()>& connectionLost);
    void makeKeys();

    WaylandDesktop m_desktop;
    DesktopPortal m_portal;
    PortalHotKeyCenter m_hotKeys;
    std::unique_ptr<Pasteboard> m_pasteboard;
    PasteClipboard m_clipboard;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<KeySender> m_sender;
    /// The same, if it is the portal's.
    PortalKeySender* m_portalSender = nullptr;
    std::unique_ptr<KeyEventPoster> m_keys;
    NoOutsideClickMonitor m_noOutsideClicks;
    /// Where the panel is a layer surface.
    std::unique_ptr<WaylandOutsideClickMonitor> m_outsideClicks;
    std::unique_ptr<StatusItem> m_statusItem;
};

} // namespace tessly
