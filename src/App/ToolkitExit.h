#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace tessly {

/// What comes before the toolkit ends the process, as it does by itself once the display server has
/// gone: on X11 by `exit`; on Wayland by `_exit`, for which the program has a function of its own,
/// and on whichever of its threads hears of it first. There is one at a time. Main thread only.
class ToolkitExit
{
public:
    /// For `before`, when another thread ends the process; it ends all the same after that.
    static constexpr std::chrono::seconds timeout{5};

    /// `before` is called on the main thread, once, from inside whatever goes on there.
    explicit ToolkitExit(std::function<void()> before);
    /// The toolkit ends the process as it likes.
    ~ToolkitExit();
    ToolkitExit(const ToolkitExit&) = delete;
    ToolkitExit& operator=(const ToolkitExit&) = delete;

    /// Some thread, any, is about to end the process.
    static void ending();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

} // namespace tessly
