#include "LaunchAtLoginService.h"

#include <QDir>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString identityKey = u"launchAtLoginRegistrationIdentity"_s;

constexpr auto requiresInstalledAppText = "Move Tessly to Applications first.";

QString stringValue(const Bundle& bundle, const QString& key)
{
    const QVariant value = bundle.objectForInfoDictionaryKey(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

const QString LaunchAtLoginService::installedBundlePath = u"/usr/bin/tessly"_s;

QString LaunchAtLoginService::RegistrationError::description() const
{
    return QString::fromUtf8(what());
}

const char* LaunchAtLoginService::RegistrationError::what() const noexcept
{
    switch (m_case) {
    case Case::requiresInstalledApp:
        break;
    }
    return requiresInstalledAppText;
}

LaunchAtLoginService::LaunchAtLoginService(Dependencies dependencies)
    : m_dependencies(dependencies)
{
}

bool LaunchAtLoginService::isEnabled() const
{
    return isInstalled() && m_dependencies.service.status() == LoginItem::Status::enabled;
}

void LaunchAtLoginService::setEnabled(bool enabled)
{
    const bool isRegistered = m_dependencies.service.status() == LoginItem::Status::enabled;
    if (!enabled) {
        if (isRegistered) {
            m_dependencies.service.unregisterItem();
            m_dependencies.defaults.remove(identityKey);
        }
        return;
    }
    if (!isInstalled()) {
        throw RegistrationError(RegistrationError::Case::requiresInstalledApp);
    }
    if (isRegistered) {
        repairRegistrationIfNeeded();
    } else {
        registerItem();
    }
}

void LaunchAtLoginService::repairRegistrationIfNeeded()
{
    if (!isEnabled() || m_dependencies.defaults.string(identityKey) == registrationIdentity()) {
        return;
    }
    m_dependencies.service.unregisterItem();
    registerItem();
}

bool LaunchAtLoginService::isInstalled() const
{
    return QDir::cleanPath(m_dependencies.bundle.bundlePath()) == installedBundlePath;
}

QString LaunchAtLoginService::registrationIdentity() const
{
    const Bundle& bundle = m_dependencies.bundle;
    return QStringList({
                           QDir::cleanPath(bundle.bundlePath()),
                           bundle.bundleIdentifier().value_or(QString()),
                           stringValue(bundle, u"CFBundleShortVersionString"_s),
                           stringValue(bundle, u"CFBundleVersion"_s),
                       })
        .join(u'|');
}

void LaunchAtLoginService::registerItem()
{
    m_dependencies.service.registerItem();
    m_dependencies.defaults.setString(identityKey, registrationIdentity());
}

} // namespace tessly
