#include "MainThreadCall.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <mutex>
#include <utility>

namespace tessly {

struct MainThreadCall::State
{
    /// Guards the two below. What another thread did before it asked is seen by the call.
    std::mutex mutex;
    /// Lives on the main thread; none once nobody is to be called any more.
    std::unique_ptr<QObject> receiver;
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

namespace {

/// Takes the events by which calls are asked for. They carry nothing: all that threads share is
/// under the lock.
template <typename State>
class Receiver final : public QObject
{
public:
    explicit Receiver(std::weak_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User) {
            return QObject::event(event);
        }
        // The call may end this object.
        if (const auto state = m_state.lock()) {
            state->call();
        }
        return true;
    }

private:
    const std::weak_ptr<State> m_state;
};

} // namespace

MainThreadCall::MainThreadCall()
    : m_state(std::make_shared<State>())
{
    m_state->receiver = std::make_unique<Receiver<State>>(m_state);
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
            QCoreApplication::postEvent(state->receiver.get(), new QEvent(QEvent::User));
        }
    };
}

} // namespace tessly
