#include "PanelViewFixture.h"

#include <QtTest/QTest>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

QQuickItem* visibleItem(QQuickItem& root, const QString& name)
{
    if (!root.isVisible()) {
        return nullptr;
    }
    if (root.objectName() == name) {
        return &root;
    }
    const auto children = root.childItems();
    for (QQuickItem* const child : children) {
        if (QQuickItem* const found = visibleItem(*child, name); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

PanelViewFixture::PanelViewFixture()
    : m_controller(
          {*m_model, m_workspace, m_clicks}, [this] { return m_anchor; },
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
    return visibleItem(*window().contentItem(), name);
}

QQuickItem& PanelViewFixture::item(const QString& name)
{
    QQuickItem* const found = find(name);
    if (found == nullptr) {
        throw std::runtime_error("no visible item " + name.toStdString());
    }
    return *found;
}

QString PanelViewFixture::text(const QString& name, const char* property)
{
    return item(name).property(property).toString();
}

QString PanelViewFixture::rowText(int row, const QString& name, const char* property)
{
    QQuickItem* const found = visibleItem(item(QStringLiteral("row-%1").arg(row)), name);
    return found != nullptr ? found->property(property).toString() : QString();
}

bool PanelViewFixture::isSelected(int row)
{
    return item(QStringLiteral("row-%1").arg(row)).property("isSelected").toBool();
}

QPoint PanelViewFixture::centerOf(const QString& name)
{
    const QQuickItem& target = item(name);
    return target.mapToScene(QPointF(target.width() / 2, target.height() / 2)).toPoint();
}

void PanelViewFixture::click(const QString& name, Qt::MouseButton button)
{
    QTest::mouseClick(&window(), button, {}, centerOf(name));
    run();
}

void PanelViewFixture::point(const QString& name)
{
    // A move to where the pointer is already, maybe since another test, is none.
    QTest::mouseMove(&window(), centerOf(name) + QPoint(1, 1));
    QTest::mouseMove(&window(), centerOf(name));
    run();
}

void PanelViewFixture::press(int key, Qt::KeyboardModifiers modifiers)
{
    send(key, modifiers, {});
    run();
}

void PanelViewFixture::type(const QString& text)
{
    for (const QChar character : text) {
        send(character.toUpper().unicode(), {}, character);
    }
    run();
}

void PanelViewFixture::send(int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    // Not QTest::keyClick, which knows of Latin keys only.
    qt_handleKeyEvent(&window(), QEvent::KeyPress, key, modifiers, text);
    qt_handleKeyEvent(&window(), QEvent::KeyRelease, key, modifiers, text);
}

} // namespace tessly::test
