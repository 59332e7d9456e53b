#pragma once

#include <functional>

namespace tessly {

/// What the bus asks of the program beside the commands on the history. Called on the main thread.
struct BusActions
{
    std::function<void()> show;
    std::function<void()> hide;
    std::function<void()> toggle;
    std::function<void()> quit;
};

} // namespace tessly
