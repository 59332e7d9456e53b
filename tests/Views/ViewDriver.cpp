#include "ViewDriver.h"

#include <QMetaEnum>
#include <QtTest/QTest>

#include <stdexcept>

namespace tessly::test {

namespace {

void describe(QAccessibleInterface* object, QStringList& lines)
{
    if (object == nullptr || object->state().invisible) {
        return;
    }
    const char* const role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(object->role());
    lines.append(QString::fromLatin1(role) + QLatin1Char('|') + object->text(QAccessible::Name));
    for (int i = 0; i < object->childCount(); ++i) {
        describe(object->child(i), lines);
    }
}

} // namespace

QQuickItem* ViewDriver::find(const QString& name) const
{
    return find(name, *m_window.contentItem());
}

QQuickItem* ViewDriver::find(const QString& name, QQuickItem& inside)
{
    if (!inside.isVisible()) {
        return nullptr;
    }
    if (inside.objectName() == name) {
        return &inside;
    }
    const auto children = inside.childItems();
    for (QQuickItem* const child : children) {
        if (QQuickItem* const found = find(name, *child); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

QQuickItem& ViewDriver::item(const QString& name) const
{
    QQuickItem* const found = find(name);
    if (found == nullptr) {
        throw std::runtime_error("no visible item " + name.toStdString());
    }
    return *found;
}

QString ViewDriver::text(const QString& name, const char* property) const
{
    return item(name).property(property).toString();
}

QPoint ViewDriver::centerOf(const QString& name) const
{
    const QQuickItem& target = item(name);
    return target.mapToScene(QPointF(target.width() / 2, target.height() / 2)).toPoint();
}

void ViewDriver::click(const QString& name, Qt::MouseButton button) const
{
    QTest::mouseClick(&m_window, button, {}, centerOf(name));
}

void ViewDriver::point(const QString& name) const
{
    // A move to where the pointer is already, maybe since another test, is none.
    QTest::mouseMove(&m_window, centerOf(name) + QPoint(1, 1));
    QTest::mouseMove(&m_window, centerOf(name));
}

void ViewDriver::rest(const QString& name) const
{
    const QPointF place = centerOf(name);
    const auto on = [&place](const QQuickItem& item) { return item.mapFromScene(place); };
    QQuickItem* item = m_window.contentItem();
    while (QQuickItem* const child = item->childAt(on(*item).x(), on(*item).y())) {
        item = child;
    }
    // The innermost that wants to know is told first, and then those that it is in.
    for (; item != nullptr; item = item->parentItem()) {
        if (item->acceptHoverEvents()) {
            for (const auto type : {QEvent::HoverLeave, QEvent::HoverEnter, QEvent::HoverMove}) {
                QHoverEvent event(type, on(*item), m_window.mapToGlobal(place), on(*item));
                QCoreApplication::sendEvent(item, &event);
            }
        }
    }
}

void ViewDriver::press(int key, Qt::KeyboardModifiers modifiers, const QString& text) const
{
    // Not QTest::keyClick, which knows of Latin keys only.
    qt_handleKeyEvent(&m_window, QEvent::KeyPress, key, modifiers, text);
    qt_handleKeyEvent(&m_window, QEvent::KeyRelease, key, modifiers, text);
}

void ViewDriver::type(const QString& text) const
{
    for (const QChar character : text) {
        press(character.toUpper().unicode(), {}, character);
    }
}

QAccessibleInterface* ViewDriver::accessible(const QString& name) const
{
    return QAccessible::queryAccessibleInterface(&item(name));
}

QStringList ViewDriver::accessibleObjects() const
{
    QStringList lines;
    describe(QAccessible::queryAccessibleInterface(&m_window), lines);
    return lines;
}

} // namespace tessly::test
