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
#include "WaylandOutsideClickMonitor.h"
#include "WaylandPasteboard.h"
#include "WaylandWorkspace.h"

#include <QCoroFuture>
#include <QGuiApplication>
#include <QScreen>

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

/// Empty if the pointer is on no screen that the toolkit knows of.
QCoro::Task<std::optional<QRect>> anchorAt(QFuture<std::optional<WaylandGround::Pointer>> pointer)
{
    const auto place = co_await pointer;
    const auto screens = QGuiApplication::screens();
    for (const QScreen* const screen : screens) {
        if (place && screen->name().toStdString() == place->output) {
            co_return QRect(
                screen->geometry().topLeft() + QPointF(place->x, place->y).toPoint(), QSize(1, 1));
        }
    }
    co_return QRect();
}

} // namespace

WaylandPlatform::WaylandPlatform(
    const DesktopChoice& choice, Clock& clock, const std::function<void()>& connectionLost)
    : FreedesktopPlatform(choice, clock)
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
    if (choice.hasLayerShell) {
        m_outsideClicks = std::make_unique<WaylandOutsideClickMonitor>(m_desktop);
    }
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

OutsideClickMonitor& WaylandPlatform::outsideClicks()
{
    if (m_outsideClicks) {
        return *m_outsideClicks;
    }
    return m_noOutsideClicks;
}

PanelSurface WaylandPlatform::panelSurface() const
{
    return m_outsideClicks ? PanelSurface::layer : PanelSurface::window;
}

QCoro::Task<std::optional<QRect>> WaylandPlatform::panelAnchor()
{
    if (!m_outsideClicks) {
        return FreedesktopPlatform::panelAnchor();
    }
    return anchorAt(m_outsideClicks->pointer());
}

bool WaylandPlatform::askAgain()
{
    return m_portalSender != nullptr && m_portalSender->askAgain();
}

QStringList WaylandPlatform::protocols() const
{
    return FreedesktopPlatform::protocols() + portalProtocols(m_portalSender, m_hotKeys);
}

} // namespace tessly
