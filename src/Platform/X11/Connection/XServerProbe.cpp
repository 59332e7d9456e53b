#include "XServerProbe.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <xcb/xcb.h>

namespace tessly {

struct XServerProbe::State
{
    std::mutex mutex;
    std::condition_variable isKnown;
    Outcome outcome = Outcome::silent;
    std::function<void()> answered;
};

XServerProbe::XServerProbe(const std::string& display)
    : m_state(std::make_shared<State>())
{
    std::thread([state = m_state, display] {
        xcb_connection_t* const connection =
            xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr);
        const bool answers = xcb_connection_has_error(connection) == 0;
        xcb_disconnect(connection);
        const std::scoped_lock lock(state->mutex);
        state->outcome = answers ? Outcome::answers : Outcome::absent;
        state->isKnown.notify_all();
        if (answers && state->answered) {
            state->answered();
        }
    }).detach();
}

XServerProbe::~XServerProbe()
{
    const std::scoped_lock lock(m_state->mutex);
    m_state->answered = nullptr;
}

XServerProbe::Outcome XServerProbe::wait(std::chrono::milliseconds timeout) const
{
    std::unique_lock lock(m_state->mutex);
    m_state->isKnown.wait_for(
        lock, timeout, [this] { return m_state->outcome != Outcome::silent; });
    return m_state->outcome;
}

void XServerProbe::setAnswered(std::function<void()> answered)
{
    const std::scoped_lock lock(m_state->mutex);
    if (m_state->outcome == Outcome::answers) {
        answered();
    } else {
        m_state->answered = std::move(answered);
    }
}

} // namespace tessly
