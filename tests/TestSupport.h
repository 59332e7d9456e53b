#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace tessly::test {

/// Runs the event loop until `condition` holds; false if it does not within the limit. For what
/// happens in other threads and processes: logic is tested in virtual time instead.
template <typename Condition>
[[nodiscard]] bool
waitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10))
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 5);
    }
    return true;
}

/// Calls `done` with a task's result, if it has one, once that is there. Does not wait for it.
template <typename Result, typename Done>
QCoro::Task<> whenDone(QCoro::Task<Result> task, Done done)
{
    if constexpr (std::is_void_v<Result>) {
        co_await task;
        done();
    } else {
        done(co_await task);
    }
}

/// The result of a task, with the event loop running meanwhile; throws what the task threw.
// QCoro's own waitFor never returns from a task that throws.
template <typename Result>
Result await(QCoro::Task<Result>&& task)
{
    QEventLoop loop;
    bool isDone = false;
    std::exception_ptr error;
    std::conditional_t<std::is_void_v<Result>, std::monostate, std::optional<Result>> result;
    const auto run = [&]() -> QCoro::Task<void> {
        try {
            if constexpr (std::is_void_v<Result>) {
                co_await task;
            } else {
                result.emplace(co_await task);
            }
        } catch (...) {
            error = std::current_exception();
        }
        isDone = true;
        loop.quit();
    };
    // Names what is captured for as long as the coroutine runs.
    const QCoro::Task<void> running = run();
    if (!isDone) {
        loop.exec();
    }
    if (error) {
        std::rethrow_exception(error);
    }
    if constexpr (!std::is_void_v<Result>) {
        return std::move(*result);
    }
}

} // namespace tessly::test
