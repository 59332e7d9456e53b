#pragma once

#include "AppModelFixture.h"
#include "FakeFileInspector.h"
#include "FakeOutsideClickMonitor.h"
#include "PanelModel.h"
#include "QuickPanelView.h"
#include "QuickPastePanelController.h"
#include "ViewDriver.h"

#include <QQuickItem>

#include <memory>

namespace tessly::test {

/// The real panel on its controller and model, over a desktop of fakes. Tests act on its window as
/// the user does.
class PanelViewFixture : public AppModelFixture
{
protected:
    PanelViewFixture();
    ~PanelViewFixture() override;

    /// Runs everything that waits, and draws what came of it. No time passes.
    void run();
    void pass(Clock::Duration duration);
    /// Opens the panel and waits until it has the keyboard.
    void show();
    [[nodiscard]] PanelWindow& window() { return m_view->window(); }
    [[nodiscard]] ViewDriver driver() { return ViewDriver(window()); }

    /// The visible item of a name; null if there is none.
    [[nodiscard]] QQuickItem* find(const QString& name);
    /// The same, of which there has to be one.
    [[nodiscard]] QQuickItem& item(const QString& name);
    [[nodiscard]] QString text(const QString& name, const char* property = "text");
    /// A text inside a row.
    [[nodiscard]] QString rowText(int row, const QString& name, const char* property = "text");
    [[nodiscard]] bool isSelected(int row);

    [[nodiscard]] QPoint centerOf(const QString& name);
    void click(const QString& name, Qt::MouseButton button = Qt::LeftButton);
    /// Moves the pointer to the middle of an item.
    void point(const QString& name);
    /// Lets the window hear again of a pointer that rests there.
    void rest(const QString& name);
    void press(int key, Qt::KeyboardModifiers modifiers = {});
    void type(const QString& text);
    /// Lets everything happen that the last events led to, and the debounce of searches pass.
    void settleSearch() { pass(std::chrono::milliseconds(120)); }

    void send(int key, Qt::KeyboardModifiers modifiers, const QString& text);

    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(QStringLiteral("org.example.editor"));
    FakeOutsideClickMonitor m_clicks;
    QRect m_anchor{300, 0, 24, 24};
    FakeFileInspector m_files;
    PreviewModel m_preview{{*m_model, *m_store, m_converter, m_files, m_clock}};
    PanelModel m_panel{{*m_model, m_preview, m_pasteboard, m_clock}};
    /// The controller's, from the first opening on.
    QuickPanelView* m_view = nullptr;
    QuickPastePanelController m_controller;
};

} // namespace tessly::test
