#pragma once

#include "FallbackStatusItem.h"
#include "FreedesktopPlatform.h"
#include "X11Desktop.h"
#include "X11HotKeyCenter.h"
#include "X11KeyEventPoster.h"
#include "X11OutsideClickMonitor.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"

namespace tessly {

/// An X11 session.
class X11Platform final : public FreedesktopPlatform
{
public:
    X11Platform(const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost);
    ~X11Platform() override;

    Pasteboard& pasteboard() override { return m_pasteboard; }
    Workspace& workspace() override { return m_workspace; }
    KeyEventPoster& keys() override { return m_keys; }
    OutsideClickMonitor& outsideClicks() override { return m_outsideClicks; }
    HotKeyCenter& hotKeys() override { return m_hotKeys; }
    StatusItem& statusItem() override { return m_statusItem; }

private:
    X11Pasteboard m_pasteboard;
    X11Desktop m_desktop;
    X11Workspace m_workspace{m_desktop};
    X11KeyEventPoster m_keys;
    X11OutsideClickMonitor m_outsideClicks{m_desktop};
    X11HotKeyCenter m_hotKeys{m_desktop};
    FallbackStatusItem m_statusItem;
};

} // namespace tessly
