#pragma once

#include <QPointer>
#include <QString>

#include <functional>

namespace tessly {

class DesktopPortal;

/// A session with the desktop's portal: what the user allowed lasts as long as it. Ends with this
/// object, and what is being asked for it then is answered as `failed`. Main thread only.
class PortalSession
{
public:
    /// Made by DesktopPortal::createSession.
    PortalSession(DesktopPortal& portal, QString path);
    ~PortalSession();
    PortalSession(const PortalSession&) = delete;
    PortalSession& operator=(const PortalSession&) = delete;

    /// Its object's path, by which calls name it.
    [[nodiscard]] const QString& path() const { return m_path; }
    /// False once the portal has ended it, or has gone.
    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    /// Called from the event loop when the portal ends it, or goes; not if that has happened.
    void setClosed(std::function<void()> closed);

private:
    friend class DesktopPortal;

    void setPath(const QString& path);
    void portalClosed();

    QPointer<DesktopPortal> m_portal;
    QString m_path;
    bool m_isOpen = true;
    std::function<void()> m_closed;
};

} // namespace tessly
