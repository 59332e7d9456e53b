#include "FreedesktopApplicationInterface.h"

#include "ActivationToken.h"

namespace tessly {

FreedesktopApplicationInterface::FreedesktopApplicationInterface(
    const BusActions& actions, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(actions)
{
}

void FreedesktopApplicationInterface::Activate(const QVariantMap& platformData) const
{
    m_actions.keepActivationToken(activationToken(platformData));
    m_actions.show();
}

void FreedesktopApplicationInterface::Open(
    const QStringList& /*uris*/, const QVariantMap& platformData) const
{
    m_actions.keepActivationToken(activationToken(platformData));
    m_actions.show();
}

void FreedesktopApplicationInterface::ActivateAction(
    const QString& /*action*/, const QVariantList& /*parameter*/,
    const QVariantMap& /*platformData*/) const
{
    // The desktop entry's actions are command lines.
}

} // namespace tessly
