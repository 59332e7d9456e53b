#pragma once

#include "StatusMenuAdaptor.h"
#include "TestBus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

#include <optional>

namespace tessly::test {

/// A tray on the bus: watcher and host in one, as desktops have it, and as unwilling as a test
/// wants it.
class TrayHost final : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    enum class Behaviour { ordinary, refusesItems, neverAnswers };
    enum class Hosts { one, none };

    /// Takes the watcher's name.
    explicit TrayHost(
        const TestBus& bus, Behaviour behaviour = Behaviour::ordinary, Hosts hosts = Hosts::one);
    ~TrayHost() override;

    /// Who registered, by their names on the bus.
    [[nodiscard]] QStringList items() const { return m_items; }
    [[nodiscard]] bool hasHost() const { return m_hosts == Hosts::one; }
    [[nodiscard]] int protocolVersion() const { return 0; }
    void setHosts(Hosts hosts);

    // What a host asks of the item that registered last. All wait for the answer, with the event
    // loop running.

    [[nodiscard]] QVariantMap properties();
    void call(const QString& method, const QVariantList& arguments);
    StatusMenuTree menuLayout(int parent = 0, int depth = -1, QStringList names = {});
    QDBusMessage callMenu(const QString& method, const QVariantList& arguments);
    [[nodiscard]] quint32 revision() const { return m_revision; }

    /// The item's menu, path as it tells it.
    [[nodiscard]] QString menuPath();

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service);
    void layoutUpdated(uint revision, int parent);

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    QDBusMessage
    ask(const QString& path, const QString& interface, const QString& method,
        const QVariantList& arguments);

    QDBusConnection m_bus;
    Behaviour m_behaviour;
    Hosts m_hosts;
    QStringList m_items;
    quint32 m_revision = 0;
};

} // namespace tessly::test
