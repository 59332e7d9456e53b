#include "Gate.h"

#include <QCoreApplication>
#include <QCoroFuture>

namespace tessly::test {

Gate::~Gate()
{
    releaseWaiting();
}

bool Gate::releaseOne()
{
    if (m_waiting.empty()) {
        return false;
    }
    const auto first = std::move(m_waiting.front());
    m_waiting.pop_front();
    first->finish();
    return true;
}

void Gate::releaseWaiting()
{
    while (releaseOne()) {
    }
}

void Gate::open()
{
    m_isHeld = false;
    releaseWaiting();
}

QCoro::Task<> Gate::pass()
{
    const auto promise = std::make_shared<QPromise<void>>();
    QFuture<void> passed = promise->future();
    promise->start();
    if (m_isHeld) {
        m_waiting.push_back(promise);
    } else {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [promise] { promise->finish(); }, Qt::QueuedConnection);
    }
    co_await passed;
}

} // namespace tessly::test
