#include "PortalSession.h"

#include "DesktopPortal.h"

#include <utility>

namespace tessly {

PortalSession::PortalSession(DesktopPortal& portal, QString path)
    : m_portal(&portal)
    , m_path(std::move(path))
{
    m_portal->m_sessions.insert(m_path, this);
}

PortalSession::~PortalSession()
{
    if (m_portal && m_isOpen) {
        m_portal->m_sessions.remove(m_path);
        m_portal->endSession(m_path);
    }
}

void PortalSession::setClosed(std::function<void()> closed)
{
    m_closed = std::move(closed);
}

void PortalSession::setPath(const QString& path)
{
    if (m_portal && m_isOpen && path != m_path) {
        m_portal->m_sessions.remove(m_path);
        m_path = path;
        m_portal->m_sessions.insert(m_path, this);
    }
}

void PortalSession::portalClosed()
{
    m_isOpen = false;
    // What is done about it may end this object.
    if (const auto closed = std::exchange(m_closed, nullptr)) {
        closed();
    }
}

} // namespace tessly
