#include "PanelViewFixture.h"

using namespace std::chrono_literals;

namespace tessly::test {

PanelViewFixture::PanelViewFixture()
    : m_controller(
          {*m_model, m_preview, m_workspace, m_clicks, m_clock},
          [this]() -> QCoro::Task<std::optional<QRect>> { co_return m_anchor; },
          [this] {
              auto view = std::make_unique<QuickPanelView>(m_panel);
              EXPECT_TRUE(view->isLoaded());
              m_view = view.get();
              return view;
          },
          QuickPastePanelController::KeepsOpen::no)
{
    m_workspace.setFrontmost(m_editor);
}

PanelViewFixture::~PanelViewFixture()
{
    m_controller.close();
}

void PanelViewFixture::run()
{
    AppModelFixture::run();
    if (m_view != nullptr && window().isVisible()) {
        // Lays rows out, too.
        window().grabWindow();
    }
}

void PanelViewFixture::pass(Clock::Duration duration)
{
    AppModelFixture::pass(duration);
    run();
}

void PanelViewFixture::show()
{
    m_controller.show();
    run();
    ASSERT_NE(m_view, nullptr);
    ASSERT_TRUE(waitUntil([this] { return window().isExposed() && window().isActive(); }));
    run();
}

QQuickItem* PanelViewFixture::find(const QString& name)
{
    return driver().find(name);
}

QQuickItem& PanelViewFixture::item(const QString& name)
{
    return driver().item(name);
}

QString PanelViewFixture::text(const QString& name, const char* property)
{
    return driver().text(name, property);
}

QString PanelViewFixture::rowText(int row, const QString& name, const char* property)
{
    QQuickItem* const found = ViewDriver::find(name, item(QStringLiteral("row-%1").arg(row)));
    return found != nullptr ? found->property(property).toString() : QString();
}

bool PanelViewFixture::isSelected(int row)
{
    return item(QStringLiteral("row-%1").arg(row)).property("isSelected").toBool();
}

QPoint PanelViewFixture::centerOf(const QString& name)
{
    return driver().centerOf(name);
}

void PanelViewFixture::click(const QString& name, Qt::MouseButton button)
{
    driver().click(name, button);
    run();
}

void PanelViewFixture::point(const QString& name)
{
    driver().point(name);
    run();
}

void PanelViewFixture::rest(const QString& name)
{
    driver().rest(name);
    run();
}

void PanelViewFixture::press(int key, Qt::KeyboardModifiers modifiers)
{
    driver().press(key, modifiers);
    run();
}

void PanelViewFixture::type(const QString& text)
{
    driver().type(text);
    run();
}

void PanelViewFixture::send(int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    driver().press(key, modifiers, text);
}

} // namespace tessly::test
