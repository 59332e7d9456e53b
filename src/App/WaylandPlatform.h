#pragma once

#include "FocusedKeyEventPoster.h"
#include "FreedesktopPlatform.h"
#include "HotKeyCenter.h"
#include "KeySender.h"
#include "NoOutsideClickMonitor.h"
#include "StatusItem.h"
#include "WaylandDesktop.h"

namespace tessly {

/// A Wayland session whose compositor lets programs reach the clipboard.
class WaylandPlatform final : public FreedesktopPlatform
{
public:
    WaylandPlatform(const DesktopChoice& choice, const std::function<void()>& connectionLost);
    ~WaylandPlatform() override;

    Pasteboard& pasteboard() override { return *m_pasteboard; }
    Workspace& workspace() override { return *m_workspace; }
    KeyEventPoster& keys() override { return *m_keys; }
    OutsideClickMonitor& outsideClicks() override { return m_outsideClicks; }
    HotKeyCenter& hotKeys() override { return *m_hotKeys; }
    StatusItem& statusItem() override { return *m_statusItem; }

private:
    std::unique_ptr<Pasteboard> m_pasteboard;
    WaylandDesktop m_desktop;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<KeySender> m_sender;
    std::unique_ptr<KeyEventPoster> m_keys;
    NoOutsideClickMonitor m_outsideClicks;
    std::unique_ptr<HotKeyCenter> m_hotKeys;
    std::unique_ptr<StatusItem> m_statusItem;
};

} // namespace tessly
