#pragma once

#include "HotKeyCenter.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <functional>
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

/// XKB's name of what a key types with Shift, empty where it is not known. `key` as in
/// linux/input-event-codes.h.
using SymbolWithShift = std::function<QByteArray(std::uint32_t key)>;

/// The same for KDE, which compares a shortcut with what the key types, Shift left out where typing
/// it took Shift: on an American keyboard Alt+Shift+1 is "ALT+exclam" there and nothing else is, on
/// a French one "ALT+1".
[[nodiscard]] std::optional<QString>
kdeTrigger(quint32 keyCode, quint32 modifiers, const SymbolWithShift& symbolWithShift);

/// What the program's keys are called: "paste-03", "Paste entry 03", for the key with the id 3.
/// With two digits, since some desktops list them in the order of the ones, some in that of the
/// others.
[[nodiscard]] PortalShortcut directPasteShortcut(HotKeyCenter::KeyID key);

} // namespace tessly

Q_DECLARE_METATYPE(tessly::PortalShortcut)
