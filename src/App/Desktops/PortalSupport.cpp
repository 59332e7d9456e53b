#include "PortalSupport.h"

#include "AppPaths.h"
#include "PortalHotKeyCenter.h"
#include "PortalKeySender.h"
#include "RestoreTokenFile.h"
#include "ThreadExecutor.h"

using namespace Qt::StringLiterals;

namespace tessly {

QDBusConnection connectPortal()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-portal"_s);
}

QDBusConnection connectShell()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-shell"_s);
}

QDBusConnection connectAppearance()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-appearance"_s);
}

std::unique_ptr<RestoreTokenFile> makeRestoreTokenFile()
{
    return std::make_unique<RestoreTokenFile>(
        AppPaths::applicationSupportDirectory() + u"/remote-desktop-token"_s,
        std::make_unique<ThreadExecutor>("tessly-token"));
}

std::unique_ptr<RestoreTokenFile> makeHotKeyRefusalFile()
{
    return std::make_unique<RestoreTokenFile>(
        AppPaths::applicationSupportDirectory() + u"/hot-keys-refused"_s,
        std::make_unique<ThreadExecutor>("tessly-refusal"));
}

QStringList portalProtocols(const PortalKeySender* sender, const PortalHotKeyCenter& hotKeys)
{
    QStringList protocols;
    if (sender != nullptr && sender->isAvailable()) {
        protocols.append(u"org.freedesktop.portal.RemoteDesktop"_s);
    }
    if (hotKeys.hasPortal()) {
        protocols.append(u"org.freedesktop.portal.GlobalShortcuts"_s);
    }
    return protocols;
}

} // namespace tessly
