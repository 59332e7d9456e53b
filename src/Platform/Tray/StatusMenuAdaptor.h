#pragma once

#include "StatusMenuLayout.h"

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

namespace tessly {

// Structures of the protocol.

/// (ia{sv}): a line's number and properties.
struct StatusMenuProperties
{
    int id = 0;
    QVariantMap properties = {};
};

/// (ia{sv}av): a line with those below it.
struct StatusMenuTree
{
    int id = 0;
    QVariantMap properties = {};
    QList<StatusMenuTree> children = {};
};

/// (isvu): what happened to a line.
struct StatusMenuEvent
{
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuProperties& value);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuTree& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuTree& value);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusMenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusMenuEvent& value);

/// The status menu for desktops that draw it themselves: com.canonical.dbusmenu. Main thread only.
class StatusMenuAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    struct Actions
    {
        /// The lines of an opening.
        std::function<std::vector<StatusMenuItem>()> menu;
        /// The menu is about to be shown.
        std::function<void()> opening;
        std::function<void(const QString& action)> chosen;
    };

    StatusMenuAdaptor(Actions actions, QObject* parent);
    ~StatusMenuAdaptor() override;

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const;
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(
        int parentId, int recursionDepth, const QStringList& propertyNames,
        tessly::StatusMenuTree& layout);
    [[nodiscard]] QList<tessly::StatusMenuProperties>
    GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) const;
    [[nodiscard]] QDBusVariant GetProperty(int id, const QString& name) const;
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<tessly::StatusMenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);

private:
    bool refresh();
    [[nodiscard]] bool isKnown(int id) const;

    Actions m_actions;
    StatusMenuLayout m_layout;
};

} // namespace tessly

Q_DECLARE_METATYPE(tessly::StatusMenuProperties)
Q_DECLARE_METATYPE(tessly::StatusMenuTree)
Q_DECLARE_METATYPE(tessly::StatusMenuEvent)
