#include "StatusNotifierItemAdaptor.h"

#include "StatusIcon.h"
#include "StatusItem.h"
#include "Workspace.h"

#include <QDBusMetaType>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr int largestPixmap = 64;

StatusPixmap pixmap(const StatusIcon::Drawing& drawing)
{
    StatusPixmap pixmap = {.width = drawing.size, .height = drawing.size};
    pixmap.pixels.reserve(static_cast<qsizetype>(drawing.opacity.size()) * 4);
    for (const std::uint8_t opacity : drawing.opacity) {
        // Trays do not agree on whether the colours are multiplied by the opacity. Those that
        // expect it turn the whole icon into a blob if they are not; the others show a darker edge
        // if they are.
        constexpr auto colour = StatusIcon::defaultColour;
        pixmap.pixels.append(static_cast<char>(opacity));
        for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) {
            pixmap.pixels.append(static_cast<char>((part * opacity + 127) / 255));
        }
    }
    return pixmap;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& value)
{
    argument.beginStructure();
    argument << value.width << value.height << value.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& value)
{
    argument.beginStructure();
    argument >> value.width >> value.height >> value.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& value)
{
    argument.beginStructure();
    argument << value.iconName << value.iconPixmap << value.title << value.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& value)
{
    argument.beginStructure();
    argument >> value.iconName >> value.iconPixmap >> value.title >> value.text;
    argument.endStructure();
    return argument;
}

StatusNotifierItemAdaptor::StatusNotifierItemAdaptor(
    Actions actions, const QString& menuPath, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(std::move(actions))
    , m_menuPath(menuPath)
{
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<QList<StatusPixmap>>();
    qDBusRegisterMetaType<StatusToolTip>();
}

StatusNotifierItemAdaptor::~StatusNotifierItemAdaptor() = default;

QString StatusNotifierItemAdaptor::id() const
{
    return ownBundleIdentifier;
}

QString StatusNotifierItemAdaptor::title() const
{
    return statusItemTitle;
}

QString StatusNotifierItemAdaptor::status() const
{
    return m_isActive ? u"Active"_s : u"Passive"_s;
}

void StatusNotifierItemAdaptor::setActive(bool active)
{
    if (std::exchange(m_isActive, active) != active) {
        Q_EMIT NewStatus(status());
    }
}

QString StatusNotifierItemAdaptor::iconName() const
{
    const QString installed = QStandardPaths::locate(
        QStandardPaths::GenericDataLocation,
        u"icons/hicolor/scalable/apps/"_s + ownBundleIdentifier + u".svg"_s);
    return installed.isEmpty() ? QString() : ownBundleIdentifier;
}

QList<StatusPixmap> StatusNotifierItemAdaptor::iconPixmap() const
{
    QList<StatusPixmap> pixmaps;
    for (const StatusIcon::Drawing& drawing : StatusIcon::drawings()) {
        if (drawing.size <= largestPixmap) {
            pixmaps << pixmap(drawing);
        }
    }
    return pixmaps;
}

StatusToolTip StatusNotifierItemAdaptor::toolTip() const
{
    return {.title = statusItemToolTip};
}

void StatusNotifierItemAdaptor::Activate(int x, int y)
{
    m_actions.activated({x, y});
}

void StatusNotifierItemAdaptor::SecondaryActivate(int x, int y)
{
    m_actions.activated({x, y});
}

void StatusNotifierItemAdaptor::ContextMenu(int x, int y)
{
    m_actions.contextMenu({x, y});
}

void StatusNotifierItemAdaptor::Scroll(int /*delta*/, const QString& /*orientation*/)
{
    // There is nothing to scroll through.
}

void StatusNotifierItemAdaptor::ProvideXdgActivationToken(const QString& token)
{
    m_actions.activationToken(token);
}

} // namespace tessly
