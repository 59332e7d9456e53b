#include "PlatformFactory.h"

#include "WaylandPlatform.h"
#include "X11Platform.h"
#include "XWaylandPlatform.h"

#include <QCursor>

namespace tessly {

QCoro::Task<std::optional<QRect>> DesktopPlatform::panelAnchor()
{
    co_return QRect(QCursor::pos(), QSize(1, 1));
}

std::unique_ptr<DesktopPlatform>
makeDesktopPlatform(const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost)
{
    switch (choice.kind) {
    case DesktopChoice::Kind::x11:
        return std::make_unique<X11Platform>(choice, std::move(connectionLost));
    case DesktopChoice::Kind::xwayland:
        return std::make_unique<XWaylandPlatform>(choice, clock, std::move(connectionLost));
    case DesktopChoice::Kind::wayland:
        return std::make_unique<WaylandPlatform>(choice, clock, connectionLost);
    }
    Q_UNREACHABLE();
}

} // namespace tessly
