#pragma once

#include "HotKeyCenter.h"

#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace tessly {

/// (sa{sv}): a shortcut as the portal's GlobalShortcuts interface has it. What it is called there
/// stays, so that the user can give it other keys in the desktop's settings.
struct PortalShortcut
{
    QString id = {};
    /// "description", for people; "preferred_trigger", the keys.
    QVariantMap properties = {};

    bool operator==(const PortalShortcut&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& value);

/// The keys in the syntax of the desktops' "shortcuts" specification: "ALT+SHIFT+1". None if
/// HotKeyCenter has no such key or modifier.
[[nodiscard]] std::optional<QString> portalTrigger(quint32 keyCode, quint32 modifiers);

/// What the program's keys are called: "paste-3", "Paste entry 3", for the key with the id 3.
[[nodiscard]] PortalShortcut directPasteShortcut(HotKeyCenter::KeyID key);

} // namespace tessly

Q_DECLARE_METATYPE(tessly::PortalShortcut)
