#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>

namespace tessly::test {

/// Acts on a window as the user does, and looks at what is in it. Items are found by the names that
/// views give them. What an action leads to later is for the caller to wait for.
class ViewDriver
{
public:
    explicit ViewDriver(QQuickWindow& window)
        : m_window(window)
    {
    }

    /// The visible item of a name, inside another or anywhere; null if there is none.
    [[nodiscard]] QQuickItem* find(const QString& name) const;
    [[nodiscard]] static QQuickItem* find(const QString& name, QQuickItem& inside);
    /// The same, of which there has to be one.
    [[nodiscard]] QQuickItem& item(const QString& name) const;
    [[nodiscard]] QString text(const QString& name, const char* property = "text") const;
    [[nodiscard]] QPoint centerOf(const QString& name) const;

    void click(const QString& name, Qt::MouseButton button = Qt::LeftButton) const;
    /// Moves the pointer to the middle of an item.
    void point(const QString& name) const;
    /// Tells what is there that the pointer is in the middle of an item, as the toolkit does by
    /// itself when something under a pointer that rests has changed.
    void rest(const QString& name) const;
    void press(int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) const;
    void type(const QString& text) const;

    /// What assistive technology is told of an item; null if nothing.
    [[nodiscard]] QAccessibleInterface* accessible(const QString& name) const;
    /// Everything that assistive technology finds in the window, as "role|name".
    [[nodiscard]] QStringList accessibleObjects() const;

private:
    QQuickWindow& m_window;
};

} // namespace tessly::test
