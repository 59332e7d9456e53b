#pragma once

namespace tessly {

/// With TESSLY_TRACE in the environment, writes "trace: NAME MILLISECONDS" to standard error: a
/// point that the program has reached, and CLOCK_MONOTONIC's time then. Any thread.
void trace(const char* name);

} // namespace tessly
