#pragma once

#include "BusPeer.h"

#include <QColor>
#include <QObject>
#include <QPalette>
#include <QVariant>

#include <optional>

namespace tessly {

/// How the user wants programs to look, as the desktop's portal tells it
/// (org.freedesktop.portal.Settings, namespace org.freedesktop.appearance). A portal that is not
/// running is not started for it; one that comes later is heard. Main thread only; nothing waits.
class DesktopAppearance final : public QObject
{
    Q_OBJECT

public:
    /// The values of `color-scheme`.
    enum class Scheme { noPreference, dark, light };

    /// `connect` opens the connection to the session bus, on a thread of its own. `clock` must
    /// outlive this.
    DesktopAppearance(BusPeer::Connect connect, Clock& clock, QObject* parent = nullptr);

    /// No preference, and no accent, where nobody tells.
    [[nodiscard]] Scheme scheme() const { return m_scheme; }
    [[nodiscard]] std::optional<QColor> accent() const { return m_accent; }

    /// What to set in the application's palette. The other roles are the toolkit's own.
    [[nodiscard]] QPalette palette() const;

Q_SIGNALS:
    void changed();

private:
    void ask();
    void told(const QDBusMessage& reply);
    void settingChanged(const QDBusMessage& signal);
    /// Whether that made a difference. What is of the wrong type counts as not told.
    bool set(const QString& key, const QVariant& value);

    BusPeer m_portal;
    Scheme m_scheme = Scheme::noPreference;
    std::optional<QColor> m_accent;
};

} // namespace tessly
