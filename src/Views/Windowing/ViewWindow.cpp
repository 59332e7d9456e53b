#include "ViewWindow.h"

#include "SymbolProvider.h"
#include "Tokens.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QQmlEngine>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

void qml_register_types_Tessly_Design();

namespace tessly {

namespace {

// Those that window managers show, in device pixels.
constexpr std::array iconSizes = {16, 24, 32, 48, 64};

/// Where the toolkit looks for a Wayland compositor's permission to take the focus, if there is
/// one.
constexpr auto activationTokenVariable = "XDG_ACTIVATION_TOKEN";

/// What has to be done once in a process, before its first window. Windows have no parent.
QWindow* prepared()
{
    static const bool isPrepared = [] {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        // The module is part of this library; nothing else refers to its types.
        qml_register_types_Tessly_Design();
        // At each copy in any application, a text field asks the clipboard what it could paste, and
        // waits for that application. It learns of copies by this object's signals alone.
        QGuiApplication::clipboard()->blockSignals(true);
        return true;
    }();
    Q_UNUSED(isPrepared)
    return nullptr;
}

} // namespace

ViewWindow::ViewWindow()
    : QQuickView(prepared())
{
    setResizeMode(SizeRootObjectToView);
    engine()->addImportPath(u"qrc:/qt/qml"_s);
    engine()->addImageProvider(u"symbol"_s, new SymbolProvider);
}

ViewWindow::ViewWindow(ViewWindow& other)
    : QQuickView(other.engine(), nullptr)
{
    setResizeMode(SizeRootObjectToView);
}

void ViewWindow::useIcon()
{
    const QColor color = tokenColors(QGuiApplication::palette()).accentSymbol;
    QIcon icon;
    for (const int size : iconSizes) {
        icon.addPixmap(
            QPixmap::fromImage(symbolImage(u"doc.on.clipboard.fill"_s, color, QSize(size, size))));
    }
    setIcon(icon);
}

void ViewWindow::setCloseRequested(std::function<void()> closeRequested)
{
    m_closeRequested = std::move(closeRequested);
}

void ViewWindow::bringToFront()
{
    raise();
    // The toolkit uses it up, newer ones already when the window is shown.
    if (qEnvironmentVariableIsSet(activationTokenVariable) &&
        QGuiApplication::platformName().startsWith(u"wayland"_s)) {
        requestActivate();
    }
}

bool ViewWindow::load(const QUrl& source, const QVariantMap& properties)
{
    setInitialProperties(properties);
    setSource(source);
    return isLoaded();
}

bool ViewWindow::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        setShowsFocus(false);
        [[fallthrough]];
    case QEvent::MouseButtonRelease:
        if (static_cast<QMouseEvent*>(event)->button() == Qt::MiddleButton) {
            // It would make a text field read the clipboard, and wait for its owner. The items get
            // events from here, not from the functions for each kind.
            event->accept();
            return true;
        }
        break;
    default:
        break;
    }
    return QQuickView::event(event);
}

void ViewWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        setShowsFocus(true);
        break;
    default:
        break;
    }
    QQuickView::keyPressEvent(event);
}

void ViewWindow::closeEvent(QCloseEvent* event)
{
    // It is for the view to hide it, and to tell of it.
    event->ignore();
    if (m_closeRequested) {
        m_closeRequested();
    }
}

void ViewWindow::setShowsFocus(bool shows)
{
    if (std::exchange(m_showsFocus, shows) != shows) {
        Q_EMIT showsFocusChanged();
    }
}

} // namespace tessly
