#pragma once

#include "TestDesktop.h"
#include "X11KeyEventPoster.h"

#include <chrono>
#include <map>
#include <memory>

namespace tessly::test {

/// Windows of another client under a window manager, as the contracts of Workspace and
/// KeyEventPoster ask for them.
class X11Applications
{
public:
    Workspace& workspace() { return m_desktop.workspace(); }

    void show(const QString& id)
    {
        m_windows[id] = client().show(TestDesktop::look(id.toUtf8(), id.toUtf8()));
    }
    void bringToFront(const QString& id)
    {
        m_desktop.session().run(
            QStringLiteral("xdotool"),
            {QStringLiteral("windowactivate"), QString::number(m_windows.at(id))});
    }
    void close(const QString& id) { client().destroy(m_windows.at(id)); }

    KeyEventPoster& poster() { return *m_poster; }
    void endPoster() { m_poster.reset(); }
    int pastesSeenBy(const QString& id)
    {
        constexpr xcb_keycode_t usualV = 55;
        const auto isPaste = [window = m_windows.at(id)](const XClient::Key& key) {
            return key.window == window && key.isPress && key.code == usualV &&
                   key.state == XCB_MOD_MASK_CONTROL;
        };
        return static_cast<int>(std::ranges::count_if(client().keys(), isPaste));
    }
    void holdKeys() { client().pressOnKeyboard(leftAlt); }
    void letKeysGo() { client().releaseOnKeyboard(leftAlt); }
    void replaceContent() { m_canWrite = false; }

private:
    static constexpr xcb_keycode_t leftAlt = 64;

    XClient& client() { return m_desktop.client(); }

    TestDesktop m_desktop;
    std::map<QString, xcb_window_t> m_windows;
    bool m_canWrite = true;
    std::unique_ptr<X11KeyEventPoster> m_poster = std::make_unique<X11KeyEventPoster>(
        m_desktop.desktop(),
        X11KeyEventPoster::Clipboard{
            .holds = [this](WriteTicket) -> QCoro::Task<bool> { co_return m_canWrite; },
            .offerAsPrimary = [](WriteTicket) -> QCoro::Task<bool> { co_return true; },
            .begin = [](WriteTicket, bool) { return true; }},
        // Nobody owns the clipboard here.
        xcb_window_t{XCB_WINDOW_NONE},
        X11KeyEventPoster::Options{.releaseWait = std::chrono::seconds(20)});
};

} // namespace tessly::test
