#pragma once

#include "Clock.h"

#include <QCoroTask>

namespace tessly {

/// A wait that can be awaited. Ends early where the clock drops its timers.
[[nodiscard]] QCoro::Task<> delay(Clock& clock, Clock::Duration duration);

} // namespace tessly
