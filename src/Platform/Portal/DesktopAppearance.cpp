#include "DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QMap>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString appearance = u"org.freedesktop.appearance"_s;
const QString schemeKey = u"color-scheme"_s;
const QString accentKey = u"accent-color"_s;

/// An answer that comes later counts as well.
constexpr std::chrono::seconds timeout{10};

/// Three numbers from 0 to 1, in sRGB. Others mean that there is none.
std::optional<QColor> colorIn(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "(ddd)"_L1) {
        return std::nullopt;
    }
    std::array<double, 3> parts{};
    argument.beginStructure();
    for (double& part : parts) {
        argument >> part;
    }
    argument.endStructure();
    // Not a number is in no range.
    const bool isColor =
        std::ranges::all_of(parts, [](double part) { return part >= 0 && part <= 1; });
    if (!isColor) {
        return std::nullopt;
    }
    return QColor::fromRgbF(
        static_cast<float>(parts[0]), static_cast<float>(parts[1]), static_cast<float>(parts[2]));
}

DesktopAppearance::Scheme schemeIn(const QVariant& value)
{
    if (value.typeId() == QMetaType::UInt && value.toUInt() == 1) {
        return DesktopAppearance::Scheme::dark;
    }
    if (value.typeId() == QMetaType::UInt && value.toUInt() == 2) {
        return DesktopAppearance::Scheme::light;
    }
    return DesktopAppearance::Scheme::noPreference;
}

} // namespace

DesktopAppearance::DesktopAppearance(BusPeer::Connect connect, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_portal(
          std::move(connect),
          {.service = u"org.freedesktop.portal.Desktop"_s,
           .path = u"/org/freedesktop/portal/desktop"_s,
           .interface = u"org.freedesktop.portal.Settings"_s},
          {u"SettingChanged"_s}, clock)
{
    // What a portal that has gone has told still holds: they are started anew as they are needed.
    QObject::connect(&m_portal, &BusPeer::ownerChanged, this, &DesktopAppearance::ask);
    QObject::connect(&m_portal, &BusPeer::received, this, &DesktopAppearance::settingChanged);
}

QPalette DesktopAppearance::palette() const
{
    QPalette palette;
    if (m_scheme != Scheme::noPreference) {
        const bool isDark = m_scheme == Scheme::dark;
        palette.setColor(QPalette::Window, isDark ? Qt::black : Qt::white);
        palette.setColor(QPalette::WindowText, isDark ? Qt::white : Qt::black);
    }
    if (m_accent) {
        palette.setColor(QPalette::Highlight, *m_accent);
    }
    return palette;
}

void DesktopAppearance::ask()
{
    if (m_portal.isThere()) {
        // The one method that all versions have for it.
        m_portal.call(
            u"ReadAll"_s, {QStringList{appearance}}, timeout,
            [this](const QDBusMessage& reply) { told(reply); });
    }
}

void DesktopAppearance::told(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != "a{sa{sv}}"_L1) {
        return;
    }
    const auto settings =
        qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst()).value(appearance);
    const bool isNewScheme = set(schemeKey, settings.value(schemeKey));
    const bool isNewAccent = set(accentKey, settings.value(accentKey));
    if (isNewScheme || isNewAccent) {
        Q_EMIT changed();
    }
}

void DesktopAppearance::settingChanged(const QDBusMessage& signal)
{
    if (signal.signature() != "ssv"_L1) {
        return;
    }
    const QVariantList arguments = signal.arguments();
    if (arguments[0].toString() == appearance &&
        set(arguments[1].toString(), arguments[2].value<QDBusVariant>().variant())) {
        Q_EMIT changed();
    }
}

bool DesktopAppearance::set(const QString& key, const QVariant& value)
{
    if (key == schemeKey) {
        const Scheme scheme = schemeIn(value);
        return std::exchange(m_scheme, scheme) != scheme;
    }
    if (key == accentKey) {
        const std::optional<QColor> accent = colorIn(value);
        return std::exchange(m_accent, accent) != accent;
    }
    return false;
}

} // namespace tessly
