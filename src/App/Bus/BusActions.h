#pragma once

#include <QString>

#include <functional>

namespace tessly {

/// What the bus asks of the program beside the commands on the history. Called on the main thread.
struct BusActions
{
    std::function<void()> show;
    std::function<void()> hide;
    std::function<void()> toggle;
    std::function<void()> quit;
    /// Called before `show` and `toggle` with the permission to take the focus that came with the
    /// request; empty when none did.
    std::function<void(const QString& token)> keepActivationToken;
};

} // namespace tessly
