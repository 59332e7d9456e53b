#include "X11HotKeyCenter.h"

#include "X11Desktop.h"
#include "X11KeyGrabs.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QPromise>

#include <map>
#include <ranges>
#include <utility>

namespace tessly {

namespace {

using Reference = HotKeyCenter::Reference;
using Status = HotKeyCenter::Status;

/// The answer to one question, which may get lost with the server: then it is that there is none.
class Answer
{
public:
    Answer() { m_promise.start(); }
    ~Answer()
    {
        if (!m_isGiven) {
            give(HotKeyCenter::unavailable);
        }
    }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    [[nodiscard]] QFuture<Status> future() const { return m_promise.future(); }

    void give(Status status)
    {
        m_isGiven = true;
        m_promise.addResult(status);
        m_promise.finish();
    }

private:
    QPromise<Status> m_promise;
    bool m_isGiven = false;
};

} // namespace

/// What is on the main thread. The loop thread only passes a weak pointer to it back.
class X11HotKeyCenter::State
{
public:
    Handler handler;
    Reference handlerReference = 0;
    /// Keys that were asked for and neither refused nor given up.
    std::map<Reference, KeyID> keys;
    Reference nextReference = 1;

    void deliver(Reference reference) const
    {
        const auto key = keys.find(reference);
        if (key != keys.end() && handler) {
            // A copy: what is done about the press may remove the handler.
            const Handler current = handler;
            current({.status = done, .key = key->second});
        }
    }

    static QCoro::Task<Status>
    answered(std::weak_ptr<State> weakState, Reference reference, QFuture<Status> answer)
    {
        const Status status = co_await answer;
        const auto state = weakState.lock();
        if (!state) {
            co_return unavailable;
        }
        if (status != done) {
            state->keys.erase(reference);
        }
        co_return status;
    }
};

X11HotKeyCenter::X11HotKeyCenter(X11Desktop& desktop)
    : m_desktop(desktop)
    , m_state(std::make_shared<State>())
{
    const auto pressed = [weakState = std::weak_ptr(m_state)](Reference reference) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [weakState, reference] {
                if (const auto state = weakState.lock()) {
                    state->deliver(reference);
                }
            },
            Qt::QueuedConnection);
    };
    m_desktop.postToKeyGrabs([pressed](X11KeyGrabs& grabs) { grabs.setPressed(pressed); });
}

X11HotKeyCenter::~X11HotKeyCenter()
{
    m_desktop.postToKeyGrabs([keys = std::move(m_state->keys)](X11KeyGrabs& grabs) {
        grabs.setPressed(nullptr);
        for (const Reference reference : keys | std::views::keys) {
            grabs.ungrab(reference);
        }
    });
}

HotKeyCenter::Installation X11HotKeyCenter::installHandler(Handler handler)
{
    if (m_state->handler) {
        return {.status = taken};
    }
    m_state->handler = std::move(handler);
    m_state->handlerReference = m_state->nextReference++;
    return {.status = done, .handler = m_state->handlerReference};
}

HotKeyCenter::Status X11HotKeyCenter::removeHandler(Reference handler)
{
    if (!m_state->handler || handler != m_state->handlerReference) {
        return invalid;
    }
    m_state->handler = nullptr;
    return done;
}

HotKeyCenter::Registration
X11HotKeyCenter::registerKey(quint32 keyCode, quint32 modifiers, KeyID key)
{
    const Reference reference = m_state->nextReference++;
    m_state->keys.emplace(reference, key);
    const auto answer = std::make_shared<Answer>();
    QFuture<Status> future = answer->future();
    m_desktop.postToKeyGrabs([answer, reference, keyCode, modifiers](X11KeyGrabs& grabs) {
        answer->give(grabs.grab(reference, keyCode, modifiers));
    });
    return {
        .key = reference,
        .status = State::answered(m_state, reference, std::move(future)),
    };
}

HotKeyCenter::Status X11HotKeyCenter::unregisterKey(Reference key)
{
    if (m_state->keys.erase(key) == 0) {
        return invalid;
    }
    m_desktop.postToKeyGrabs([key](X11KeyGrabs& grabs) { grabs.ungrab(key); });
    return done;
}

} // namespace tessly
