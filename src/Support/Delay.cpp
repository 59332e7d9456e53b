#include "Delay.h"

#include <QCoroFuture>
#include <QPromise>

namespace tessly {

namespace {

struct End
{
    End() { promise.start(); }
    End(const End&) = delete;
    End& operator=(const End&) = delete;
    ~End() { promise.finish(); }

    QPromise<void> promise;
};

} // namespace

QCoro::Task<> delay(Clock& clock, Clock::Duration duration)
{
    // The timer's callback holds it: what is dropped without being called ends the wait, too.
    auto end = std::make_shared<End>();
    QFuture<void> ended = end->promise.future();
    const auto timer = clock.after(duration, [end = std::move(end)] { end->promise.finish(); });
    co_await ended;
}

} // namespace tessly
