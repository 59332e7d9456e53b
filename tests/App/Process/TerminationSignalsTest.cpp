#include "TerminationSignals.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tessly {
namespace {

TEST(TerminationSignals, CallBackOnceForEachSignalFromTheEventLoop)
{
    int calls = 0;
    const TerminationSignals watch([&calls] { ++calls; });
    int expected = 0;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        std::raise(signal);
        EXPECT_EQ(calls, expected) << "called from inside the handler";
        ++expected;
        EXPECT_TRUE(test::waitUntil([&] { return calls == expected; }));
    }
}

} // namespace
} // namespace tessly
