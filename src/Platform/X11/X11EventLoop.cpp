#include "X11EventLoop.h"

#include "XcbReply.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0; xcb_screen_next(&screens)) {
        if (number-- == 0) {
            return screens.data;
        }
    }
    return nullptr;
}

} // namespace

X11EventLoop::X11EventLoop(const std::string& display)
{
    int screenNumber = 0;
    m_connection = xcb_connect(display.empty() ? nullptr : display.c_str(), &screenNumber);
    if (xcb_connection_has_error(m_connection) == 0) {
        m_screen = screenOf(m_connection, screenNumber);
        m_wakeFD = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    }
    if (m_screen == nullptr || m_wakeFD < 0) {
        xcb_disconnect(m_connection);
        throw X11Error("Could not connect to the X server.");
    }
}

X11EventLoop::~X11EventLoop()
{
    stop();
    xcb_disconnect(m_connection);
    close(m_wakeFD);
}

void X11EventLoop::start(const std::string& name, Handlers handlers)
{
    m_handlers = std::move(handlers);
    m_thread = std::thread([this] { loop(); });
    pthread_setname_np(m_thread.native_handle(), name.substr(0, 15).c_str());
}

void X11EventLoop::stop()
{
    if (m_thread.joinable()) {
        m_isStopping = true;
        wake();
        m_thread.join();
    }
}

void X11EventLoop::post(std::function<void()> job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_posted.push_back(std::move(job));
    }
    wake();
}

void X11EventLoop::wake() const
{
    const std::uint64_t one = 1;
    // The counter can only be full when a wake-up is pending already.
    [[maybe_unused]] const auto written = write(m_wakeFD, &one, sizeof one);
}

xcb_atom_t X11EventLoop::atom(const std::string& name)
{
    if (const auto known = m_atoms.find(name); known != m_atoms.end()) {
        return known->second;
    }
    const auto cookie = xcb_intern_atom(
        m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    if (!reply) {
        return XCB_ATOM_NONE;
    }
    m_atoms.emplace(name, reply->atom);
    m_atomNames.emplace(reply->atom, name);
    return reply->atom;
}

std::string X11EventLoop::atomName(xcb_atom_t atom)
{
    if (const auto known = m_atomNames.find(atom); known != m_atomNames.end()) {
        return known->second;
    }
    const auto cookie = xcb_get_atom_name(m_connection, atom);
    const auto reply = owned(xcb_get_atom_name_reply(m_connection, cookie, nullptr));
    if (!reply) {
        return {};
    }
    std::string name(xcb_get_atom_name_name(reply.get()),
                     static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
    m_atomNames.emplace(atom, name);
    return name;
}

X11EventLoop::TimerID X11EventLoop::callAfter(Milliseconds delay, std::function<void()> callback)
{
    const TimerID id = m_nextTimer++;
    m_timers.emplace(id, Timer{std::chrono::steady_clock::now() + delay, std::move(callback)});
    return id;
}

void X11EventLoop::cancel(TimerID timer)
{
    m_timers.erase(timer);
}

void X11EventLoop::loop()
{
    for (;;) {
        const bool stopping = m_isStopping;
        runPostedJobs();
        runDueTimers();
        if (!dispatchEvents()) {
            if (m_handlers.lost) {
                m_handlers.lost();
            }
            return;
        }
        xcb_flush(m_connection);
        if (stopping) {
            return;
        }
        // Replies that were awaited above may have brought events into xcb's queue, which poll(2)
        // does not see; dispatchEvents drained it, and nothing has read the socket since.
        std::array<pollfd, 2> files = {{
            {.fd = xcb_get_file_descriptor(m_connection), .events = POLLIN, .revents = 0},
            {.fd = m_wakeFD, .events = POLLIN, .revents = 0},
        }};
        poll(files.data(), files.size(), pollTimeout());
        if ((files[1].revents & POLLIN) != 0) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto bytes = read(m_wakeFD, &count, sizeof count);
        }
    }
}

void X11EventLoop::runPostedJobs()
{
    std::vector<std::function<void()>> jobs;
    {
        const std::scoped_lock lock(m_mutex);
        jobs.swap(m_posted);
    }
    for (const auto& job : jobs) {
        job();
    }
}

void X11EventLoop::runDueTimers()
{
    const auto now = std::chrono::steady_clock::now();
    for (auto timer = m_timers.begin(); timer != m_timers.end();) {
        if (timer->second.due > now) {
            ++timer;
            continue;
        }
        // The callback may add and cancel timers: take this one out first, then begin anew.
        const auto callback = std::move(timer->second.callback);
        m_timers.erase(timer);
        callback();
        timer = m_timers.begin();
    }
}

int X11EventLoop::pollTimeout() const
{
    if (m_timers.empty()) {
        return -1;
    }
    const auto earliest = std::ranges::min_element(
        m_timers, {}, [](const auto& entry) { return entry.second.due; });
    const auto left = earliest->second.due - std::chrono::steady_clock::now();
    return std::max(0, static_cast<int>(std::chrono::ceil<Milliseconds>(left).count()));
}

bool X11EventLoop::dispatchEvents()
{
    while (const auto event = owned(xcb_poll_for_event(m_connection))) {
        if (m_handlers.event) {
            m_handlers.event(*event);
        }
    }
    return xcb_connection_has_error(m_connection) == 0;
}

} // namespace tessly
