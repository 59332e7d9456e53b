#include "MainThreadCall.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QThread>

#include <thread>

namespace tessly::test {
namespace {

TEST(MainThreadCall, CallsOnTheMainThreadOnceForManyRequests)
{
    MainThreadCall call;
    int calls = 0;
    call.setCallback([&, main = QThread::currentThread()] {
        EXPECT_EQ(QThread::currentThread(), main);
        ++calls;
    });
    std::thread other([request = call.request()] {
        for (int count = 0; count < 100; ++count) {
            request();
        }
    });
    other.join();
    EXPECT_EQ(calls, 0) << "never from inside the request";
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 1);
    call.request()();
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 2);
}

TEST(MainThreadCall, WhatIsRequestedByACallIsAnotherCall)
{
    MainThreadCall call;
    int calls = 0;
    call.setCallback([&] {
        if (++calls == 1) {
            call.request()();
        }
    });
    call.request()();
    EXPECT_TRUE(waitUntil([&] { return calls == 2; }));
}

TEST(MainThreadCall, TheCallbackMayReplaceItself)
{
    MainThreadCall call;
    int calls = 0;
    call.setCallback([&] {
        call.setCallback({});
        ++calls;
    });
    call.request()();
    QCoreApplication::processEvents();
    call.request()();
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 1);
}

TEST(MainThreadCall, RequestsMayOutliveIt)
{
    std::function<void()> request;
    {
        MainThreadCall call;
        call.setCallback([] { FAIL() << "called though it is gone"; });
        request = call.request();
        request();
    }
    request();
    QCoreApplication::processEvents();
}

} // namespace
} // namespace tessly::test
