#include "PlatformFactory.h"

#include "AutostartLoginItem.h"
#include "FallbackStatusItem.h"
#include "InstalledBundle.h"
#include "QtImageConverter.h"
#include "ScreenPixels.h"
#include "StatusNotifierItem.h"
#include "X11Desktop.h"
#include "X11EventLoop.h"
#include "X11HotKeyCenter.h"
#include "X11KeyEventPoster.h"
#include "X11OutsideClickMonitor.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"
#include "XEmbedTrayIcon.h"

#include <QDBusConnection>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The icon's connection to the session bus, which is asked for on a thread of its own.
QDBusConnection connectStatusItem()
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"tessly-tray"_s);
}

class X11Platform final : public DesktopPlatform
{
public:
    explicit X11Platform(std::function<void()> connectionLost)
    {
        m_pasteboard.setConnectionLost(std::move(connectionLost));
    }

    Pasteboard& pasteboard() override { return m_pasteboard; }
    Workspace& workspace() override { return m_workspace; }
    KeyEventPoster& keys() override { return m_keys; }
    OutsideClickMonitor& outsideClicks() override { return m_outsideClicks; }
    HotKeyCenter& hotKeys() override { return m_hotKeys; }
    StatusItem& statusItem() override { return m_statusItem; }
    ImageConverter& imageConverter() override { return m_imageConverter; }
    LoginItem& loginItem() override { return m_loginItem; }
    const Bundle& bundle() override { return m_bundle; }

private:
    X11Pasteboard m_pasteboard;
    X11Desktop m_desktop;
    X11Workspace m_workspace{m_desktop};
    X11KeyEventPoster m_keys{
        m_desktop,
        {.hasWritten = [this] { return m_pasteboard.hasWritten(); },
         .offerAsPrimary = [this] { return m_pasteboard.offerAsPrimary(); }}};
    X11OutsideClickMonitor m_outsideClicks{m_desktop};
    X11HotKeyCenter m_hotKeys{m_desktop};
    FallbackStatusItem m_statusItem{
        std::make_unique<StatusNotifierItem>(connectStatusItem, toIndependentPixels),
        std::make_unique<XEmbedTrayIcon>(m_desktop, toIndependentPixels)};
    QtImageConverter m_imageConverter;
    InstalledBundle m_bundle;
    AutostartLoginItem m_loginItem{m_bundle.bundlePath()};
};

} // namespace

void expectDesktop()
{
    const X11EventLoop connection;
}

std::unique_ptr<DesktopPlatform> makeDesktopPlatform(std::function<void()> connectionLost)
{
    return std::make_unique<X11Platform>(std::move(connectionLost));
}

} // namespace tessly
