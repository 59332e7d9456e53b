#pragma once

#include "BusActions.h"

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace tessly {

/// The interface by which desktops start and activate applications.
class FreedesktopApplicationInterface final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    FreedesktopApplicationInterface(const BusActions& actions, QObject* parent);

public Q_SLOTS:
    void Activate(const QVariantMap& platformData) const;
    void Open(const QStringList& uris, const QVariantMap& platformData) const;
    void ActivateAction(
        const QString& action, const QVariantList& parameter,
        const QVariantMap& platformData) const;

private:
    BusActions m_actions;
};

} // namespace tessly
