#include "X11EventLoop.h"

#include <poll.h>
#include <sys/socket.h>
#include <utility>
#include <xcb/xcbext.h>

namespace tessly {

namespace {

// Events handled before jobs get their turn, so that a flood of events does not starve them.
constexpr int eventsPerTurn = 256;

// Any client can make up atoms: beyond this many, they are asked for again.
constexpr std::size_t rememberedAtoms = 8192;

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

std::string nameOf(const xcb_get_atom_name_reply_t& reply)
{
    return {
        xcb_get_atom_name_name(&reply),
        static_cast<std::size_t>(xcb_get_atom_name_name_length(&reply))};
}

} // namespace

X11EventLoop::X11EventLoop(const std::string& display)
{
    int screenNumber = 0;
    m_connection = xcb_connect(display.empty() ? nullptr : display.c_str(), &screenNumber);
    if (xcb_connection_has_error(m_connection) == 0) {
        m_screen = screenOf(m_connection, screenNumber);
    }
    if (m_screen == nullptr || !canWait()) {
        xcb_disconnect(m_connection);
        throw X11Error("Could not connect to the X server.");
    }
}

X11EventLoop::~X11EventLoop()
{
    stop();
    xcb_disconnect(m_connection);
}

void X11EventLoop::start(const std::string& name, Handlers handlers)
{
    m_handlers = std::move(handlers);
    startThread(name, [this] { loop(); });
}

void X11EventLoop::stop()
{
    // It may be writing to a server that takes nothing.
    stopThread([this] { shutdown(xcb_get_file_descriptor(m_connection), SHUT_RDWR); });
}

xcb_atom_t X11EventLoop::atom(const std::string& name)
{
    if (const auto known = m_atoms.find(name); known != m_atoms.end()) {
        return known->second;
    }
    learnAtoms({name});
    const auto known = m_atoms.find(name);
    return known != m_atoms.end() ? known->second : xcb_atom_t{XCB_ATOM_NONE};
}

void X11EventLoop::learnAtoms(const std::vector<std::string>& names)
{
    std::vector<xcb_intern_atom_cookie_t> cookies;
    cookies.reserve(names.size());
    for (const auto& name : names) {
        cookies.push_back(
            xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (const auto reply =
                owned(xcb_intern_atom_reply(m_connection, cookies[index], nullptr))) {
            m_atoms.emplace(names[index], reply->atom);
            m_atomNames.emplace(reply->atom, names[index]);
        }
    }
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
    const std::string name = nameOf(*reply);
    remember(atom, name);
    return name;
}

void X11EventLoop::awaitAtomNames(
    const std::vector<xcb_atom_t>& atoms, std::function<void(std::vector<std::string>)> callback)
{
    struct Inquiry
    {
        std::vector<std::string> names;
        std::size_t missing = 0;
        std::function<void(std::vector<std::string>)> callback;
    };
    const auto inquiry = std::make_shared<Inquiry>();
    inquiry->names.resize(atoms.size());
    inquiry->callback = std::move(callback);
    for (std::size_t index = 0; index < atoms.size(); ++index) {
        const xcb_atom_t atom = atoms[index];
        if (const auto known = m_atomNames.find(atom); known != m_atomNames.end()) {
            inquiry->names[index] = known->second;
            continue;
        }
        ++inquiry->missing;
        awaitReply<xcb_get_atom_name_reply_t>(
            xcb_get_atom_name(m_connection, atom),
            [this, inquiry, index, atom](const xcb_get_atom_name_reply_t* reply) {
                // An atom without a name is one that its sender made up.
                if (reply != nullptr) {
                    inquiry->names[index] = nameOf(*reply);
                    remember(atom, inquiry->names[index]);
                }
                if (--inquiry->missing == 0) {
                    inquiry->callback(std::move(inquiry->names));
                }
            });
    }
    if (inquiry->missing == 0) {
        inquiry->callback(std::move(inquiry->names));
    }
}

void X11EventLoop::remember(xcb_atom_t atom, const std::string& name)
{
    if (m_atomNames.size() < rememberedAtoms) {
        m_atomNames.emplace(atom, name);
    }
}

void X11EventLoop::loop()
{
    for (;;) {
        const bool isLast = isStopping();
        for (const auto& job : takeJobs()) {
            job();
        }
        const bool wasBusy = dispatch();
        const bool hasTimerRun =
            runTimers(wasBusy ? LoopTimers::Arrived::something : LoopTimers::Arrived::nothing);
        if (isLast) {
            xcb_flush(m_connection);
            return;
        }
        // xcb may read events while it writes or waits for a reply, and poll(2) does not see those:
        // sleep only after a turn that wrote nothing new and found nothing.
        if (!wasBusy && !hasTimerRun) {
            sleep();
        }
    }
}

void X11EventLoop::sleep()
{
    std::vector<pollfd> files;
    if (!m_isLost) {
        files.push_back(
            {.fd = xcb_get_file_descriptor(m_connection), .events = POLLIN, .revents = 0});
    }
    wait(files, waitingTime());
}

bool X11EventLoop::dispatch()
{
    xcb_flush(m_connection);
    for (int count = 0; count < eventsPerTurn; ++count) {
        const auto event = owned(xcb_poll_for_event(m_connection));
        if (!event) {
            if (!m_isLost && xcb_connection_has_error(m_connection) != 0) {
                noticeLoss();
            }
            // Replies come last: whoever awaits one has seen every event before it.
            bool wasBusy = count > 0;
            while (dispatchReply()) {
                wasBusy = true;
            }
            return wasBusy;
        }
        if (m_handlers.event) {
            m_handlers.event(*event);
        }
    }
    return true;
}

void X11EventLoop::handleArrived()
{
    while (const auto event = owned(xcb_poll_for_queued_event(m_connection))) {
        if (m_handlers.event) {
            m_handlers.event(*event);
        }
    }
}

bool X11EventLoop::dispatchReply()
{
    if (m_awaited.empty()) {
        return false;
    }
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(m_connection, m_awaited.front().sequence, &reply, &error) == 0) {
        return false;
    }
    const auto ownedReply = owned(reply);
    const auto ownedError = owned(error);
    const auto callback = std::move(m_awaited.front().callback);
    m_awaited.pop_front();
    callback(ownedReply.get());
    return true;
}

void X11EventLoop::noticeLoss()
{
    m_isLost = true;
    if (m_handlers.lost) {
        m_handlers.lost();
    }
}

} // namespace tessly
