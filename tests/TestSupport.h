#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>
#include <functional>

namespace tessly::test {

/// Runs the event loop until `condition` holds; false if it does not within the limit. For what
/// happens in other threads and processes: logic is tested in virtual time instead.
template <typename Condition>
[[nodiscard]] bool waitUntil(Condition condition,
                             std::chrono::milliseconds limit = std::chrono::seconds(10))
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

/// The result of a task, with the event loop running meanwhile; throws what the task threw.
template <typename Result> Result await(QCoro::Task<Result>&& task)
{
    return QCoro::waitFor(std::move(task));
}

} // namespace tessly::test
