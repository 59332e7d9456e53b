#include "X11Desktop.h"

#include "X11WindowTracker.h"

#include <chrono>
#include <future>
#include <sys/socket.h>
#include <utility>

namespace tessly {

namespace {

/// How long the end waits for an answer of the server that is under way.
constexpr std::chrono::milliseconds lastAnswer(100);

} // namespace

X11Desktop::X11Desktop(const std::string& display, DesktopEntries entries)
    : m_loop(display)
    , m_windows(std::make_shared<X11WindowTracker>(m_loop, std::move(entries)))
    , m_keyboard(m_loop, *m_windows)
    , m_clicks(m_loop)
    , m_keyGrabs(m_loop)
{
    m_loop.post([this] {
        m_windows->start();
        m_keyboard.start();
        m_clicks.start();
        m_keyGrabs.start();
    });
    m_loop.start(
        "tessly-x11", {.event = [this](const xcb_generic_event_t& event) { handle(event); },
                       .lost = [this] { handleLoss(); }});
}

X11Desktop::~X11Desktop()
{
    // Another client may hold the server, and the thread wait in vain for an answer: hang up then.
    // Keys are not left half pressed by that, they are sent in one piece.
    const auto isIdle = std::make_shared<std::promise<void>>();
    m_loop.post([this, isIdle] {
        m_isEnding = true;
        m_keyboard.lost();
        isIdle->set_value();
    });
    if (isIdle->get_future().wait_for(lastAnswer) == std::future_status::timeout) {
        shutdown(xcb_get_file_descriptor(m_loop.connection()), SHUT_RDWR);
    }
    m_loop.stop();
}

void X11Desktop::post(X11Keyboard::Paste paste)
{
    post([this, paste = std::move(paste)]() mutable { m_keyboard.post(std::move(paste)); });
}

void X11Desktop::setClickHandler(std::function<void()> clicked)
{
    post([this, clicked = std::move(clicked)]() mutable {
        m_clicks.setHandler(std::move(clicked));
    });
}

void X11Desktop::postToKeyGrabs(std::function<void(X11KeyGrabs&)> job)
{
    post([this, job = std::move(job)] { job(m_keyGrabs); });
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
    if (!m_isEnding && !m_clicks.handle(event) && !m_keyGrabs.handle(event)) {
        m_windows->handle(event);
    }
}

void X11Desktop::handleLoss()
{
    m_isLost = true;
    m_windows->lost();
    m_keyboard.lost();
}

} // namespace tessly
