#pragma once

#include "HotKeyCenter.h"

#include <memory>

namespace tessly {

class X11Desktop;

/// Hot keys of an X11 session.
///
/// The server answers on the desktop's own thread, and registrations are awaited: another client
/// may hold the server for as long as it likes, and waiting for a bounded time would end in not
/// knowing whether a key is held. A press is told once for as long as the key is down.
///
/// Command is the Ctrl key here, Option is Alt, and Control, which is left over, is Super.
class X11HotKeyCenter final : public HotKeyCenter
{
public:
    /// `desktop` must outlive the center.
    explicit X11HotKeyCenter(X11Desktop& desktop);
    ~X11HotKeyCenter() override;

    [[nodiscard]] bool isAvailable() const override { return true; }
    [[nodiscard]] Installation installHandler(Handler handler) override;
    Status removeHandler(Reference handler) override;
    [[nodiscard]] Registration registerKey(quint32 keyCode, quint32 modifiers, KeyID key) override;
    Status unregisterKey(Reference key) override;

private:
    class State;

    X11Desktop& m_desktop;
    std::shared_ptr<State> m_state;
};

} // namespace tessly
