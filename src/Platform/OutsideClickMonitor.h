#pragma once

#include <functional>
#include <memory>

namespace tessly {

/// Tells of mouse presses in other applications. Main thread only.
class OutsideClickMonitor
{
public:
    /// Watching ends when this goes.
    class Watch
    {
    public:
        Watch() = default;
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        virtual ~Watch() = default;
    };

    OutsideClickMonitor() = default;
    OutsideClickMonitor(const OutsideClickMonitor&) = delete;
    OutsideClickMonitor& operator=(const OutsideClickMonitor&) = delete;
    virtual ~OutsideClickMonitor() = default;

    /// Calls back, from the event loop, at each left or right press outside the program's own
    /// windows.
    [[nodiscard]] virtual std::unique_ptr<Watch> watch(std::function<void()> pressed) = 0;
};

} // namespace tessly
