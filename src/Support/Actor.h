#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QPromise>

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace tessly {

/// Runs jobs one at a time, in the order in which they were given.
class Executor
{
public:
    Executor() = default;
    Executor(const Executor&) = delete;
    Executor& operator=(const Executor&) = delete;
    /// Runs what was given before it goes, and returns when that is done.
    virtual ~Executor() = default;

    /// Any thread. The job must not throw.
    virtual void enqueue(std::function<void()> job) = 0;
};

/// The one place where a call leaves the calling thread: runs an operation on an executor and
/// brings its result, or what it threw, back to the awaiting coroutine on the thread that awaits
/// (which must have a Qt event loop). The operation is plain synchronous code.
class Actor
{
public:
    explicit Actor(std::unique_ptr<Executor> executor);
    ~Actor();
    Actor(const Actor&) = delete;
    Actor& operator=(const Actor&) = delete;

    template <typename Operation>
    [[nodiscard]] QCoro::Task<std::invoke_result_t<Operation&>> run(Operation operation)
    {
        using Result = std::invoke_result_t<Operation&>;
        // Shared, since a std::function must be copyable and a promise is not.
        auto promise = std::make_shared<QPromise<Result>>();
        QFuture<Result> future = promise->future();
        promise->start();
        m_executor->enqueue([promise, operation = std::move(operation)]() mutable {
            try {
                if constexpr (std::is_void_v<Result>) {
                    operation();
                } else {
                    promise->addResult(operation());
                }
            } catch (...) {
                promise->setException(std::current_exception());
            }
            promise->finish();
        });
        if constexpr (std::is_void_v<Result>) {
            co_await future;
        } else {
            co_return co_await future;
        }
    }

private:
    std::unique_ptr<Executor> m_executor;
};

} // namespace tessly
