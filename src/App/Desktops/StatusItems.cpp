#include "StatusItems.h"

#include "ScreenPixels.h"
#include "StatusNotifierItem.h"
#include "XEmbedTrayIcon.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The icon's connection to the session bus, which is asked for on a thread of its own.
QDBusConnection connectStatusItem()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-tray"_s);
}

} // namespace

std::unique_ptr<StatusItem> makeBusStatusItem()
{
    return std::make_unique<StatusNotifierItem>(connectStatusItem, toIndependentPixels);
}

std::unique_ptr<StatusItem> makeX11StatusItem(X11Desktop& desktop)
{
    return std::make_unique<XEmbedTrayIcon>(desktop, toIndependentPixels);
}

} // namespace tessly
