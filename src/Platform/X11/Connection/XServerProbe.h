#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tessly {

/// Whether an X server serves programs. Connecting waits for the server without a timeout, and one
/// that a compositor starts on demand may never serve anyone; so this is found out on a thread of
/// its own, which is left to its fate.
class XServerProbe
{
public:
    enum class Outcome {
        /// There is none, or it refuses.
        absent,
        /// It has not answered yet.
        silent,
        answers,
    };

    /// Begins to connect to `display` (as $DISPLAY names it; empty: $DISPLAY itself).
    explicit XServerProbe(const std::string& display = {});
    ~XServerProbe();
    XServerProbe(const XServerProbe&) = delete;
    XServerProbe& operator=(const XServerProbe&) = delete;

    /// What is known once the server answers, or after so long.
    [[nodiscard]] Outcome wait(std::chrono::milliseconds timeout) const;

    /// Has `answered` called once the server answers, on the thread that found out, or at once. Not
    /// called for a server that never does.
    void setAnswered(std::function<void()> answered);

private:
    struct State;

    std::shared_ptr<State> m_state;
};

} // namespace tessly
