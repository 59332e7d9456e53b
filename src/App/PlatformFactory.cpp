#include "PlatformFactory.h"

#include "WaylandPlatform.h"
#include "X11Platform.h"

namespace tessly {

std::unique_ptr<DesktopPlatform>
makeDesktopPlatform(const DesktopChoice& choice, std::function<void()> connectionLost)
{
    switch (choice.kind) {
    case DesktopChoice::Kind::x11:
    case DesktopChoice::Kind::xwayland:
        return std::make_unique<X11Platform>(choice, std::move(connectionLost));
    case DesktopChoice::Kind::wayland:
        return std::make_unique<WaylandPlatform>(choice, connectionLost);
    }
    Q_UNREACHABLE();
}

} // namespace tessly
