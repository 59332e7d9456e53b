#include "PreviewWindow.h"

#include "PreviewModel.h"
#include "Tokens.h"
#include "WindowGeometry.h"

#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace tessly {

PreviewWindow::PreviewWindow(ViewWindow& panel, PreviewModel& model)
    : ViewWindow(panel)
{
    // On Wayland a popup without a grab, of the panel's surface, which alone can be placed beside
    // it there.
    setFlags(
        Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
        Qt::WindowDoesNotAcceptFocus);
    setTransientParent(&panel);
    setTitle(u"Tessly Preview"_s);
    setColor(Qt::transparent);
    // A compositor may end it.
    setCloseRequested([&model] { model.dismiss(); });
    load(
        QUrl(u"qrc:/qt/qml/Tessly/Panel/Preview.qml"_s),
        {{u"preview"_s, QVariant::fromValue(&model)}});
}

void PreviewWindow::showAt(const QRect& geometry)
{
    if (!isLoaded()) {
        return;
    }
    setScreen(transientParent()->screen());
    setGeometry(geometry);
    if (QGuiApplication::platformName() == u"xcb"_s) {
        // Without a compositing manager, what is transparent shows black.
        setMask(roundedRegion(geometry.size(), TokenMetrics().panelRadius));
    }
    show();
}

} // namespace tessly
