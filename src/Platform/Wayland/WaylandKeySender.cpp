#include "WaylandKeySender.h"

#include "WaylandDesktop.h"

#include <QCoroFuture>

namespace tessly {

WaylandKeySender::WaylandKeySender(WaylandDesktop& desktop, WaylandKeyboard::Way way)
    : m_desktop(desktop)
    , m_way(way)
{
}

bool WaylandKeySender::isAllowed() const
{
    return m_desktop.canPress(m_way);
}

bool WaylandKeySender::requestAccess()
{
    return isAllowed();
}

QCoro::Task<KeySender::Sending>
WaylandKeySender::send(PasteChord chord, std::shared_ptr<const PasteTarget>)
{
    co_return co_await m_desktop.press(m_way, chord);
}

} // namespace tessly
