#include "QuickStatusToolTip.h"

#include "Tokens.h"
#include "WindowGeometry.h"
#include "WindowModule.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace tessly {

QuickStatusToolTip::QuickStatusToolTip()
    : m_window(std::make_unique<ViewWindow>())
{
    m_window->setFlags(
        Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
        Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus);
    m_window->setTitle(u"Tessly Tool Tip"_s);
    m_window->setColor(Qt::transparent);
    m_window->load(windowModuleFile(u"StatusToolTip.qml"_s), {{u"text"_s, QString()}});
}

QuickStatusToolTip::~QuickStatusToolTip() = default;

void QuickStatusToolTip::show(const QString& text, const QRect& icon)
{
    QScreen* const screen = screenNear(icon.center());
    if (!isLoaded() || screen == nullptr) {
        return;
    }
    QQuickItem& root = *m_window->rootObject();
    root.setProperty("text", text);
    const QSizeF size(root.implicitWidth(), root.implicitHeight());
    const QRect geometry = panelGeometry(icon, size.toSize(), screen->geometry());
    m_window->setScreen(screen);
    m_window->setGeometry(geometry);
    if (QGuiApplication::platformName() == u"xcb"_s) {
        // Without a compositing manager, what is transparent shows black.
        m_window->setMask(roundedRegion(geometry.size(), TokenMetrics().keyCapRadius));
    }
    m_window->show();
}

void QuickStatusToolTip::hide()
{
    m_window->hide();
}

} // namespace tessly
