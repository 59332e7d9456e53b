#pragma once

#include "AppModelFixture.h"
#include "QuickWindowView.h"
#include "ViewDriver.h"

#include <memory>

namespace tessly::test {

/// A real window over a model on a desktop of fakes.
class WindowFixture : public AppModelFixture
{
protected:
    /// Runs everything that waits, and draws what came of it. No time passes.
    void run()
    {
        AppModelFixture::run();
        if (m_view && m_view->isShown()) {
            window().grabWindow();
        }
    }
    /// Shows the window and waits until it has the keyboard.
    void show()
    {
        ASSERT_TRUE(m_view->isLoaded());
        m_view->show();
        ASSERT_TRUE(waitUntil([this] { return window().isExposed() && window().isActive(); }));
        run();
    }
    [[nodiscard]] ViewWindow& window() { return m_view->window(); }
    [[nodiscard]] ViewDriver driver() { return ViewDriver(window()); }
    [[nodiscard]] QQuickItem* find(const QString& name) { return driver().find(name); }
    [[nodiscard]] QQuickItem& item(const QString& name) { return driver().item(name); }
    [[nodiscard]] QString text(const QString& name) { return driver().text(name); }
    void click(const QString& name, Qt::MouseButton button = Qt::LeftButton)
    {
        driver().click(name, button);
        run();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        driver().press(key, modifiers);
        run();
    }
    /// The name of the item that has the keyboard.
    [[nodiscard]] QString focused()
    {
        return window().activeFocusItem() ? window().activeFocusItem()->objectName() : QString();
    }
    /// Presses Tab until an item has the keyboard; false if it never gets it.
    bool tabTo(const QString& name)
    {
        for (int i = 0; i < 30 && focused() != name; ++i) {
            press(Qt::Key_Tab);
        }
        return focused() == name;
    }

    std::unique_ptr<QuickWindowView> m_view;
};

} // namespace tessly::test
