#include "PanelWindow.h"

#include "PanelKeyMap.h"
#include "PanelModel.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>

#include <utility>

using namespace Qt::StringLiterals;

void qml_register_types_Tessly_Panel();

namespace tessly {

namespace {

/// The key by what it bears. Where no layout has Latin letters, the P key is the one in its place;
/// those that paste by position always are those in their places, as they are everywhere.
int keyOf(const QKeyEvent& event)
{
    // As the kernel numbers keys, and X11 eight higher.
    constexpr quint32 placeOfP = 25 + 8;
    constexpr quint32 placeOf1 = 2 + 8;
    constexpr quint32 placeOf0 = 11 + 8;
    const quint32 place = event.nativeScanCode();
    if (event.modifiers() == (Qt::AltModifier | Qt::ShiftModifier) && place >= placeOf1 &&
        place <= placeOf0) {
        return place == placeOf0 ? int{Qt::Key_0} : Qt::Key_1 + static_cast<int>(place - placeOf1);
    }
    const bool isOtherLetter = event.key() > 0xff && event.key() < Qt::Key_Escape;
    return isOtherLetter && place == placeOfP ? int{Qt::Key_P} : event.key();
}

bool isPress(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

/// Whether an item is a button or the like: Return is its own there. Text fields take input.
bool isPressable(const QQuickItem* item)
{
    return item != nullptr && item->activeFocusOnTab() &&
           !item->flags().testFlag(QQuickItem::ItemAcceptsInputMethod);
}

} // namespace

PanelWindow::PanelWindow(const X11Cards& cards, PanelModel& model, Handlers handlers)
    : CardWindow(cards)
    , m_handlers(std::move(handlers))
{
    // The module is part of this library; nothing else refers to its types.
    static const bool registered = (qml_register_types_Tessly_Panel(), true);
    Q_UNUSED(registered)

    setFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setTitle(u"Tessly"_s);
    // It is hidden instead, to be there at once the next time.
    setCloseRequested(m_handlers.closeRequested);
    load(
        QUrl(u"qrc:/qt/qml/Tessly/Panel/Panel.qml"_s), {{u"panel"_s, QVariant::fromValue(&model)}});
}

void PanelWindow::forgetPointer()
{
    m_pointer.reset();
    if (std::exchange(m_pointerHasMoved, false)) {
        Q_EMIT pointerHasMovedChanged();
    }
}

void PanelWindow::releasePointer()
{
    if (QQuickItem* const grabber = mouseGrabberItem(); grabber != nullptr) {
        grabber->ungrabMouse();
    }
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(this, &leave);
}

bool PanelWindow::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::MouseMove:
        followPointer(static_cast<QSinglePointEvent*>(event)->globalPosition());
        break;
    default:
        break;
    }
    return CardWindow::event(event);
}

/// By its place on the desktop: the window itself may still move under it.
void PanelWindow::followPointer(const QPointF& place)
{
    if (!m_pointer) {
        m_pointer = place;
    } else if (!m_pointerHasMoved && (place - *m_pointer).manhattanLength() >= 1) {
        m_pointerHasMoved = true;
        Q_EMIT pointerHasMovedChanged();
    }
}

void PanelWindow::keyPressEvent(QKeyEvent* event)
{
    // A menu that is open takes the keys, as any desktop's does.
    const bool menuIsOpen =
        rootObject() != nullptr && rootObject()->property("menuIsOpen").toBool();
    const int key = keyOf(*event);
    const bool pastes = isPress(key) || directPastePosition(key, event->modifiers());
    if (!menuIsOpen && !(isPress(key) && isPressable(activeFocusItem()))) {
        // A key that is held pastes once.
        if ((pastes && event->isAutoRepeat()) || m_handlers.keyPressed(key, event->modifiers())) {
            event->accept();
            return;
        }
    }
    CardWindow::keyPressEvent(event);
}

} // namespace tessly
