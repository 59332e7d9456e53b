#include "X11Desktop.h"

#include "X11WindowTracker.h"

#include <utility>

namespace tessly {

X11Desktop::X11Desktop(const std::string& display, DesktopEntries entries)
    : m_loop(display)
    , m_windows(std::make_shared<X11WindowTracker>(m_loop, std::move(entries)))
    , m_keyboard(m_loop, *m_windows)
    , m_clicks(m_loop)
    , m_keyGrabs(m_loop)
    , m_trayIcon(m_loop)
{
    m_loop.post([this] {
        m_windows->start();
        m_keyboard.start();
        m_clicks.start();
        m_keyGrabs.start();
    });
    const auto handleLoss = [this] {
        m_isLost = true;
        m_windows->lost();
        m_keyboard.lost();
        m_trayIcon.lost();
    };
    m_loop.start(
        "tessly-x11",
        {.event = [this](const xcb_generic_event_t& event) { handle(event); }, .lost = handleLoss});
}

X11Desktop::~X11Desktop()
{
    m_loop.stop();
}

void X11Desktop::post(X11Keyboard::Paste paste)
{
    post([this, paste = std::move(paste)] { m_keyboard.post(paste); });
}

void X11Desktop::setClickHandler(std::function<void()> clicked)
{
    post([this, clicked = std::move(clicked)] { m_clicks.setHandler(clicked); });
}

void X11Desktop::postToKeyGrabs(std::function<void(X11KeyGrabs&)> job)
{
    post([this, job = std::move(job)] { job(m_keyGrabs); });
}

void X11Desktop::postToTrayIcon(std::function<void(X11TrayIcon&)> job)
{
    post([this, job = std::move(job)] { job(m_trayIcon); });
}

void X11Desktop::post(std::function<void()> job)
{
    // The loop runs on without a server. A job that is dropped tells whoever waits for it by its
    // end.
    m_loop.post([this, job = std::move(job)] {
        if (!m_isLost) {
            job();
        }
    });
}

void X11Desktop::handle(const xcb_generic_event_t& event)
{
    if (!m_clicks.handle(event) && !m_keyGrabs.handle(event) && !m_trayIcon.handle(event)) {
        m_windows->handle(event);
    }
}

} // namespace tessly
