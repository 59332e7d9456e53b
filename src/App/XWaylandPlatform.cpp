#include "XWaylandPlatform.h"

#include "PortalShortcut.h"
#include "PortalSupport.h"
#include "RestoreTokenFile.h"
#include "StatusItems.h"

#include <utility>

namespace tessly {

XWaylandPlatform::XWaylandPlatform(
    const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost)
    : FreedesktopPlatform(choice)
    , m_portal(connectPortal, clock)
    , m_sender(
          m_portal, makeRestoreTokenFile(),
          [this](PasteChord chord) { return m_compositor.strokes(chord); })
    , m_keys(m_sender, PasteClipboard::of(m_pasteboard))
    , m_hotKeys(m_portal, clock, directPasteShortcut, {.refusal = makeHotKeyRefusalFile()})
    , m_statusItem(makeBusStatusItem(), makeX11StatusItem(m_desktop))
{
    m_pasteboard.setConnectionLost(std::move(connectionLost));
    m_sender.setHeldKeys({.hotKeysUp = [this] { return m_hotKeys.keysUp(); }});
}

XWaylandPlatform::~XWaylandPlatform() = default;

bool XWaylandPlatform::openSettings(const QUrl&)
{
    return m_sender.askAgain();
}

QStringList XWaylandPlatform::protocols() const
{
    return FreedesktopPlatform::protocols() + portalProtocols(&m_sender, m_hotKeys);
}

} // namespace tessly
