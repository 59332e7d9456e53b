#include "StatusMenuAdaptor.h"

#include <QDBusMetaType>
#include <QLocale>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The properties that were asked for; all if none were named.
QVariantMap selected(QVariantMap properties, const QStringList& names)
{
    if (!names.isEmpty()) {
        properties.removeIf([&names](const auto& entry) { return !names.contains(entry.key()); });
    }
    return properties;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuProperties& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuProperties& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuTree& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const StatusMenuTree& child : value.children) {
        argument << QDBusVariant(QVariant::fromValue(child));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuTree& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        value.children << qdbus_cast<StatusMenuTree>(child.variant());
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuEvent& value)
{
    argument.beginStructure();
    argument << value.id << value.name << value.data << value.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuEvent& value)
{
    argument.beginStructure();
    argument >> value.id >> value.name >> value.data >> value.timestamp;
    argument.endStructure();
    return argument;
}

StatusMenuAdaptor::StatusMenuAdaptor(Actions actions, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(std::move(actions))
{
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<StatusMenuProperties>();
    qDBusRegisterMetaType<QList<StatusMenuProperties>>();
    qDBusRegisterMetaType<StatusMenuTree>();
    qDBusRegisterMetaType<StatusMenuEvent>();
    qDBusRegisterMetaType<QList<StatusMenuEvent>>();
}

StatusMenuAdaptor::~StatusMenuAdaptor() = default;

QString StatusMenuAdaptor::textDirection() const
{
    return QLocale().textDirection() == Qt::RightToLeft ? u"rtl"_s : u"ltr"_s;
}

bool StatusMenuAdaptor::refresh()
{
    return m_layout.update(m_actions.menu());
}

bool StatusMenuAdaptor::isKnown(int id) const
{
    return m_layout.properties(id).has_value();
}

uint StatusMenuAdaptor::GetLayout(
    int parentId, int recursionDepth, const QStringList& propertyNames, StatusMenuTree& layout)
{
    // Also for desktops that do not say when they open the menu.
    refresh();
    layout = {
        .id = parentId,
        .properties =
            selected(m_layout.properties(parentId).value_or(QVariantMap()), propertyNames),
    };
    if (parentId == StatusMenuLayout::root && recursionDepth != 0) {
        for (const int line : m_layout.lines()) {
            layout.children << StatusMenuTree{
                .id = line,
                .properties = selected(*m_layout.properties(line), propertyNames),
            };
        }
    }
    return m_layout.revision();
}

QList<StatusMenuProperties>
StatusMenuAdaptor::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) const
{
    QList<int> wanted = ids;
    if (wanted.isEmpty()) {
        wanted = {m_layout.lines().begin(), m_layout.lines().end()};
    }
    QList<StatusMenuProperties> found;
    for (const int id : std::as_const(wanted)) {
        if (const auto properties = m_layout.properties(id)) {
            found << StatusMenuProperties{id, selected(*properties, propertyNames)};
        }
    }
    return found;
}

QDBusVariant StatusMenuAdaptor::GetProperty(int id, const QString& name) const
{
    const QVariant value = m_layout.properties(id).value_or(QVariantMap()).value(name);
    // There is no way to send nothing.
    return QDBusVariant(value.isValid() ? value : QVariant(QString()));
}

void StatusMenuAdaptor::Event(
    int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/)
{
    if (eventId != "clicked"_L1) {
        return;
    }
    if (const auto action = m_layout.action(id)) {
        m_actions.chosen(*action);
    }
}

QList<int> StatusMenuAdaptor::EventGroup(const QList<StatusMenuEvent>& events)
{
    QList<int> unknown;
    for (const StatusMenuEvent& event : events) {
        if (isKnown(event.id)) {
            Event(event.id, event.name, event.data, event.timestamp);
        } else {
            unknown << event.id;
        }
    }
    return unknown;
}

bool StatusMenuAdaptor::AboutToShow(int id)
{
    if (id != StatusMenuLayout::root) {
        return false;
    }
    m_actions.opening();
    const bool isChanged = refresh();
    if (isChanged) {
        // Some desktops go by this, others by the answer.
        Q_EMIT LayoutUpdated(m_layout.revision(), StatusMenuLayout::root);
    }
    return isChanged;
}

QList<int> StatusMenuAdaptor::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors)
{
    QList<int> changed;
    for (const int id : ids) {
        if (id == StatusMenuLayout::root && AboutToShow(id)) {
            changed << id;
        } else if (id != StatusMenuLayout::root && !isKnown(id)) {
            idErrors << id;
        }
    }
    return changed;
}

} // namespace tessly
