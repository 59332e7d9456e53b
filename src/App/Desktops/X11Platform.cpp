#include "X11Platform.h"

#include "StatusItems.h"

#include <utility>

namespace tessly {

X11Platform::X11Platform(
    const DesktopChoice& choice, Clock& clock, std::function<void()> connectionLost)
    : FreedesktopPlatform(choice, clock)
    , m_keys(m_desktop, PasteClipboard::of(m_pasteboard), m_pasteboard.ownerWindow())
    , m_statusItem(makeBusStatusItem(), makeX11StatusItem(m_desktop))
{
    m_pasteboard.setConnectionLost(std::move(connectionLost));
}

X11Platform::~X11Platform() = default;

} // namespace tessly
