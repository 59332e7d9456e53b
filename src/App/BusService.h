#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace tessly {

inline const QString busName = QStringLiteral("com.brackmoor.tessly");
inline const QString busPath = QStringLiteral("/com/brackmoor/tessly");
inline const QString busInterface = QStringLiteral("com.brackmoor.tessly");

/// What other programs can ask of the running instance.
struct BusActions
{
    std::function<void()> show;
    std::function<void()> hide;
    std::function<void()> toggle;
    std::function<void()> quit;
};

/// The program on the session bus: its name, its own interface and the one every desktop
/// application has. Main thread only.
class BusService final : public QObject
{
    Q_OBJECT

public:
    explicit BusService(BusActions actions, QObject* parent = nullptr);
    ~BusService() override;

    /// Takes the name; false, with one line in the log, if there is no bus or the name is taken.
    bool start();

private:
    bool m_isRegistered = false;
};

/// The program's own interface.
class BusInterface final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.brackmoor.tessly")

public:
    BusInterface(std::shared_ptr<const BusActions> actions, QObject* parent);

public Q_SLOTS:
    void Show() const;
    void Hide() const;
    void Toggle() const;
    void Quit() const;

private:
    std::shared_ptr<const BusActions> m_actions;
};

/// The interface by which desktops start and activate applications.
class FreedesktopApplicationInterface final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    FreedesktopApplicationInterface(std::shared_ptr<const BusActions> actions, QObject* parent);

public Q_SLOTS:
    void Activate(const QVariantMap& platformData) const;
    void Open(const QStringList& uris, const QVariantMap& platformData) const;
    void ActivateAction(
        const QString& action, const QVariantList& parameter,
        const QVariantMap& platformData) const;

private:
    std::shared_ptr<const BusActions> m_actions;
};

} // namespace tessly
