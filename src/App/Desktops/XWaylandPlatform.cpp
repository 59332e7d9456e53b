#include "XWaylandPlatform.h"

#include "PortalShortcut.h"
#include "PortalSupport.h"
#include "RestoreTokenFile.h"
#include "ScreenPixels.h"
#include "StatusItems.h"
#include "X11WindowTracker.h"

#include <QCoroFuture>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The screen with the focused window, or else the primary one.
QRect screenOf(const std::optional<QRect>& focused)
{
    const QRect screen = focused ? screenAround(*focused, screenPixels()) : QRect();
    const QScreen* const primary = QGuiApplication::primaryScreen();
    return screen.isEmpty() && primary != nullptr ? primary->geometry() : screen;
}

} // namespace

XWaylandPlatform::XWaylandPlatform(
    const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost)
    : FreedesktopPlatform(choice, clock)
    , m_shell(std::make_shared<ShellExtension>(connectShell, clock))
    , m_portal(connectPortal, clock)
    , m_sender(
          m_portal, makeRestoreTokenFile(),
          [this](PasteChord chord) { return m_compositor.strokes(chord); })
    , m_keys(m_sender, PasteClipboard::of(m_pasteboard))
    , m_hotKeys(
          m_portal, clock, directPasteShortcut,
          {.refusesByOther = true, .refusal = makeHotKeyRefusalFile()})
    , m_statusItem(makeBusStatusItem(), makeX11StatusItem(m_desktop))
{
    m_pasteboard.setConnectionLost(std::move(connectionLost));
    m_sender.setHeldKeys({.hotKeysUp = [this] { return m_hotKeys.keysUp(); }});
}

XWaylandPlatform::~XWaylandPlatform() = default;

QCoro::Task<std::optional<QRect>> XWaylandPlatform::panelAnchor()
{
    // The X server knows where the pointer was when it was last over an X11 window. This object may
    // go while the others are asked.
    const std::weak_ptr<X11WindowTracker> windows = m_desktop.windows();
    if (const auto place = co_await m_shell->place()) {
        if (const QRect anchor = anchorAt(*place, screenPixels()); !anchor.isEmpty()) {
            co_return anchor;
        }
    }
    std::optional<QFuture<std::optional<QRect>>> asked;
    if (const auto there = windows.lock()) {
        asked = there->frontRectangle();
    }
    std::optional<QRect> focused;
    if (asked) {
        focused = co_await *asked;
    }
    co_return screenOf(focused);
}

QString XWaylandPlatform::recordingNote()
{
    const QString note = FreedesktopPlatform::recordingNote();
    return m_shell->isPresent()
               ? note
               : note +
                     u" To learn which application a copy is from, it needs its extension of GNOME "
                     "Shell: gnome-extensions enable tessly@brackmoor.com"_s;
}

bool XWaylandPlatform::askAgain()
{
    return m_sender.askAgain();
}

QStringList XWaylandPlatform::protocols() const
{
    QStringList protocols = FreedesktopPlatform::protocols();
    if (m_shell->isPresent()) {
        protocols.append(u"GNOME Shell extension"_s);
    }
    return protocols + portalProtocols(&m_sender, m_hotKeys);
}

} // namespace tessly
