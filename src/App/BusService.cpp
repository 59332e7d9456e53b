#include "BusService.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QLoggingCategory>

#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.BusService")

} // namespace

BusService::BusService(BusActions actions, QObject* parent)
    : QObject(parent)
{
    const auto shared = std::make_shared<const BusActions>(std::move(actions));
    // Adaptors belong to the object they are made for.
    new BusInterface(shared, this);
    new FreedesktopApplicationInterface(shared, this);
}

BusService::~BusService()
{
    if (m_isRegistered) {
        auto bus = QDBusConnection::sessionBus();
        bus.unregisterObject(busPath);
        bus.unregisterService(busName);
    }
}

bool BusService::start()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCWarning(log) << "There is no session bus: other programs cannot reach Tessly.";
        return false;
    }
    // The object first: whoever sees the name may call at once.
    m_isRegistered = bus.registerObject(busPath, this) && bus.registerService(busName);
    if (!m_isRegistered) {
        qCWarning(log) << "Could not register on the session bus:" << bus.lastError().message();
    }
    return m_isRegistered;
}

BusInterface::BusInterface(std::shared_ptr<const BusActions> actions, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(std::move(actions))
{
}

void BusInterface::Show() const
{
    m_actions->show();
}

void BusInterface::Hide() const
{
    m_actions->hide();
}

void BusInterface::Toggle() const
{
    m_actions->toggle();
}

void BusInterface::Quit() const
{
    m_actions->quit();
}

FreedesktopApplicationInterface::FreedesktopApplicationInterface(
    std::shared_ptr<const BusActions> actions, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(std::move(actions))
{
}

void FreedesktopApplicationInterface::Activate(const QVariantMap& /*platformData*/) const
{
    m_actions->show();
}

void FreedesktopApplicationInterface::Open(
    const QStringList& /*uris*/, const QVariantMap& /*platformData*/) const
{
    m_actions->show();
}

void FreedesktopApplicationInterface::ActivateAction(
    const QString& /*action*/, const QVariantList& /*parameter*/,
    const QVariantMap& /*platformData*/) const
{
    // The desktop entry lists no actions.
}

} // namespace tessly
