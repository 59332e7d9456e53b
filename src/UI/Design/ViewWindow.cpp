#include "ViewWindow.h"

#include "SymbolProvider.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlEngine>

#include <utility>

using namespace Qt::StringLiterals;

void qml_register_types_Tessly_Design();

namespace tessly {

namespace {

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

void ViewWindow::setCloseRequested(std::function<void()> closeRequested)
{
    m_closeRequested = std::move(closeRequested);
}

bool ViewWindow::load(const QUrl& source, const QVariantMap& properties)
{
    setInitialProperties(properties);
    setSource(source);
    return isLoaded();
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

// The middle button would make a text field read the clipboard, and wait for its owner.

void ViewWindow::mousePressEvent(QMouseEvent* event)
{
    setShowsFocus(false);
    if (event->button() != Qt::MiddleButton) {
        QQuickView::mousePressEvent(event);
    }
}

void ViewWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton) {
        QQuickView::mouseReleaseEvent(event);
    }
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
