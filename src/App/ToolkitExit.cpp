#include "ToolkitExit.h"

#include <QMetaObject>
#include <QObject>

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

const pid_t ownProcess = getpid();
const std::thread::id mainThread = std::this_thread::get_id();

} // namespace

struct ToolkitExit::State
{
    /// Changed by the main thread alone, under the mutex.
    static State* current;
    static std::mutex mutex;

    std::function<void()> before;
    /// Lives on the main thread.
    QObject receiver;

    static void callBefore()
    {
        if (current != nullptr) {
            if (const auto before = std::exchange(current->before, nullptr)) {
                before();
            }
        }
    }

    /// Some thread is about to end the process.
    static void ending()
    {
        if (getpid() != ownProcess) {
            // A child that has not become another program yet.
            return;
        }
        if (std::this_thread::get_id() == mainThread) {
            callBefore();
            return;
        }
        {
            const std::scoped_lock lock(mutex);
            if (current == nullptr) {
                return;
            }
            QMetaObject::invokeMethod(&current->receiver, &State::callBefore, Qt::QueuedConnection);
        }
        std::this_thread::sleep_for(timeout);
    }
};

ToolkitExit::State* ToolkitExit::State::current = nullptr;
std::mutex ToolkitExit::State::mutex;

ToolkitExit::ToolkitExit(std::function<void()> before)
    : m_state(std::make_unique<State>())
{
    m_state->before = std::move(before);
    std::atexit(&State::ending);
    const std::scoped_lock lock(State::mutex);
    State::current = m_state.get();
}

ToolkitExit::~ToolkitExit()
{
    const std::scoped_lock lock(State::mutex);
    State::current = nullptr;
}

void ToolkitExit::ending()
{
    State::ending();
}

} // namespace tessly

/// Takes the place of the C library's for all that the program loads.
extern "C" void _exit(int status)
{
    tessly::ToolkitExit::ending();
    std::_Exit(status);
}
