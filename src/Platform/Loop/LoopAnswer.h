#pragma once

#include <QFuture>
#include <QPromise>

#include <memory>
#include <utility>

namespace tessly {

// NOLINTBEGIN(performance-unnecessary-value-param): of some types, moving is copying.

/// Where a loop's thread puts the answer that a coroutine on the main thread awaits. Copies are the
/// same answer; when the last goes without an answer, the fallback is it.
template <typename Value>
class LoopAnswer
{
public:
    explicit LoopAnswer(Value fallback)
        : m_state(std::make_shared<State>(std::move(fallback)))
    {
    }

    [[nodiscard]] QFuture<Value> future() const { return m_state->promise.future(); }
    void operator()(Value value) const { m_state->set(std::move(value)); }

private:
    struct State
    {
        explicit State(Value value)
            : fallback(std::move(value))
        {
            promise.start();
        }
        State(const State&) = delete;
        State& operator=(const State&) = delete;
        ~State() { set(std::move(fallback)); }

        void set(Value value)
        {
            if (!std::exchange(isSet, true)) {
                promise.addResult(std::move(value));
                promise.finish();
            }
        }

        Value fallback;
        QPromise<Value> promise;
        bool isSet = false;
    };

    std::shared_ptr<State> m_state;
};

// NOLINTEND(performance-unnecessary-value-param)

/// Asks on the thread of a loop that jobs can be posted to. The job gets the answer to call, or to
/// drop.
template <typename Value, typename Loop, typename Job>
QFuture<Value> askLoop(Loop& loop, Value fallback, Job job)
{
    const LoopAnswer<Value> answer(std::move(fallback));
    QFuture<Value> future = answer.future();
    loop.post([answer, job = std::move(job)] { job(answer); });
    return future;
}

} // namespace tessly
