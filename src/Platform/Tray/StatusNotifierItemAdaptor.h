#pragma once

#include <QByteArray>
#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QList>
#include <QPoint>
#include <QString>

#include <functional>

namespace tessly {

// Structures of the protocol.

/// (iiay): width, height, and rows of pixels from the top, each as alpha, red, green, blue.
struct StatusPixmap
{
    int width = 0;
    int height = 0;
    QByteArray pixels = {};
};

/// (sa(iiay)ss): an icon by name or picture, a title and a text.
struct StatusToolTip
{
    QString iconName = {};
    QList<StatusPixmap> iconPixmap = {};
    QString title = {};
    QString text = {};
};

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& value);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& value);

/// The status item as trays see it: org.kde.StatusNotifierItem. Main thread only.
class StatusNotifierItemAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconThemePath READ none)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QList<tessly::StatusPixmap> IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ none)
    Q_PROPERTY(QList<tessly::StatusPixmap> OverlayIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionIconName READ none)
    Q_PROPERTY(QList<tessly::StatusPixmap> AttentionIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionMovieName READ none)
    Q_PROPERTY(tessly::StatusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ isMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)

public:
    struct Actions
    {
        std::function<void(QPoint)> activated;
        /// The program is to show the menu itself.
        std::function<void(QPoint)> contextMenu;
        /// The next window that comes up may take the focus with this token.
        std::function<void(const QString&)> activationToken;
    };

    /// `menuPath`: where the menu is for trays that draw it.
    StatusNotifierItemAdaptor(Actions actions, const QString& menuPath, QObject* parent);
    ~StatusNotifierItemAdaptor() override;

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString status() const;
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString none() const { return {}; }
    /// Empty unless the icon is installed: a name that the tray cannot find hides the pixmap.
    [[nodiscard]] QString iconName() const;
    [[nodiscard]] QList<StatusPixmap> iconPixmap() const;
    [[nodiscard]] QList<StatusPixmap> noPixmap() const { return {}; }
    [[nodiscard]] StatusToolTip toolTip() const;
    [[nodiscard]] bool isMenu() const { return false; }
    [[nodiscard]] QDBusObjectPath menu() const { return m_menuPath; }

    /// Items that are not active are put out of sight by trays.
    void setActive(bool active);

public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);
    /// Comes before the click or the menu's action that it is for.
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewToolTip();
    void NewStatus(const QString& status);

private:
    Actions m_actions;
    QDBusObjectPath m_menuPath;
    bool m_isActive = true;
};

} // namespace tessly

Q_DECLARE_METATYPE(tessly::StatusPixmap)
Q_DECLARE_METATYPE(tessly::StatusToolTip)
