#include "PreviewWindow.h"

#include "PreviewModel.h"

#include <QScreen>

using namespace Qt::StringLiterals;

namespace tessly {

PreviewWindow::PreviewWindow(const X11Cards& cards, ViewWindow& panel, PreviewModel& model)
    : CardWindow(cards, panel)
{
    // On Wayland a popup without a grab, of the panel's surface, which alone can be placed beside
    // it there.
    setFlags(
        Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
        Qt::WindowDoesNotAcceptFocus);
    setTransientParent(&panel);
    setTitle(u"Tessly Preview"_s);
    // A compositor may end it.
    setCloseRequested([&model] { model.dismiss(); });
    load(
        QUrl(u"qrc:/qt/qml/Tessly/Panel/Preview.qml"_s),
        {{u"preview"_s, QVariant::fromValue(&model)}});
}

void PreviewWindow::showAt(const QRect& card, const QRect& room)
{
    if (!isLoaded()) {
        return;
    }
    setScreen(transientParent()->screen());
    placeCard(card, room);
    show();
}

} // namespace tessly
