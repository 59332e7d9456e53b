#include "WaylandPlatform.h"

#include "FocusedKeyEventPoster.h"
#include "NoPasteboard.h"
#include "PortalKeySender.h"
#include "PortalShortcut.h"
#include "PortalSupport.h"
#include "RestoreTokenFile.h"
#include "StatusItems.h"
#include "UnnamedWorkspace.h"
#include "WaylandDesktop.h"
#include "WaylandKeySender.h"
#include "WaylandPasteboard.h"
#include "WaylandWorkspace.h"

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// Portals have their backend chosen by the names in $XDG_CURRENT_DESKTOP.
PortalHotKeyCenter::Options hotKeyOptions(const WaylandDesktop& desktop)
{
    PortalHotKeyCenter::Options options = {.refusal = makeHotKeyRefusalFile()};
    const auto names = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    if (names.contains(u"KDE"_s, Qt::CaseInsensitive)) {
        options.describesKeys = true;
        options.trigger = [&desktop](quint32 keyCode, quint32 modifiers) {
            return kdeTrigger(keyCode, modifiers, [&desktop](std::uint32_t key) {
                return desktop.symbolWithShift(key);
            });
        };
    }
    return options;
}

} // namespace

WaylandPlatform::WaylandPlatform(
    const DesktopChoice& choice, Clock& clock, const std::function<void()>& connectionLost)
    : FreedesktopPlatform(choice)
    , m_portal(connectPortal, clock)
    , m_hotKeys(m_portal, clock, directPasteShortcut, hotKeyOptions(m_desktop))
    , m_statusItem(makeBusStatusItem())
{
    makePasteboard(choice, connectionLost);
    if (m_desktop.hasToplevels()) {
        m_workspace = std::make_unique<WaylandWorkspace>(m_desktop);
    } else {
        m_workspace = std::make_unique<UnnamedWorkspace>(nullptr);
    }
    makeKeys();
}

WaylandPlatform::~WaylandPlatform() = default;

void WaylandPlatform::makePasteboard(
    const DesktopChoice& choice, const std::function<void()>& connectionLost)
{
    if (!choice.hasClipboard) {
        m_pasteboard = std::make_unique<NoPasteboard>();
        return;
    }
    auto pasteboard = std::make_unique<WaylandPasteboard>();
    pasteboard->setConnectionLost(connectionLost);
    m_clipboard = PasteClipboard::of(*pasteboard);
    m_pasteboard = std::move(pasteboard);
}

void WaylandPlatform::makeKeys()
{
    if (m_desktop.hasVirtualKeyboard()) {
        m_sender = std::make_unique<VirtualKeyboardSender>(m_desktop);
    } else if (m_desktop.hasFakeInput()) {
        m_sender = std::make_unique<FakeInputSender>(m_desktop);
    } else {
        auto sender = std::make_unique<PortalKeySender>(
            m_portal, makeRestoreTokenFile(),
            [this](PasteChord chord) { return m_desktop.strokes(chord); });
        sender->setHeldKeys({.hotKeysUp = [this] { return m_hotKeys.keysUp(); }});
        m_portalSender = sender.get();
        m_sender = std::move(sender);
    }
    m_keys = std::make_unique<FocusedKeyEventPoster>(*m_sender, m_clipboard);
}

bool WaylandPlatform::openSettings(const QUrl& url)
{
    return m_portalSender != nullptr ? m_portalSender->askAgain()
                                     : FreedesktopPlatform::openSettings(url);
}

QStringList WaylandPlatform::protocols() const
{
    return FreedesktopPlatform::protocols() + portalProtocols(m_portalSender, m_hotKeys);
}

} // namespace tessly
