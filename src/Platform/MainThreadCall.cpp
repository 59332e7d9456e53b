#include "MainThreadCall.h"

#include <QObject>

#include <mutex>
#include <utility>

namespace tessly {

struct MainThreadCall::State
{
    /// Guards the two below. What another thread did before it asked is seen by the call.
    std::mutex mutex;
    /// Lives on the main thread; none once nobody is to be called any more.
    std::unique_ptr<QObject> receiver = std::make_unique<QObject>();
    bool isRequested = false;
    /// Main thread.
    std::function<void()> callback;

    void call()
    {
        {
            const std::scoped_lock lock(mutex);
            isRequested = false;
        }
        // It may set another one.
        if (const auto current = callback) {
            current();
        }
    }
};

MainThreadCall::MainThreadCall()
    : m_state(std::make_shared<State>())
{
}

MainThreadCall::~MainThreadCall()
{
    std::unique_ptr<QObject> receiver;
    const std::scoped_lock lock(m_state->mutex);
    receiver.swap(m_state->receiver);
}

void MainThreadCall::setCallback(std::function<void()> callback)
{
    m_state->callback = std::move(callback);
}

std::function<void()> MainThreadCall::request() const
{
    return [state = m_state] {
        const std::scoped_lock lock(state->mutex);
        if (state->receiver && !std::exchange(state->isRequested, true)) {
            QMetaObject::invokeMethod(
                state->receiver.get(), [state] { state->call(); }, Qt::QueuedConnection);
        }
    };
}

} // namespace tessly
