#pragma once

#include <functional>
#include <memory>

namespace tessly {

/// A call on the main thread that other threads ask for. Asked for several times before it is made,
/// it is made once.
///
/// Lives on the main thread; what asks may outlive it.
class MainThreadCall
{
public:
    MainThreadCall();
    ~MainThreadCall();
    MainThreadCall(const MainThreadCall&) = delete;
    MainThreadCall& operator=(const MainThreadCall&) = delete;

    /// What is called; empty: nothing.
    void setCallback(std::function<void()> callback);

    /// Asks for the call. May be called on any thread and outlive this, when it does nothing.
    [[nodiscard]] std::function<void()> request() const;

private:
    struct State;

    std::shared_ptr<State> m_state;
};

} // namespace tessly
