#pragma once

#include "Clock.h"

namespace tessly {

/// The machine's clock and the Qt event loop's timers.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] double now() const override;
    [[nodiscard]] std::unique_ptr<Timer> after(Duration delay, Callback callback) override;
    [[nodiscard]] std::unique_ptr<Timer> every(Duration interval, Callback callback) override;
};

} // namespace tessly
