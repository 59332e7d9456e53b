#pragma once

#include "OutsideClickMonitor.h"

#include <memory>

namespace tessly {

class X11Desktop;

/// Clicks on an X11 desktop, told by the server's input extension; without it none are noticed.
class X11OutsideClickMonitor final : public OutsideClickMonitor
{
public:
    explicit X11OutsideClickMonitor(X11Desktop& desktop);
    /// Watches may outlive it; they are silent then.
    ~X11OutsideClickMonitor() override;

    [[nodiscard]] std::unique_ptr<Watch> watch(std::function<void()> pressed) override;

private:
    class State;
    class Handle;

    std::shared_ptr<State> m_state;
};

} // namespace tessly
