#include "PlatformFactory.h"

#include "WaylandPlatform.h"
#include "X11Platform.h"
#include "XWaylandPlatform.h"

#include <QCursor>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString nothingToAllow = u"Nothing to allow on this desktop."_s;

/// Empty for a desktop of which it is not known that it asks.
QString desktopName()
{
    const QStringList names =
        qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    if (names.contains(u"GNOME"_s)) {
        return u"GNOME"_s;
    }
    return names.contains(u"KDE"_s) ? u"Plasma"_s : QString();
}

} // namespace

QString DesktopPlatform::recordingNote()
{
    return pasteboard().access() == PasteboardAccess::available
               ? nothingToAllow
               : u"This desktop lets Tessly neither read nor write the clipboard."_s;
}

QString DesktopPlatform::pastingNote()
{
    if (keys().isAllowed()) {
        return nothingToAllow;
    }
    const QString name = desktopName();
    return name.isEmpty() ? u"Tessly asks the desktop once for the permission to press keys."_s
                          : name + u" will ask once whether Tessly may press keys."_s;
}

QCoro::Task<std::optional<QRect>> DesktopPlatform::panelAnchor()
{
    co_return QRect(QCursor::pos(), QSize(1, 1));
}

std::unique_ptr<DesktopPlatform>
makeDesktopPlatform(const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost)
{
    switch (choice.kind) {
    case DesktopChoice::Kind::x11:
        return std::make_unique<X11Platform>(choice, clock, std::move(connectionLost));
    case DesktopChoice::Kind::xwayland:
        return std::make_unique<XWaylandPlatform>(choice, clock, std::move(connectionLost));
    case DesktopChoice::Kind::wayland:
        return std::make_unique<WaylandPlatform>(choice, clock, connectionLost);
    }
    Q_UNREACHABLE();
}

} // namespace tessly
