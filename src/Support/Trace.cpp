#include "Trace.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace tessly {

void trace(const char* name)
{
    static const bool isOn = std::getenv("TESSLY_TRACE") != nullptr;
    if (isOn) {
        using Milliseconds = std::chrono::duration<double, std::milli>;
        const Milliseconds now = std::chrono::steady_clock::now().time_since_epoch();
        std::fprintf(stderr, "trace: %s %.3f\n", name, now.count());
    }
}

} // namespace tessly
