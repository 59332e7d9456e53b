#include "PanelWindow.h"

#include "PanelModel.h"
#include "SymbolProvider.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlEngine>
#include <QQuickItem>

#include <utility>

using namespace Qt::StringLiterals;

void qml_register_types_Tessly_Panel();

namespace tessly {

PanelWindow::PanelWindow(PanelModel& model, Handlers handlers)
    : m_handlers(std::move(handlers))
{
    // The module is part of this library; nothing else refers to its types.
    static const bool registered = (qml_register_types_Tessly_Panel(), true);
    Q_UNUSED(registered)

    setFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setTitle(u"Tessly"_s);
    setColor(Qt::transparent);
    setResizeMode(SizeRootObjectToView);
    engine()->addImportPath(u"qrc:/qt/qml"_s);
    engine()->addImageProvider(u"symbol"_s, new SymbolProvider);
    setInitialProperties({{u"panel"_s, QVariant::fromValue(&model)}});
    setSource(QUrl(u"qrc:/qt/qml/Tessly/Panel/Panel.qml"_s));
}

void PanelWindow::keyPressEvent(QKeyEvent* event)
{
    // A menu that is open takes the keys, as any desktop's does.
    const bool menuIsOpen =
        rootObject() != nullptr && rootObject()->property("menuIsOpen").toBool();
    if (!menuIsOpen && m_handlers.keyPressed(event->key(), event->modifiers())) {
        event->accept();
        return;
    }
    QQuickView::keyPressEvent(event);
}

// The middle button would make a text field read the clipboard, and wait for its owner.

void PanelWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton) {
        QQuickView::mousePressEvent(event);
    }
}

void PanelWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::MiddleButton) {
        QQuickView::mouseReleaseEvent(event);
    }
}

void PanelWindow::closeEvent(QCloseEvent* event)
{
    // It is hidden instead, to be there at once the next time.
    event->ignore();
    m_handlers.closeRequested();
}

} // namespace tessly
