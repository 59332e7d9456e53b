#pragma once

#include "OutsideClickMonitor.h"

namespace tessly {

/// A desktop that tells of no clicks in other applications. They show in the focus.
class NoOutsideClickMonitor final : public OutsideClickMonitor
{
public:
    [[nodiscard]] std::unique_ptr<Watch> watch(std::function<void()>) override
    {
        return std::make_unique<Watch>();
    }
};

} // namespace tessly
