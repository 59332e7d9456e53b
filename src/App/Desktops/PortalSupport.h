#pragma once

#include <QDBusConnection>
#include <QStringList>

#include <memory>

namespace tessly {

class PortalHotKeyCenter;
class PortalKeySender;
class RestoreTokenFile;

/// The connection to the session bus on which the portal is asked. Opened on a thread of its own.
[[nodiscard]] QDBusConnection connectPortal();

/// The one on which the extension of GNOME Shell is asked.
[[nodiscard]] QDBusConnection connectShell();

/// The one on which the portal is asked how programs are to look.
[[nodiscard]] QDBusConnection connectAppearance();

/// Where the leave to press keys is kept, in the data folder.
[[nodiscard]] std::unique_ptr<RestoreTokenFile> makeRestoreTokenFile();

/// Where it is kept, in the data folder, that the user refused hot keys.
[[nodiscard]] std::unique_ptr<RestoreTokenFile> makeHotKeyRefusalFile();

/// The portal's interfaces that are there. `sender` may be null.
[[nodiscard]] QStringList
portalProtocols(const PortalKeySender* sender, const PortalHotKeyCenter& hotKeys);

} // namespace tessly
